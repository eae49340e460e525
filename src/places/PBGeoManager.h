#pragma once

#include "places/Geocoder.h"
#include "places/PlaceArray.h"
#include "platform/work/Mutex.h"
#include "platform/work/OperationQueue.h"

#include <QObject>

#include <deque>
#include <memory>

class FMDatabase;

/// Knows the places of the photographs. An address stands for a cloud of positions: a place keeps
/// every position that ever turned out to be there, and whatever is within `placeRadius` of one of
/// them takes its address without asking the geocoder. Places are kept in the table `Geo`.
///
/// Made, loaded and destroyed on the main thread; answers of the geocoder are written there, too,
/// on the main connection. Each operation says whether it may be called from elsewhere. Whoever
/// calls from another thread has ended before the manager is destroyed.
class PBGeoManager final : public QObject {
    Q_OBJECT

public:
    /// Runs a function on the main thread, later and in order. Called from any thread.
    using MainThreadPoster = std::function<void(std::function<void()>)>;

    /// Without a geocoder nothing is ever asked; the places of the catalogue are known all the
    /// same.
    PBGeoManager(
        std::unique_ptr<places::Geocoder> geocoder, MainThreadPoster postToMainThread,
        QObject* parent = nullptr);
    /// Drops the requests that have no answer yet.
    ~PBGeoManager() override;

    /// Any thread.
    [[nodiscard]] bool canUseGeocoder() const { return _geocoder != nullptr; }

    /// Adds the places of the catalogue; rows that can't be read are skipped. The connection is
    /// that on which later answers are written; it must outlive the manager. Main thread.
    void loadAddressFromDb(FMDatabase& db);

    /// The address of the first place that matches: a dictionary, or the null marker where there is
    /// no address; absent if no place matches. Any thread.
    [[nodiscard]] PBValue addressDictionaryWithLocation(PBLocation location) const;
    /// Has the geocoder asked unless a place matches already. A position that is none is ignored.
    /// Any thread.
    void addLocationToReverseGeocoding(PBLocation location);
    /// Starts the request at the head of the queue, if none is in flight. Any thread.
    void tryDoReverseGeocoding();
    /// Whether a position waits for its answer. Any thread.
    [[nodiscard]] bool hasPendingRequests() const;
    /// Drops what waits and cancels what is in flight. Any thread.
    void cancelReverseGeocoding();

Q_SIGNALS:
    /// The notification "ReverseGeoFinished": a place was added to the catalogue or has grown. On
    /// the main thread.
    void reverseGeoFinished();

private:
    struct Request {
        std::uint64_t ticket = 0;
        PBLocation location;
        bool isTaken = false; // by the one chain that looks it up
    };

    [[nodiscard]] std::optional<Request> takeHead();
    /// Answers how many requests remain.
    std::size_t removeRequest(std::uint64_t ticket);
    void requestDidFinish(const Request& request, const places::GeocodeAnswer& answer);
    void record(PBLocation location, const places::GeocodeAnswer& answer);
    void recordNoAddress(PBLocation location);
    /// False if the catalogue did not take a new place.
    [[nodiscard]] bool recordAddress(PBLocation location, const PBDictionary& address);
    [[nodiscard]] std::optional<std::size_t> firstWithAddress(const PBValue& address) const;
    void growPlace(std::size_t place, PBLocation location);
    [[nodiscard]] bool insertPlace(PBLocation location, const PBDictionary& address);

    FMDatabase* _mainDb = nullptr; // main thread
    const MainThreadPoster _postToMainThread;
    std::shared_ptr<const bool> _alive = std::make_shared<bool>(true);

    mutable platform::Mutex _addressInfoArrayLock; // never held together with the other lock
    /// Changed on the main thread only.
    PlaceArray _addressInfoArray VELMORA_GUARDED_BY(_addressInfoArrayLock);

    mutable platform::Mutex _reverseLocationArrayLock;
    /// The head is the one in progress.
    std::deque<Request> _reverseLocationArray VELMORA_GUARDED_BY(_reverseLocationArrayLock);
    std::uint64_t _nextTicket VELMORA_GUARDED_BY(_reverseLocationArrayLock) = 1;

    const std::unique_ptr<places::Geocoder> _geocoder;
    platform::OperationQueue _backgroundQueue; // the last member: its thread uses the others
};
