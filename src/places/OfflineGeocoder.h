#pragma once

#include "places/Geocoder.h"
#include "places/PlaceLookup.h"
#include "platform/tasks/OperationQueue.h"

#include <atomic>

namespace places {

/// The geocoder that needs no network: it answers from the gazetteer that is installed with the
/// program, on a thread of its own, which starts with the first request.
class OfflineGeocoder final : public Geocoder {
public:
    OfflineGeocoder(QString gazetteerPath, QStringList languages);
    ~OfflineGeocoder() override;

    /// The installed gazetteer, countries in the user's language; nullptr where there is none,
    /// which standard error is told.
    [[nodiscard]] static std::unique_ptr<OfflineGeocoder> installed();
    /// The same of a gazetteer elsewhere.
    [[nodiscard]] static std::unique_ptr<OfflineGeocoder>
    ofGazetteer(const QString& path, QStringList languages);

    void reverseGeocodeLocation(PBLocation location, Completion completion) override;
    void cancelGeocode() override;

private:
    [[nodiscard]] GeocodeAnswer answer(PBLocation location);

    PlaceLookup _lookup; // used on the queue's thread only
    std::atomic<std::uint64_t> _cancellations{0};
    platform::OperationQueue _queue; // the last member: it ends before what its thread uses
};

} // namespace places
