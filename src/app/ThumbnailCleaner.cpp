#include "app/ThumbnailCleaner.h"

#include "catalogue/PBCleanThumbOperation.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"

using platform::MainLoop;
using namespace std::chrono_literals;

namespace {

/// Between two looks whether there is time.
constexpr auto waitForIdle = 250ms;
/// Between two steps: enough for the work of others to begin.
constexpr auto pauseOfSteps = 20ms;

} // namespace

ThumbnailCleaner::ThumbnailCleaner(Environment environment) : _environment(std::move(environment)) {
    _timer.setSingleShot(true);
    connect(&_timer, &QTimer::timeout, this, &ThumbnailCleaner::look);
}

void ThumbnailCleaner::wake() {
    platform::assertMainThread();
    _isWanted = true;
    // From the beginning: a step that is under way works on what was.
    _cleaning = std::make_shared<ThumbnailCleaning>();
    _timer.start(pauseOfSteps);
}

void ThumbnailCleaner::look() {
    // A scan that begins drops a step that waits. This comes back for it.
    _timer.start(waitForIdle);
    if (!_step.expired() || !_environment.isIdle()) return;
    const auto step = std::make_shared<PBCleanThumbOperation>(
        _cleaning, _environment.filesPath, _environment.buildThumbDb,
        [this, alive = std::weak_ptr(_alive),
         cleaning = std::weak_ptr(_cleaning)](ThumbnailCleaning::Outcome outcome) {
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Default, [this, alive, cleaning, outcome] {
                if (!alive.expired() && cleaning.lock() == _cleaning) stepDidEnd(outcome);
            });
        });
    _step = step;
    _environment.buildQueue.addOperation(step);
}

void ThumbnailCleaner::stepDidEnd(ThumbnailCleaning::Outcome outcome) {
    if (outcome == ThumbnailCleaning::Outcome::More) {
        _timer.start(pauseOfSteps);
        return;
    }
    // What can't be done now is done by the next start.
    _isWanted = false;
    _timer.stop();
}
