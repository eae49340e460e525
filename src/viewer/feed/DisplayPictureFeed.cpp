#include "viewer/feed/DisplayPictureFeed.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <atomic>

namespace {

/// Pixels that are made or read within the call: a few milliseconds on a slow core.
constexpr double fewPixels = 500'000;

/// Both show the same picture at the same place, or two frames of it.
bool areFramesOfOne(DisplayState one, const DisplayState& other) {
    one.frame = other.frame;
    return one == other;
}

} // namespace

class DisplayPictureFeed::Work {
public:
    explicit Work(DisplayState wanted) : state(std::move(wanted)) {}
    void make() {
        picture = resampledPicture(state, [this] { return isStopped.load(); });
    }

    const DisplayState state;
    DisplayPicture picture; // the queue's, until it is posted
    std::atomic<bool> isStopped = false;
};

DisplayPictureFeed::DisplayPictureFeed(std::function<void()> ready)
    : _ready(std::move(ready)), _queue(QStringLiteral("display")) {}

DisplayPictureFeed::~DisplayPictureFeed() {
    clear();
    _queue.cancelAllOperations();
    _queue.waitUntilAllOperationsAreFinished();
}

const DisplayPicture* DisplayPictureFeed::pictureFor(const DisplayState& state) {
    platform::assertMainThread();
    const DisplayPicture* shown = _picture && isMadeFor(state) ? &*_picture : nullptr;
    if (shown && shown->state.frame == state.frame) return shown;
    // A frame that has begun is finished, however fast they follow each other.
    if (_work && areFramesOfOne(_work->state, state)) return shown;
    stopWork();
    if (!shown) _picture.reset();
    if (pixelsTouched(state) <= fewPixels) {
        keep(resampledPicture(state));
        return &*_picture;
    }
    _work = std::make_shared<Work>(state);
    _queue.addOperation([work = _work, alive = std::weak_ptr(_alive)] {
        work->make();
        platform::MainLoop::instance()->post(platform::MainLoop::Mode::Common, [work, alive] {
            if (const auto feed = alive.lock()) (*feed)->didMake(work);
        });
    });
    return shown;
}

void DisplayPictureFeed::clear() {
    platform::assertMainThread();
    _picture.reset();
    stopWork();
}

void DisplayPictureFeed::stopWork() {
    if (_work) _work->isStopped = true;
    _work.reset();
}

void DisplayPictureFeed::didMake(const std::shared_ptr<Work>& work) {
    if (work != _work) return; // the view has moved on
    keep(std::move(_work->picture));
    _work.reset();
    _ready();
}

void DisplayPictureFeed::keep(DisplayPicture picture) {
    // What is shown must not keep a picture alive that its item has let go.
    _madeOf = std::exchange(picture.state.images, nullptr);
    _picture = std::move(picture);
}

bool DisplayPictureFeed::isMadeFor(const DisplayState& state) const {
    if (!state.images || _madeOf.lock() != state.images) return false;
    DisplayState made = _picture->state;
    made.images = state.images;
    return areFramesOfOne(std::move(made), state);
}
