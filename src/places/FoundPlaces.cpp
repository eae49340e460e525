#include "places/FoundPlaces.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "places/GeoBlobs.h"
#include "platform/values/CborValues.h"

#include <sqlite3.h>

void FoundPlaces::add(PBLocation location, PBDictionary address) {
    _positions.add(location, _found.size());
    _found.push_back({location, std::move(address)});
}

FoundPlaces::Changes FoundPlaces::changesOf(const PlaceArray& known) const {
    Changes changes;
    PlaceArray inserted;
    for (const Found& found : _found) {
        if (const auto place = known.firstWithAddress(found.address)) {
            changes.grown[*place].push_back(found.location);
        } else if (const auto recent = inserted.firstWithAddress(found.address)) {
            inserted.appendLocation(*recent, found.location);
        } else {
            inserted.append(
                {{}, found.address, {found.location.longitude}, {found.location.latitude}});
        }
    }
    for (std::size_t place = 0; place < inserted.size(); ++place)
        changes.inserted.push_back(inserted.at(place));
    return changes;
}

PlacesStored
storePlaces(FMDatabase& db, FoundPlaces::Changes& changes, const std::vector<PlaceEntry>& grown) {
    FMTransaction transaction(db, FMDatabase::Others::Read);
    const auto failure = [&] {
        return (db.lastErrorCode() & 0xff) == SQLITE_BUSY ? PlacesStored::Locked
                                                          : PlacesStored::Refused;
    };
    if (!transaction.isOpen()) return failure();
    PBCatalogue catalogue(db);
    for (PlaceEntry& place : changes.inserted) {
        const qint64 geoId = catalogue.insertGeoWithLongitudeData(
            GeoBlobs::encodeCoordinates(place.Longitude),
            GeoBlobs::encodeCoordinates(place.Latitude),
            platform::encodeDictionary(*place.AddressDict.dictionary()));
        if (geoId <= 0) return PlacesStored::Refused;
        place.GeoId = geoId;
    }
    for (const PlaceEntry& place : grown) {
        const bool isStored = catalogue.updateGeoWithGeoId(
            place.GeoId.toInteger(), GeoBlobs::encodeCoordinates(place.Longitude),
            GeoBlobs::encodeCoordinates(place.Latitude));
        if (!isStored) return PlacesStored::Refused;
    }
    return transaction.commit() ? PlacesStored::Stored : failure();
}
