#include "places/PBGeoManager.h"

#include "FMDB/FMDatabase.h"
#include "places/Gazetteer.h"
#include "places/GeoBlobs.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/values/CborValues.h"

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
    std::unique_ptr<places::Geocoder> geocoder, Environment environment, QObject* parent)
    : QObject(parent), _environment(std::move(environment)), _geocoder(std::move(geocoder)),
      _backgroundQueue(QStringLiteral("places")) {
    platform::assertMainThread();
}

PBGeoManager::~PBGeoManager() {
    finish();
}

void PBGeoManager::finish() {
    platform::assertMainThread();
    if (_isFinished.exchange(true)) return;
    if (auto* loop = platform::MainLoop::instance())
        loop->cancelPreviousPerformRequestsWithTarget(this);
    cancelReverseGeocoding();
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        _willFinish.notifyAll();
    }
    // What runs may be about to ask; what comes later sees that nothing is asked any more.
    _backgroundQueue.waitUntilAllOperationsAreFinished();
    _geocoder.reset();
    _backgroundQueue.addOperation([this] {
        store();
        _db.reset();
    });
    _backgroundQueue.waitUntilAllOperationsAreFinished();
    _alive.reset();
}

void PBGeoManager::loadAddressFromDb(FMDatabase& db) {
    platform::assertMainThread();
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

bool PBGeoManager::isCovered(PBLocation location) const {
    const platform::Lock lock(_addressInfoArrayLock);
    return _addressInfoArray.firstMatch(location).has_value() || _found.covers(location);
}

void PBGeoManager::addLocationToReverseGeocoding(PBLocation location) {
    if (!canUseGeocoder() || !places::isValidLocation(location) || isCovered(location)) return;
    bool isAlone = false;
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        if (!_waitingLocations.insert({location.latitude, location.longitude}).second) return;
        _reverseLocationArray.push_back({_nextTicket++, location});
        isAlone = _reverseLocationArray.size() == 1;
    }
    if (!isAlone) return;
    _backgroundQueue.addOperation([this] {
        gather();
        tryDoReverseGeocoding();
    });
}

void PBGeoManager::gather() {
    platform::Lock lock(_reverseLocationArrayLock);
    _willFinish.waitFor(lock, _environment.gathering, [this] { return _isFinished.load(); });
}

void PBGeoManager::tryDoReverseGeocoding() {
    if (_isFinished || !canUseGeocoder()) return;
    while (const auto request = takeHead()) {
        if (!isCovered(request->location)) {
            _geocoder->reverseGeocodeLocation(
                request->location, [this, request = *request](const GeocodeAnswer& answer) {
                    _backgroundQueue.addOperation(
                        [this, request, answer] { requestDidFinish(request, answer); });
                });
            return;
        }
        removeRequest(*request); // an answer since it was queued covers it
    }
}

bool PBGeoManager::hasPendingRequests() const {
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        if (!_reverseLocationArray.empty()) return true;
    }
    {
        const platform::Lock lock(_addressInfoArrayLock);
        if (!_found.isEmpty()) return true;
    }
    return _noticesOnTheirWay > 0;
}

void PBGeoManager::cancelReverseGeocoding() {
    if (!canUseGeocoder()) return;
    {
        const platform::Lock lock(_reverseLocationArrayLock);
        std::erase_if(
            _reverseLocationArray, [](const Request& request) { return !request.isTaken; });
        _waitingLocations.clear();
        for (const Request& request : _reverseLocationArray)
            _waitingLocations.insert({request.location.latitude, request.location.longitude});
    }
    _geocoder->cancelGeocode();
}

std::optional<PBGeoManager::Request> PBGeoManager::takeHead() {
    const platform::Lock lock(_reverseLocationArrayLock);
    if (_reverseLocationArray.empty() || _reverseLocationArray.front().isTaken) return std::nullopt;
    _reverseLocationArray.front().isTaken = true;
    return _reverseLocationArray.front();
}

/// One that is taken is the head, and stays it until it is removed here.
void PBGeoManager::removeRequest(const Request& request) {
    const platform::Lock lock(_reverseLocationArrayLock);
    if (_reverseLocationArray.empty() || _reverseLocationArray.front().ticket != request.ticket)
        return;
    _reverseLocationArray.pop_front();
    _waitingLocations.erase({request.location.latitude, request.location.longitude});
}

void PBGeoManager::requestDidFinish(const Request& request, const GeocodeAnswer& answer) {
    record(request.location, answer);
    removeRequest(request);
    storeIfDue();
    tryDoReverseGeocoding();
}

void PBGeoManager::record(PBLocation location, const GeocodeAnswer& answer) {
    if (answer.placemarks.empty()) {
        if (answer.error == GeocodeError::NoResult || answer.error == GeocodeError::PartialResult) {
            recordNoAddress(location);
        }
        return;
    }
    const PBDictionary* address = answer.placemarks.front().addressDictionary.dictionary();
    if (address == nullptr) return;
    const platform::Lock lock(_addressInfoArrayLock);
    _found.add(location, *address);
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

void PBGeoManager::storeIfDue() {
    {
        const platform::Lock lock(_addressInfoArrayLock);
        if (_found.isEmpty()) return;
    }
    const auto now = Clock::now();
    const auto dueAt = _lastStored ? *_lastStored + _environment.interval : now;
    if (_isFinished || now >= dueAt) {
        store();
    } else {
        storeLater(dueAt - now);
    }
}

/// The clock is that of the main loop, whose timer this is.
void PBGeoManager::storeLater(Clock::duration delay) {
    if (std::exchange(_willStoreLater, true)) return;
    _environment.postToMainThread([this, delay, alive = std::weak_ptr(_alive)] {
        auto* loop = platform::MainLoop::instance();
        if (alive.expired() || !loop) return;
        loop->performAfterDelay(
            this, "store", std::chrono::ceil<std::chrono::milliseconds>(delay), [this] {
                _backgroundQueue.addOperation([this] {
                    _willStoreLater = false;
                    storeIfDue();
                });
            });
    });
}

// Only the background queue, on which this runs, changes the places: what is found stays so until
// it is changed here. The lock is not held while the catalogue is written to: a scan that looks up
// an address never waits for this connection, which itself may be waiting for the scan's
// transaction.
void PBGeoManager::store() {
    FoundPlaces::Changes changes;
    {
        const platform::Lock lock(_addressInfoArrayLock);
        if (_found.isEmpty()) return;
        changes = _found.changesOf(_addressInfoArray);
    }
    const PlacesStored outcome = write(changes);
    _lastStored = Clock::now();
    if (outcome == PlacesStored::Locked && !_isFinished) {
        storeLater(_environment.interval);
        return;
    }
    if (outcome == PlacesStored::Stored) {
        didStore(std::move(changes));
        tell();
    }
    const platform::Lock lock(_addressInfoArrayLock);
    _found = {};
}

PlacesStored PBGeoManager::write(FoundPlaces::Changes& changes) {
    if (!_db && _environment.connect) _db = _environment.connect();
    if (!_db) return PlacesStored::Refused;
    std::vector<PlaceEntry> grown;
    {
        const platform::Lock lock(_addressInfoArrayLock);
        for (const auto& [place, locations] : changes.grown) {
            PlaceEntry entry = _addressInfoArray.at(place);
            for (const PBLocation& location : locations) {
                entry.Longitude.push_back(location.longitude);
                entry.Latitude.push_back(location.latitude);
            }
            grown.push_back(std::move(entry));
        }
    }
    return storePlaces(*_db, changes, grown);
}

void PBGeoManager::didStore(FoundPlaces::Changes changes) {
    const platform::Lock lock(_addressInfoArrayLock);
    for (const auto& [place, locations] : changes.grown) {
        for (const PBLocation& location : locations)
            _addressInfoArray.appendLocation(place, location);
    }
    for (PlaceEntry& entry : changes.inserted)
        _addressInfoArray.append(std::move(entry));
}

void PBGeoManager::tell() {
    ++_noticesOnTheirWay;
    _environment.postToMainThread([this, alive = std::weak_ptr(_alive)] {
        if (alive.expired()) return;
        --_noticesOnTheirWay;
        Q_EMIT reverseGeoFinished();
    });
}
