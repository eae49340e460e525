#include "viewer/slideshow/Slideshow.h"

#include "group/PBImageFileItem.h"
#include "platform/desktop/IdleInhibitor.h"
#include "platform/tasks/MainThread.h"
#include "viewer/slideshow/LoadedSlideshowPictures.h"
#include "viewer/slideshow/PBSlideShowViewController.h"
#include "viewer/slideshow/PBSlideshowContainerView.h"
#include "viewer/slideshow/PBSlideshowView.h"
#include "viewer/slideshow/SlideshowControlBar.h"
#include "viewer/slideshow/SlideshowHost.h"
#include "viewer/slideshow/surfaces/TransitionEngine.h"

Slideshow::Slideshow(const Parts& parts) : _parts(parts) {}

Slideshow::~Slideshow() {
    // The bar looks at the controller to its end, so the controller goes last.
    if (!_container) return;
    _controller->stop();
    _container.reset();
}

void Slideshow::build() {
    platform::assertMainThread();
    if (_controller) return;
    _inhibitor = platform::makeIdleInhibitor();
    _pictures = std::make_unique<LoadedSlideshowPictures>(_parts.requests, _parts.loadImageManager);
    _clock = std::make_unique<SystemSlideshowClock>();
    auto view = std::make_unique<PBSlideshowView>(transitionEngine());
    _view = view.get();
    _controller = std::make_unique<PBSlideShowViewController>(PBSlideShowViewController::Parts{
        .userDefaults = _parts.userDefaults,
        .pictures = *_pictures,
        .stage = *_view,
        .clock = *_clock,
        .inhibitor = *_inhibitor,
        .host = _parts.host});
    _container =
        std::make_unique<PBSlideshowContainerView>(*_controller, view.release(), _parts.window);
    connect(_controller.get(), &PBSlideShowViewController::didExit, this, [this] {
        _container->exitFullScreen();
        Q_EMIT didExit();
    });
}

PBSlideShowViewController& Slideshow::slideShowViewController() {
    build();
    return *_controller;
}

bool Slideshow::isRunning() const {
    return _controller && !_controller->isStopped();
}

void Slideshow::start(PBImageFileArray items, std::int64_t focusIndex) {
    platform::assertMainThread();
    if (items.empty() || isRunning()) return;
    build();
    _controller->setFileItemArray(std::move(items), focusIndex);
    _parts.host.setIsSlideShowMode(true);
    _container->enterFullScreen();
    QMetaObject::invokeMethod(
        _controller.get(), [this] { _controller->play(); }, Qt::QueuedConnection);
}

Slideshow::State Slideshow::state() const {
    State state;
    state.state = QStringLiteral("stopped");
    if (!_controller) return state;
    state.engine =
        transitionEngine().isOpenGL ? QStringLiteral("opengl") : QStringLiteral("raster");
    state.renderer = transitionEngine().renderer;
    state.transition = static_cast<int>(_controller->settings().transition());
    state.isInhibited = _inhibitor->isInhibited();
    if (!isRunning()) return state;
    state.state = _controller->isPause() ? QStringLiteral("paused") : QStringLiteral("playing");
    state.index = _controller->fileIndex();
    state.name = _controller->currentItem()->fileName();
    state.isTransitionRunning = _view->isRunning();
    state.areControlsShown = _container->controlBar().isShown();
    state.isFullScreen = _container->isVisible() && _container->isFullScreen();
    return state;
}
