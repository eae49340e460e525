#include "places/OfflineGeocoder.h"

#include "platform/program/StandardFolders.h"

#include <QLocale>

namespace places {

OfflineGeocoder::OfflineGeocoder(QString gazetteerPath, QStringList languages)
    : _lookup(std::move(gazetteerPath), std::move(languages)), _queue(QStringLiteral("geocoder")) {}

OfflineGeocoder::~OfflineGeocoder() = default;

std::unique_ptr<OfflineGeocoder> OfflineGeocoder::installed() {
    return ofGazetteer(
        platform::StandardFolders::sharedFile(QStringLiteral("gazetteer.bin")),
        QLocale().uiLanguages());
}

std::unique_ptr<OfflineGeocoder>
OfflineGeocoder::ofGazetteer(const QString& path, QStringList languages) {
    QString reason;
    if (Gazetteer::isThere(path, &reason))
        return std::make_unique<OfflineGeocoder>(path, std::move(languages));
    tellUnusableGazetteer(path, reason);
    return nullptr;
}

void OfflineGeocoder::reverseGeocodeLocation(PBLocation location, Completion completion) {
    const auto ticket = _cancellations.load();
    _queue.addOperation([this, location, ticket, completion = std::move(completion)] {
        if (ticket != _cancellations.load()) {
            completion({{}, GeocodeError::Cancelled});
        } else {
            completion(answer(location));
        }
    });
}

void OfflineGeocoder::cancelGeocode() {
    ++_cancellations;
}

GeocodeAnswer OfflineGeocoder::answer(PBLocation location) {
    auto address = _lookup.addressOf(location);
    if (!address) return {{}, GeocodeError::NoResult};
    return {{GeocodePlacemark{PBValue(*std::move(address))}}, GeocodeError::None};
}

} // namespace places
