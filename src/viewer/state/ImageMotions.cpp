#include "viewer/state/ImageMotions.h"

#include "platform/tasks/MainThread.h"

#include <utility>

namespace {

int stepOf(const SwipeAnimation& animation) {
    return animation.stop > 0 ? 1 : animation.stop < 0 ? -1 : 0;
}

} // namespace

void ImageMotions::start(const std::optional<GeometryAnimation>& animation) {
    platform::assertMainThread();
    if (!animation) return;
    const Running<GeometryAnimation> running{*animation, now()};
    stopScroll();
    if (animation->property == GeometryAnimation::Property::Scale)
        _zoom = running;
    else
        _turn = running;
}

void ImageMotions::scrollByDelta(const QPointF& delta, bool animation) {
    platform::assertMainThread();
    finishScroll();
    const ScrollAnimation scroll = _geometry.scrollByDelta(delta);
    if (animation)
        _scroll = Running<ScrollAnimation>{scroll, now()};
    else
        _geometry.setDrawAnchor(scroll.stop);
}

void ImageMotions::fling(const QPointF& velocity) {
    platform::assertMainThread();
    finishScroll();
    _geometry.centerAnchor();
    _scroll = Running<FlingAnimation>{{_geometry.placement().drawAnchor(), velocity}, now()};
}

void ImageMotions::finishScroll() {
    // A fling ends where it is caught.
    if (const auto* scroll = std::get_if<Running<ScrollAnimation>>(&_scroll))
        _geometry.setDrawAnchor(scroll->animation.stop);
    stopScroll();
}

void ImageMotions::startSwipe(const SwipeAnimation& animation) {
    platform::assertMainThread();
    _swipe = Running<SwipeAnimation>{animation, now()};
}

int ImageMotions::finishSwipe() {
    const auto swipe = std::exchange(_swipe, std::nullopt);
    return swipe ? stepOf(swipe->animation) : 0;
}

bool ImageMotions::isRunning() const {
    return _zoom || _turn || _swipe || !std::holds_alternative<std::monostate>(_scroll);
}

bool ImageMotions::advance(std::optional<Running<GeometryAnimation>>& running) {
    if (!running || _geometry.advance(running->animation, now() - running->startTime)) return true;
    running.reset();
    return false;
}

ImageMotions::Ended ImageMotions::tick() {
    platform::assertMainThread();
    Ended ended;
    ended.hasEnded = !advance(_zoom);
    ended.hasEnded = !advance(_turn) || ended.hasEnded;
    std::visit(
        [this](const auto& running) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(running)>, std::monostate>) {
                const double elapsed = now() - running.startTime;
                _geometry.setDrawAnchor(running.animation.valueAt(elapsed));
                if (running.animation.isFinished(elapsed)) stopScroll();
            }
        },
        decltype(_scroll)(_scroll));
    if (_swipe) {
        const double elapsed = now() - _swipe->startTime;
        _geometry.setSwapOffset(_swipe->animation.valueAt(elapsed));
        if (_swipe->animation.isFinished(elapsed)) ended.step = finishSwipe();
    }
    return ended;
}

void ImageMotions::stop() {
    platform::assertMainThread();
    _zoom.reset();
    _turn.reset();
    stopScroll();
    _swipe.reset();
    _geometry.setSwapOffset(0);
}
