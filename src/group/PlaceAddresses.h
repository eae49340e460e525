#pragma once

#include "places/PBGeoManager.h"
#include "platform/values/PBValue.h"

namespace group {

/// What the grouping asks of the service that knows the places. Called on the scan thread, without
/// an open cursor or transaction on its connection.
class PlaceAddresses {
public:
    virtual ~PlaceAddresses() = default;

    /// The address dictionary of a known place near the location; the null marker for a location
    /// that is known to have no address; absent when nothing is known of it yet.
    [[nodiscard]] virtual PBValue addressDictionaryWithLocation(const PBLocation& location) = 0;
    /// Has the location's address looked up, unless it is known. Returns at once.
    virtual void addLocationToReverseGeocoding(const PBLocation& location) = 0;
};

/// The places of the place manager, which outlives this.
class GeoManagerAddresses final : public PlaceAddresses {
public:
    explicit GeoManagerAddresses(PBGeoManager& manager) : _manager(manager) {}
    [[nodiscard]] PBValue addressDictionaryWithLocation(const PBLocation& location) override {
        return _manager.addressDictionaryWithLocation(location);
    }
    void addLocationToReverseGeocoding(const PBLocation& location) override {
        _manager.addLocationToReverseGeocoding(location);
    }

private:
    PBGeoManager& _manager;
};

} // namespace group
