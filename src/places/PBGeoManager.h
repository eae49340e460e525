#pragma once

#include "places/FoundPlaces.h"
#include "places/Geocoder.h"
#include "places/PlaceArray.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"

#include <QObject>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>

class FMDatabase;

/// Knows the places of the photographs. An address stands for a cloud of positions: a place keeps
/// every position that ever turned out to be there, and whatever is within `placeRadius` of one of
/// them takes its address without asking the geocoder. Places are kept in the table `Geo`.
///
/// What the geocoder finds is stored behind all else, on a thread and a connection of its own, what
/// was found in half a second at once; only then it is known. What the catalogue does not take is
/// looked up again when its photographs are scanned the next time.
///
/// Made, loaded, finished and destroyed on the main thread. Each operation says whether it may be
/// called from elsewhere. Whoever calls from another thread has ended before the manager finishes.
class PBGeoManager final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        /// Runs a function on the main thread, later and in order. Called from any thread.
        std::function<void(std::function<void()>)> postToMainThread;
        /// A connection to the catalogue, open; nullptr for none. Called on the manager's thread.
        std::function<std::unique_ptr<FMDatabase>()> connect = {};
        /// From one time that places are stored to the next.
        std::chrono::milliseconds interval{500};
        /// For so long positions gather before the first of them is asked for: a thread that wakes
        /// up for each takes the time of those that read the photographs.
        std::chrono::milliseconds gathering{50};
    };

    /// Without a geocoder nothing is ever asked; the places of the catalogue are known all the
    /// same.
    PBGeoManager(
        std::unique_ptr<places::Geocoder> geocoder, Environment environment,
        QObject* parent = nullptr);
    /// Finishes.
    ~PBGeoManager() override;

    /// Any thread.
    [[nodiscard]] bool canUseGeocoder() const { return _geocoder != nullptr; }

    /// Adds the places of the catalogue; rows that can't be read are skipped. Main thread.
    void loadAddressFromDb(FMDatabase& db);
    /// Drops the requests that have no answer yet, stores what was found and closes the connection.
    /// Nothing is asked any more. Main thread.
    void finish();

    /// The address of the first place that matches: a dictionary, or the null marker where there is
    /// no address; absent if no place matches. Any thread.
    [[nodiscard]] PBValue addressDictionaryWithLocation(PBLocation location) const;
    /// Has the geocoder asked unless a place matches already, or the position waits. A position
    /// that is none is ignored. Any thread.
    void addLocationToReverseGeocoding(PBLocation location);
    /// Whether a position waits for its answer, or an answer for being stored and told. Any thread.
    [[nodiscard]] bool hasPendingRequests() const;
    /// Drops what waits and cancels what is in flight. Any thread.
    void cancelReverseGeocoding();

Q_SIGNALS:
    /// The notification "ReverseGeoFinished": places were added to the catalogue or have grown,
    /// once for all that were stored together. On the main thread.
    void reverseGeoFinished();

private:
    using Clock = std::chrono::steady_clock;
    struct Request {
        std::uint64_t ticket = 0;
        PBLocation location;
        bool isTaken = false; // by the one chain that looks it up
    };

    [[nodiscard]] bool isCovered(PBLocation location) const;
    [[nodiscard]] std::optional<Request> takeHead();
    void removeRequest(const Request& request);
    // The rest runs on the background queue.
    void gather();
    /// Starts the request at the head of the queue, if none is in flight.
    void tryDoReverseGeocoding();
    void requestDidFinish(const Request& request, const places::GeocodeAnswer& answer);
    void record(PBLocation location, const places::GeocodeAnswer& answer);
    void recordNoAddress(PBLocation location);
    void storeIfDue();
    void storeLater(Clock::duration delay);
    void store();
    [[nodiscard]] PlacesStored write(FoundPlaces::Changes& changes);
    void didStore(FoundPlaces::Changes changes);
    void tell();

    const Environment _environment;
    std::shared_ptr<const bool> _alive = std::make_shared<bool>(true);
    std::atomic<bool> _isFinished = false;
    std::atomic<int> _noticesOnTheirWay = 0;

    mutable platform::Mutex _addressInfoArrayLock; // never held together with the other lock
    /// Both are changed on the background queue only, but for the loading.
    PlaceArray _addressInfoArray VELMORA_GUARDED_BY(_addressInfoArrayLock);
    FoundPlaces _found VELMORA_GUARDED_BY(_addressInfoArrayLock);

    mutable platform::Mutex _reverseLocationArrayLock;
    /// The head is the one in progress.
    std::deque<Request> _reverseLocationArray VELMORA_GUARDED_BY(_reverseLocationArrayLock);
    /// Those that wait in it, latitude first.
    std::set<std::pair<double, double>>
        _waitingLocations VELMORA_GUARDED_BY(_reverseLocationArrayLock);
    std::uint64_t _nextTicket VELMORA_GUARDED_BY(_reverseLocationArrayLock) = 1;
    platform::Condition _willFinish; // with the lock above

    // Of the background queue.
    std::unique_ptr<FMDatabase> _db;
    std::optional<Clock::time_point> _lastStored;
    bool _willStoreLater = false;

    std::unique_ptr<places::Geocoder> _geocoder; // its answers go to the queue, which outlives it
    platform::OperationQueue _backgroundQueue;   // the last member: its thread uses the others
};
