#include "info/geo/GeoBlobs.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

#include <limits>

namespace GeoBlobs {

namespace {

/// Arrays and dictionaries within each other; an address has two levels.
constexpr int deepestLevel = 8;

/// Undefined for what has no place in a blob.
QCborValue encoded(const PBValue& value, int level);

QCborMap encodedMap(const PBDictionary& dictionary, int level) {
    QCborMap map;
    for (const auto& [key, value] : dictionary) {
        const QCborValue entry = encoded(value, level + 1);
        if (!entry.isUndefined()) map.insert(key, entry);
    }
    return map;
}

QCborValue encoded(const PBValue& value, int level) {
    if (value.isNull()) return QCborValue(nullptr);
    if (const auto* truth = value.getIf<bool>()) return QCborValue(*truth);
    if (value.isFloating()) return QCborValue(value.toDouble());
    if (value.isNumber()) return QCborValue(value.toInteger());
    if (const auto* text = value.getIf<QString>()) return QCborValue(*text);
    if (const auto* bytes = value.getIf<QByteArray>()) return QCborValue(*bytes);
    if (level >= deepestLevel) return {};
    if (const PBDictionary* dictionary = value.dictionary()) return encodedMap(*dictionary, level);
    if (const PBArray* array = value.array()) {
        QCborArray elements;
        for (const PBValue& element : *array) {
            const QCborValue entry = encoded(element, level + 1);
            if (!entry.isUndefined()) elements.append(entry);
        }
        return elements;
    }
    return {};
}

/// Absent for what an address can't hold.
PBValue decoded(const QCborValue& value, int level);

PBDictionary decodedMap(const QCborMap& map, int level) {
    PBDictionary dictionary;
    for (const auto& entry : map) {
        if (!entry.first.isString()) continue;
        PBValue value = decoded(entry.second, level + 1);
        if (!value.isAbsent())
            dictionary.insert_or_assign(entry.first.toString(), std::move(value));
    }
    return dictionary;
}

PBValue decoded(const QCborValue& value, int level) {
    switch (value.type()) {
    case QCborValue::Null:
        return PBNull{};
    case QCborValue::True:
        return true;
    case QCborValue::False:
        return false;
    case QCborValue::Integer:
        return value.toInteger();
    case QCborValue::Double:
        return value.toDouble();
    case QCborValue::String:
        return value.toString();
    case QCborValue::ByteArray:
        return value.toByteArray();
    case QCborValue::Map:
        if (level < deepestLevel) return decodedMap(value.toMap(), level);
        return {};
    case QCborValue::Array: {
        if (level >= deepestLevel) return {};
        PBArray array;
        for (const QCborValue& element : value.toArray()) {
            PBValue kept = decoded(element, level + 1);
            if (!kept.isAbsent()) array.push_back(std::move(kept));
        }
        return array;
    }
    default:
        return {};
    }
}

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

QByteArray encodeAddress(const PBDictionary& address) {
    return QCborValue(encodedMap(address, 0)).toCbor();
}

std::optional<PBDictionary> decodeAddress(const QByteArray& bytes) {
    const QCborValue value = parsed(bytes);
    if (!value.isMap()) return std::nullopt;
    return decodedMap(value.toMap(), 0);
}

} // namespace GeoBlobs
