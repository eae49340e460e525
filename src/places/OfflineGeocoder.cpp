#include "places/OfflineGeocoder.h"

#include "platform/program/StandardFolders.h"

#include <QLocale>

namespace places {

OfflineGeocoder::OfflineGeocoder(QString gazetteerPath, QStringList languages)
    : _lookup(std::move(gazetteerPath), std::move(languages)) {}

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
    if (auto address = _lookup.addressOf(location))
        completion({{GeocodePlacemark{PBValue(*std::move(address))}}, GeocodeError::None});
    else
        completion({{}, GeocodeError::NoResult});
}

} // namespace places
