#include "places/PBGeoManager.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "places/Gazetteer.h"
#include "places/GeoBlobs.h"
#include "platform/values/CborValues.h"
#include "platform/work/MainThread.h"

#include <algorithm>

using places::GeocodeAnswer;
using places::GeocodeError;

namespace {

const QString longitudeColumn = QStringLiteral("Longitude");
const QString latitudeColumn = QStringLiteral("Latitude");
const QString addressColumn = QStringLiteral("AddressDict");

/// Nothing for a row that can't be used. Of the positions those stay that are ones.
std::optional<PlaceEntry> entryOfRow(const FMResultSet& row) {
    for (const QString* column : {&longitudeColumn, &latitudeColumn, &addressColumn}) {
        if (row.columnIsNull(*column)) return std::nullopt;
    }
    const auto longitudes = GeoBlobs::decodeCoordinates(row.dataForColumn(longitudeColumn));
    const auto latitudes = GeoBlobs::decodeCoordinates(row.dataForColumn(latitudeColumn));
    const auto address = platform::decodeDictionary(row.dataForColumn(addressColumn));
    if (!longitudes || !latitudes || !address) return std::nullopt;

    PlaceEntry entry{row.longLongIntForColumn(QStringLiteral("GeoId")), *address, {}, {}};
    for (std::size_t index = 0; index < std::min(longitudes->size(), latitudes->size()); ++index) {
        const PBLocation location{(*latitudes)[index], (*longitudes)[index]};
        if (!places::isValidLocation(location)) continue;
        entry.Longitude.push_back(location.longitude);
        entry.Latitude.push_back(location.latitude);
    }
    return entry;
}

} // namespace

PBGeoManager::PBGeoManager(
    std::unique_ptr<places::Geocoder> geocoder, MainThreadPoster postToMainThread, QObject* parent)
    : QObject(parent), _postToMainThread(std::move(postToMainThread)),
      _geocoder(std::move(geocoder)), _backgroundQueue(QStringLiteral("places")) {
    platform::assertMainThread();
}

PBGeoManager::~PBGeoManager() {
    platform::assertMainThread();
    cancelReverseGeocoding();
}

void PBGeoManager::loadAddressFromDb(FMDatabase& db) {
    platform::assertMainThread();
    _mainDb = &db;
    std::vector<PlaceEntry> entries;
    // Where not all can be read, the others are looked up again: that is all there is to an error.
    FMResultSet row = db.executeQuery(QStringLiteral("select * from Geo"));
    // Those that can't be read are looked up again.
    while (row.next()) {
        if (auto entry = entryOfRow(row)) entries.push_back(*std::move(entry));
    }
    const platform::Lock lock(_addressInfoArrayLock);
    for (PlaceEntry& entry : entries) {
        _addressInfoArray.append(std::move(entry));
    }
}

PBValue PBGeoManager::addressDictionaryWithLocation(PBLocation location) const {
    const platform::Lock lock(_addressInfoArrayLock);
    const auto place = _addressInfoArray.firstMatch(location);
    return place ? _addressInfoArray.at(*place).AddressDict : PBValue();
}

void PBGeoManager::addLocationToReverseGeocoding(PBLocation location) {
    if (!canUseGeocoder() || !places::isValidLocation(location) ||
        !addressDictionaryWithLocation(location).isAbsent()) {
        return;
    }
    bool isAlone = false;
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        _reverseLocationArray.push_back({_nextTicket++, location});
        isAlone = _reverseLocationArray.size() == 1;
    }
    if (isAlone) tryDoReverseGeocoding();
}

void PBGeoManager::tryDoReverseGeocoding() {
    if (!canUseGeocoder()) return;
    while (const auto request = takeHead()) {
        if (addressDictionaryWithLocation(request->location).isAbsent()) {
            _geocoder->reverseGeocodeLocation(
                request->location, [this, request = *request,
                                    alive = std::weak_ptr(_alive)](const GeocodeAnswer& answer) {
                    _postToMainThread([this, request, alive, answer] {
                        if (!alive.expired()) requestDidFinish(request, answer);
                    });
                });
            return;
        }
        removeRequest(request->ticket); // an answer since it was queued covers it
    }
}

bool PBGeoManager::hasPendingRequests() const {
    const platform::Lock lock(_reverseLocationArrayLock);
    return !_reverseLocationArray.empty();
}

void PBGeoManager::cancelReverseGeocoding() {
    if (!canUseGeocoder()) return;
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        std::erase_if(
            _reverseLocationArray, [](const Request& request) { return !request.isTaken; });
    }
    _geocoder->cancelGeocode();
}

std::optional<PBGeoManager::Request> PBGeoManager::takeHead() {
    const platform::Lock lock(_reverseLocationArrayLock);
    if (_reverseLocationArray.empty() || _reverseLocationArray.front().isTaken) return std::nullopt;
    _reverseLocationArray.front().isTaken = true;
    return _reverseLocationArray.front();
}

std::size_t PBGeoManager::removeRequest(std::uint64_t ticket) {
    const platform::Lock lock(_reverseLocationArrayLock);
    std::erase_if(_reverseLocationArray, [ticket](const Request& request) {
        return request.ticket == ticket;
    });
    return _reverseLocationArray.size();
}

void PBGeoManager::requestDidFinish(const Request& request, const GeocodeAnswer& answer) {
    platform::assertMainThread();
    record(request.location, answer);
    if (removeRequest(request.ticket) > 0) {
        _backgroundQueue.addOperation([this] { tryDoReverseGeocoding(); });
    }
}

void PBGeoManager::record(PBLocation location, const GeocodeAnswer& answer) {
    if (answer.placemarks.empty()) {
        if (answer.error == GeocodeError::NoResult || answer.error == GeocodeError::PartialResult) {
            recordNoAddress(location);
        }
        return;
    }
    const PBDictionary* address = answer.placemarks.front().addressDictionary.dictionary();
    if (address != nullptr && recordAddress(location, *address)) Q_EMIT reverseGeoFinished();
}

/// In memory only: until the next start the neighbourhood is not asked for again.
void PBGeoManager::recordNoAddress(PBLocation location) {
    const platform::Lock lock(_addressInfoArrayLock);
    if (const auto place = _addressInfoArray.firstWithAddress(PBNull{})) {
        _addressInfoArray.appendLocation(*place, location);
    } else {
        _addressInfoArray.append({PBNull{}, PBNull{}, {location.longitude}, {location.latitude}});
    }
}

// Only the main thread, on which this runs, changes the array: what is found stays so until it is
// changed here. The lock is not held while the catalogue is written to: a scan that looks up an
// address never waits for the main connection, which itself may be waiting for the scan's
// transaction.
bool PBGeoManager::recordAddress(PBLocation location, const PBDictionary& address) {
    if (const auto place = firstWithAddress(address)) {
        growPlace(*place, location);
        return true;
    }
    return insertPlace(location, address);
}

std::optional<std::size_t> PBGeoManager::firstWithAddress(const PBValue& address) const {
    const platform::Lock lock(_addressInfoArrayLock);
    return _addressInfoArray.firstWithAddress(address);
}

/// When the catalogue doesn't take the change, memory is ahead of it until the next start.
void PBGeoManager::growPlace(std::size_t place, PBLocation location) {
    PlaceEntry entry;
    {
        const platform::Lock lock(_addressInfoArrayLock);
        _addressInfoArray.appendLocation(place, location);
        entry = _addressInfoArray.at(place);
    }
    if (_mainDb == nullptr || !entry.GeoId.hasValue()) return;
    PBCatalogue(*_mainDb).updateGeoWithGeoId(
        entry.GeoId.toInteger(), GeoBlobs::encodeCoordinates(entry.Longitude),
        GeoBlobs::encodeCoordinates(entry.Latitude));
}

bool PBGeoManager::insertPlace(PBLocation location, const PBDictionary& address) {
    if (_mainDb == nullptr) return false;
    PlaceEntry entry{{}, address, {location.longitude}, {location.latitude}};
    const qint64 geoId = PBCatalogue(*_mainDb).insertGeoWithLongitudeData(
        GeoBlobs::encodeCoordinates(entry.Longitude), GeoBlobs::encodeCoordinates(entry.Latitude),
        platform::encodeDictionary(address));
    if (geoId <= 0) return false;
    entry.GeoId = geoId;
    const platform::Lock lock(_addressInfoArrayLock);
    _addressInfoArray.append(std::move(entry));
    return true;
}
