#include "viewer/slideshow/PBSlideShowViewController.h"

#include "group/PBImageFileItem.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/SlideshowHost.h"
#include "viewer/slideshow/SlideshowPictures.h"
#include "viewer/slideshow/SlideshowStage.h"

#include <QKeyEvent>

#include <cmath>
#include <utility>

using Timer = SlideshowClock::Timer;

namespace {

/// Pictures that are loaded ahead, beside the first.
constexpr std::int64_t lookAhead = 5;
constexpr double playDuration = 1.0;
constexpr double manualDuration = 0.5;
constexpr std::chrono::milliseconds controlsTime{3000};
/// How often it is looked whether a picture that is waited for is still on its way.
constexpr std::chrono::milliseconds waitingTime{1000};

} // namespace

PBSlideShowViewController::PBSlideShowViewController(const Parts& parts)
    : _parts(parts), _settings(parts.userDefaults) {
    _parts.stage.setTransitionStyle(_settings.transition());
    _parts.stage.setAnimationDidStop([this](bool finished) { animationDidStop(finished); });
    _parts.pictures.setListener([this](const PBImageFileItem& item) { loadImageFinished(item); });
}

PBSlideShowViewController::~PBSlideShowViewController() {
    _parts.pictures.setListener([](const PBImageFileItem&) {});
    stopSlideshowTimer();
    stopShowHideControllTimer();
    _parts.inhibitor.release();
}

void PBSlideShowViewController::setFileItemArray(PBImageFileArray items, std::int64_t focusIndex) {
    platform::assertMainThread();
    if (items.empty()) return;
    const auto count = static_cast<std::int64_t>(items.size());
    const std::int64_t index = std::clamp<std::int64_t>(focusIndex, 0, count - 1);
    _fileItemArray = std::move(items);
    _fileIndex = _settings.isShuffled() ? _order.shuffle(count, index, _random)
                                        : _order.arrange(count, index);
    _isExiting = false;
}

void PBSlideShowViewController::play() {
    if (isStopped() || _isExiting) return;
    _isPlayPrev = false;
    setPause(false);
    _parts.stage.setTransitionDuration(playDuration);
    startShowHideControllTimer();
    doPlay();
}

void PBSlideShowViewController::doPlay() {
    tryPreloadImagesIncludeCurrent(true);
    transitionSlideShow();
}

void PBSlideShowViewController::stop() {
    _fileIndex = -1;
    _isWaiting = false;
    _fileItemArray = {};
    _parts.pictures.forget();
    stopSlideshowTimer();
    stopShowHideControllTimer();
    _parts.stage.clearTransition();
    setPause(true);
    Q_EMIT showController(true);
}

void PBSlideShowViewController::setPause(bool isPause) {
    _isPause = isPause;
    if (isPause) {
        _parts.inhibitor.release();
    } else {
        _parts.inhibitor.inhibit(platform::localizedString(QStringLiteral("SlideshowPlays")));
    }
    Q_EMIT updateControlUI();
}

IndexedImage PBSlideShowViewController::imageAt(std::int64_t place) const {
    const std::int64_t index = _order.indexAt(place);
    return {_fileItemArray[static_cast<std::size_t>(index)], index};
}

std::shared_ptr<PBImageFileItem> PBSlideShowViewController::currentItem() const {
    return isStopped() ? nullptr : imageAt(_fileIndex).item;
}

void PBSlideShowViewController::transitionSlideShow() {
    if (isStopped()) return;
    const IndexedImage current = imageAt(_fileIndex);
    const SlideshowPicture picture = _parts.pictures.pictureOf(current);
    _isWaiting = picture.isOnItsWay;
    stopSlideshowTimer();
    if (_isWaiting) {
        // Others clear the line of loads without a word.
        _parts.clock.start(Timer::Interval, waitingTime, [this] { transitionSlideShow(); });
    } else {
        doTransitionToImage(picture.image, -current.item->rotateAngle());
    }
}

void PBSlideShowViewController::doTransitionToImage(const QImage& image, double angle) {
    _parts.stage.transitionToImage(image, angle);
    if (!isStopped() && !isLastOfShow()) tryPreloadImagesIncludeCurrent(false);
}

void PBSlideShowViewController::tryPreloadImagesIncludeCurrent(bool includeCurrent) {
    if (isStopped()) return;
    const std::int64_t direction = _isPlayPrev ? -1 : 1;
    const std::int64_t base = includeCurrent ? 0 : direction;
    std::vector<IndexedImage> images;
    for (std::int64_t offset = lookAhead; offset >= 0; --offset) {
        const std::int64_t place =
            _order.placeAfter(_fileIndex, base + offset * direction, _settings.isLoopPlay());
        if (place >= 0) images.push_back(imageAt(place));
    }
    _parts.pictures.preload(images, _order.indexAt(_fileIndex));
}

void PBSlideShowViewController::loadImageFinished(const PBImageFileItem& item) {
    if (_isWaiting && currentItem().get() == &item) transitionSlideShow();
}

bool PBSlideShowViewController::isLastOfShow() const {
    return !_settings.isLoopPlay() && _fileIndex == count() - 1;
}

void PBSlideShowViewController::animationDidStop(bool finished) {
    if (isStopped() || !finished || _isPause) return;
    if (isLastOfShow()) {
        setPause(true);
    } else {
        startSlideshowTimer();
    }
}

void PBSlideShowViewController::slideshowTimer() {
    _fileIndex = _order.placeAfter(_fileIndex, 1, true);
    transitionSlideShow();
    Q_EMIT updateControlUI();
}

void PBSlideShowViewController::startSlideshowTimer() {
    if (_parts.clock.isRunning(Timer::Interval)) return;
    const std::chrono::milliseconds interval(std::llround(_settings.interval() * 1000));
    _parts.clock.start(Timer::Interval, interval, [this] { slideshowTimer(); });
}

void PBSlideShowViewController::stopSlideshowTimer() {
    _parts.clock.stop(Timer::Interval);
}

void PBSlideShowViewController::startShowHideControllTimer() {
    _parts.clock.start(Timer::HideControls, controlsTime, [this] { Q_EMIT showController(false); });
}

void PBSlideShowViewController::stopShowHideControllTimer() {
    _parts.clock.stop(Timer::HideControls);
}

void PBSlideShowViewController::playOrPause() {
    if (isStopped() || _isExiting) return;
    if (!_isPause) {
        stopSlideshowTimer();
        setPause(true);
        return;
    }
    _fileIndex = _order.placeAfter(_fileIndex, 1, true);
    play();
}

bool PBSlideShowViewController::canPrev() const {
    return _isPause && !isStopped() && (_settings.isLoopPlay() || _fileIndex > 0);
}

bool PBSlideShowViewController::canNext() const {
    return _isPause && !isStopped() && (_settings.isLoopPlay() || _fileIndex < count() - 1);
}

void PBSlideShowViewController::prevImage() {
    step(_order.placeAfter(_fileIndex, -1, _settings.isLoopPlay()), true);
}

void PBSlideShowViewController::nextImage() {
    step(_order.placeAfter(_fileIndex, 1, _settings.isLoopPlay()), false);
}

void PBSlideShowViewController::firstImage() {
    step(0, true);
}

void PBSlideShowViewController::lastImage() {
    step(count() - 1, false);
}

void PBSlideShowViewController::step(std::int64_t target, bool isBackwards) {
    if (!_isPause || isStopped() || _isExiting) return;
    _isPlayPrev = isBackwards;
    _parts.stage.setTransitionDuration(manualDuration);
    if (target >= 0) {
        _fileIndex = target;
        doPlay();
    }
    Q_EMIT updateControlUI();
}

void PBSlideShowViewController::exitSlideshow() {
    platform::assertMainThread();
    if (isStopped() || std::exchange(_isExiting, true)) return;
    _parts.host.setIsSlideShowMode(false);
    const auto shown = currentItem();
    if (shown != _parts.host.focusImageFileItem()) _parts.host.goToImageFileItem(shown);
    QMetaObject::invokeMethod(
        this, [this] { doExit(); }, Qt::QueuedConnection);
}

void PBSlideShowViewController::doExit() {
    stop();
    Q_EMIT didExit();
}

bool PBSlideShowViewController::doKeyDown(const QKeyEvent& event) {
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    switch (event.key()) {
    case Qt::Key_Space:
        if (!event.isAutoRepeat()) playOrPause();
        return true;
    case Qt::Key_Right:
    case Qt::Key_PageDown:
        nextImage();
        return true;
    case Qt::Key_Left:
    case Qt::Key_PageUp:
        prevImage();
        return true;
    case Qt::Key_Home:
        firstImage();
        return true;
    case Qt::Key_End:
        lastImage();
        return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift
    case Qt::Key_Minus:
        _settings.stepInterval(event.key() == Qt::Key_Minus ? -1 : 1);
        Q_EMIT updateControlUI();
        mouseMoved(false); // shows what came of it
        return true;
    case Qt::Key_Escape:
    case Qt::Key_F5:
    case Qt::Key_Q:
        // The key that began the show may be held yet.
        if (!event.isAutoRepeat()) cancelOperation();
        return true;
    default:
        return false;
    }
}

void PBSlideShowViewController::mouseMoved(bool isOverControls) {
    if (isStopped()) return;
    Q_EMIT showController(true);
    stopShowHideControllTimer();
    if (!isOverControls) startShowHideControllTimer();
}

void PBSlideShowViewController::holdControls(bool isHeld) {
    if (isStopped()) return;
    stopShowHideControllTimer();
    if (!isHeld) startShowHideControllTimer();
}

void PBSlideShowViewController::intervalMenuClicked(int seconds) {
    if (_settings.interval() != seconds) _settings.setInterval(seconds);
    holdControls(false);
    Q_EMIT updateControlUI();
}

void PBSlideShowViewController::transitionMenuClicked(TransitionStyle style) {
    if (_settings.transition() != style) _settings.setTransition(style);
    _parts.stage.setTransitionStyle(style);
    holdControls(false);
    Q_EMIT updateControlUI();
}

void PBSlideShowViewController::setLoopPlay(bool isLoopPlay) {
    _settings.setLoopPlay(isLoopPlay);
    if (isLastOfShow() && _parts.clock.isRunning(Timer::Interval)) {
        stopSlideshowTimer();
        setPause(true);
    }
    Q_EMIT updateControlUI();
}

void PBSlideShowViewController::setShuffled(bool isShuffled) {
    _settings.setShuffled(isShuffled);
    if (!isStopped()) {
        const std::int64_t index = _order.indexAt(_fileIndex);
        _fileIndex =
            isShuffled ? _order.shuffle(count(), index, _random) : _order.arrange(count(), index);
        tryPreloadImagesIncludeCurrent(_isWaiting);
    }
    Q_EMIT updateControlUI();
}
