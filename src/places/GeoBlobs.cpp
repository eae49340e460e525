#include "places/GeoBlobs.h"

#include <QCborArray>
#include <QCborValue>

#include <limits>

namespace GeoBlobs {

namespace {

/// Undefined if the bytes are not one whole value.
QCborValue parsed(const QByteArray& bytes) {
    QCborParserError error;
    QCborValue value = QCborValue::fromCbor(bytes, &error);
    return error.error == QCborError::NoError ? value : QCborValue();
}

} // namespace

QByteArray encodeCoordinates(std::span<const double> coordinates) {
    QCborArray array;
    for (const double coordinate : coordinates) {
        array.append(QCborValue(coordinate));
    }
    return array.toCborValue().toCbor();
}

std::optional<std::vector<double>> decodeCoordinates(const QByteArray& bytes) {
    const QCborValue value = parsed(bytes);
    if (!value.isArray()) return std::nullopt;
    const QCborArray array = value.toArray();
    std::vector<double> coordinates;
    coordinates.reserve(static_cast<std::size_t>(array.size()));
    for (const QCborValue& element : array) {
        coordinates.push_back(element.toDouble(std::numeric_limits<double>::quiet_NaN()));
    }
    return coordinates;
}

} // namespace GeoBlobs
