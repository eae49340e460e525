#include "viewer/input/ImageSwipe.h"

#include "platform/tasks/MainThread.h"

void ImageSwipe::begin() {
    platform::assertMainThread();
    finish(_motions.finishSwipe());
    _springBackTime.reset();
    _isFollowing = true;
}

void ImageSwipe::moveBy(double way) {
    platform::assertMainThread();
    if (!_isFollowing) return;
    _geometry.setSwapOffset(swapOffsetAfter(offset(), way));
}

void ImageSwipe::release(double velocity) {
    platform::assertMainThread();
    if (!_isFollowing) return;
    // Most platforms tell of no momentum: what the fingers did last has to do.
    const bool isFlung = velocity * offset() < 0;
    const SwipeEnd end = isFlung ? swipeFlung(offset(), _host.neighbours())
                                 : swipeReleased(offset(), _host.neighbours());
    if (end == SwipeEnd::WaitForFling)
        _springBackTime = _motions.now() + swipeFlingWait;
    else
        doSwap(end);
}

void ImageSwipe::momentumDidBegin() {
    if (_isFollowing) doSwap(swipeFlung(offset(), _host.neighbours()));
}

void ImageSwipe::doSwap(SwipeEnd end) {
    _isFollowing = false;
    _springBackTime.reset();
    if (offset() == 0) return;
    const double width = _geometry.placement().viewport().rect().width();
    _motions.startSwipe(swipeAnimation(end, offset(), width));
}

void ImageSwipe::finish(int step) {
    if (step > 0) _host.step(ImageStep::Next);
    if (step < 0) _host.step(ImageStep::Previous);
    // Fingers that are on the way again pull from the place where they are.
    if (!_isFollowing && !_motions.isSwiping()) _geometry.setSwapOffset(0);
}

void ImageSwipe::cancel() {
    if (_isFollowing) doSwap(SwipeEnd::SpringBack);
}

void ImageSwipe::tick() {
    platform::assertMainThread();
    if (_springBackTime && _motions.now() >= *_springBackTime) doSwap(SwipeEnd::SpringBack);
}
