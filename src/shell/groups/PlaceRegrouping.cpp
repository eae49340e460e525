#include "shell/groups/PlaceRegrouping.h"

#include "group/GroupTypes.h"
#include "places/PBGeoManager.h"
#include "platform/work/MainLoop.h"

#include <algorithm>

using platform::MainLoop;

namespace {

/// From the first place on, so that they keep coming while many are found.
constexpr std::chrono::milliseconds collected{500};

} // namespace

PlaceRegrouping::PlaceRegrouping(PBGeoManager& manager, Environment environment, QObject* parent)
    : QObject(parent), _environment(std::move(environment)) {
    connect(
        &manager, &PBGeoManager::reverseGeoFinished, this, &PlaceRegrouping::reverseGeoFinished);
}

PlaceRegrouping::~PlaceRegrouping() {
    if (MainLoop* loop = MainLoop::instance()) loop->cancelPreviousPerformRequestsWithTarget(this);
}

void PlaceRegrouping::reverseGeoFinished() {
    MainLoop* loop = MainLoop::instance();
    if (!loop || std::exchange(_isPending, true)) return;
    loop->performAfterDelay(this, "regroup", collected, [this] { regroup(); });
}

void PlaceRegrouping::regroup() {
    _isPending = false;
    const PBGroupTypeArray chain = _environment.groupTypeArray();
    if (std::ranges::find(*chain, group::Place) != chain->end()) _environment.regroup();
}
