#pragma once

#include "places/Geocoder.h"
#include "places/PlaceLookup.h"

namespace places {

/// The geocoder that needs no network: it answers at once, from the gazetteer that is installed
/// with the program and opened by the first request.
class OfflineGeocoder final : public Geocoder {
public:
    OfflineGeocoder(QString gazetteerPath, QStringList languages);

    /// The installed gazetteer, countries in the user's language; nullptr where there is none,
    /// which standard error is told.
    [[nodiscard]] static std::unique_ptr<OfflineGeocoder> installed();
    /// The same of a gazetteer elsewhere.
    [[nodiscard]] static std::unique_ptr<OfflineGeocoder>
    ofGazetteer(const QString& path, QStringList languages);

    void reverseGeocodeLocation(PBLocation location, Completion completion) override;
    void cancelGeocode() override {} // nothing ever waits

private:
    PlaceLookup _lookup;
};

} // namespace places
