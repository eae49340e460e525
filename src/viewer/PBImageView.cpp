#include "viewer/PBImageView.h"

#include "codec/pixels/Geometry.h"
#include "group/PBImageFileItem.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/DropTip.h"
#include "ui/FolderDropTarget.h"
#include "ui/PBThemes.h"
#include "viewer/ImageViewAccessible.h"
#include "viewer/ImageViewHost.h"
#include "viewer/ProgressSpinner.h"
#include "viewer/StepButtons.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// From so many pixels, or frames, on a load takes long enough for an indicator.
constexpr double manyPixels = 6'250'000;
constexpr std::size_t manyFrames = 31;
/// After a step of a device without phases the picture is at rest; a little later than that.
constexpr double restWait = PhasedScrolling::momentumGap + 0.01;

} // namespace

PBImageView::PBImageView(
    ImageViewHost& host, const ImageViewServices& services, QWidget* parent,
    ImageMotions::Clock clock)
    : QWidget(parent), _host(host), _loadImageManager(services.loadImageManager),
      _folderPaths(services.folderPaths), _motions(_geometry, clock),
      _input(_geometry, _motions, *this), _touch(_geometry, _motions, _input),
      _player(std::move(clock)),
      _pictures(
          host, services,
          {.didLoad = [this](const std::shared_ptr<PBImageFileItem>& item) { didLoad(item); },
           .didResample = [this] { update(); }}),
      _buttons(new StepButtons(*this)), _navigationView(new NavigationView(*this, this)),
      _progressIndicator(new ProgressSpinner(this)),
      _dragTipView(new DropTip(QStringLiteral("photographs"), QStringLiteral("DropToShow"), this)) {
    ImageViewAccessible::install();
    _loadImageManager.addColoursObserver(this, [this] { screenDidChange(); });
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_AcceptTouchEvents);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    connect(_buttons, &StepButtons::previousClicked, this, [this] { step(ImageStep::Previous); });
    connect(_buttons, &StepButtons::nextClicked, this, [this] { step(ImageStep::Next); });
    auto* target = new FolderDropTarget(
        *this, [this](const QString& path) { return _host.canOpenPath(path); });
    connect(target, &FolderDropTarget::draggingChanged, this, [this](bool isOver) {
        _dragTipView->setVisible(isOver);
        _dragTipView->raise();
    });
    connect(target, &FolderDropTarget::dropped, this, [this](const QStringList& paths) {
        _host.openDroppedPaths(paths);
    });
}

PBImageView::~PBImageView() {
    _loadImageManager.removeColoursObserver(this);
}

void PBImageView::showImage() {
    platform::assertMainThread();
    const auto item = _host.focusImageFileItem();
    _input.cancel();
    _touch.cancel();
    _motions.stop();
    _player.stopPlayTimer();
    updateViewport();
    if (item)
        _geometry.showImage(item->imageSize(), item->rotateAngle());
    else
        _geometry.showImage({}, 0);
    _pictures.focusDidChange();
    requestFocus();
    _isWaitingForPicture = false;
    updateSpinner();
    updatePrevNextButton();
    zoomDidChange();
    startPlayTimer();
    update();
    settle();
    ImageViewAccessible::imageDidChange(*this);
}

/// Ahead of the first paint: a neighbour that begins until then would be stopped for it.
void PBImageView::requestFocus() {
    const auto item = _host.focusImageFileItem();
    if (!item || _host.isSlideShowMode() || placement().viewport().isEmpty()) return;
    if (!_pictures.isAway(*item)) _pictures.requestFocus(scale());
}

void PBImageView::imageDidChange() {
    platform::assertMainThread();
    if (const auto item = _host.focusImageFileItem()) _geometry.setImageSize(item->imageSize());
    followRotation();
    updatePrevNextButton();
    startPlayTimer();
    update();
    settle();
    ImageViewAccessible::imageDidChange(*this);
}

void PBImageView::leave() {
    platform::assertMainThread();
    _input.cancel();
    _touch.cancel();
    _motions.stop();
    _player.stopPlayTimer();
    _geometry.reset();
    _geometry.setImageSize({});
    _pictures.clearDisplayPicture();
    _miniature = {};
    _isWaitingForPhotographs = false;
    _isWaitingForPicture = false;
    updateSpinner();
    _buttons->hideAtOnce();
    _navigationView->hide();
    settle();
}

void PBImageView::tryPreloadNextOrPrevImage() {
    _pictures.tryPreloadNextOrPrevImage();
}

void PBImageView::setGround(const std::optional<QColor>& ground) {
    platform::assertMainThread();
    _ground = ground;
    update();
}

QColor PBImageView::groundNow() const {
    return _ground.value_or(PBThemes::imageBrowserBackgroundColor());
}

void PBImageView::start(const std::optional<GeometryAnimation>& animation) {
    platform::assertMainThread();
    _motions.start(animation);
    settle();
}

void PBImageView::zoomInAtPoint(const std::optional<QPointF>& point) {
    start(_geometry.zoomInAtPoint(point));
}

void PBImageView::zoomOutAtPoint(const std::optional<QPointF>& point) {
    start(_geometry.zoomOutAtPoint(point));
}

void PBImageView::actualSize() {
    start(_geometry.actualSize());
}

void PBImageView::fitInWithAnimation(bool animation) {
    start(_geometry.fitInWithAnimation(animation));
}

double PBImageView::zoomSlide(double slider) {
    const double snapped = _geometry.zoomSlide(slider);
    settle();
    return snapped;
}

/// Edits may come faster than the picture turns: it goes on to where they have come meanwhile.
void PBImageView::followRotation() {
    if (const auto item = _host.focusImageFileItem())
        start(_geometry.rotateToAngle(-item->rotateAngle()));
}

void PBImageView::scrollByDelta(const QPointF& delta) {
    _motions.scrollByDelta(delta, true);
    settle();
}

void PBImageView::tick() {
    const bool hasEnded = _input.tick();
    if (_player.playTimerMethod(framesNow())) update();
    settle();
    if (!hasEnded) return;
    followRotation();
    _host.revalidateToolbar();
}

bool PBImageView::isAtRest() const {
    return !_motions.isRunning() && !_input.isFollowing() && !_navigationView->isDragged();
}

void PBImageView::settle() {
    const ImagePlacement was = std::exchange(_settled, placement());
    if (was != placement()) {
        const bool isZoomed = was.scale() != scale() || was.isFitIn() != isFitIn() ||
                              was.imageSize() != placement().imageSize() ||
                              was.viewport() != placement().viewport() || was.angle() != angle();
        if (isZoomed) zoomDidChange();
        _hasZoomed = _hasZoomed || isZoomed;
        repaintMoved(was);
        _navigationView->pictureDidChange();
    }
    const bool isResting = isAtRest();
    if (isResting && !std::exchange(_wasAtRest, isResting)) {
        update(); // once more, for the eye
        startPlayTimer();
        if (std::exchange(_hasZoomed, false)) _host.revalidateToolbar();
    }
    _wasAtRest = isResting;
    updateCursor();
    schedule();
}

void PBImageView::schedule() {
    if (_motions.isRunning()) {
        if (!_frameTimer.isActive()) _frameTimer.start(scrollFrameInterval, Qt::PreciseTimer, this);
    } else {
        _frameTimer.stop();
    }
    const double now = _motions.now();
    std::optional<double> next = _input.nextTime();
    const auto take = [&next](double time) { next = std::min(time, next.value_or(time)); };
    if (_player.nextTime()) take(*_player.nextTime());
    if (_input.isFollowing()) take(now + restWait);
    if (!next) return _wakeTimer.stop();
    const double wait = std::max(0.0, std::ceil((*next - now) * 1000));
    _wakeTimer.start(static_cast<int>(std::min(wait, 60'000.0)), Qt::PreciseTimer, this);
}

void PBImageView::timerEvent(QTimerEvent* event) {
    const bool isWake = event->timerId() == _wakeTimer.timerId();
    if (!isWake && event->timerId() != _frameTimer.timerId()) return QWidget::timerEvent(event);
    if (isWake) _wakeTimer.stop();
    tick();
}

void PBImageView::repaintMoved(const ImagePlacement& was) {
    const QTransform before = was.drawTransform();
    const QTransform after = placement().drawTransform();
    if (before == after && was.viewport() == placement().viewport() &&
        was.imageSize() == placement().imageSize())
        return;
    const bool isMove = before.m11() == after.m11() && before.m12() == after.m12() &&
                        before.m21() == after.m21() && before.m22() == after.m22() &&
                        was.viewport() == placement().viewport() &&
                        was.imageSize() == placement().imageSize() && was.swapOffset() == 0 &&
                        placement().swapOffset() == 0;
    const QPointF way(after.dx() - before.dx(), after.dy() - before.dy());
    if (!isMove || !scrollPixels(way)) update();
}

/// Moves what is drawn already, so that only the strips that came into view are painted.
bool PBImageView::scrollPixels(const QPointF& way) {
    const QPoint whole(qRound(way.x()), qRound(way.y()));
    constexpr double tolerance = 1e-3;
    const bool isWhole = (way - whole).manhattanLength() < tolerance;
    // Between two points there may be half a device pixel, and a message stays where it is.
    const bool hasWholePixels = devicePixelRatioF() == std::rint(devicePixelRatioF());
    if (!isWhole || !hasWholePixels || _hasMessage || _isFocusShown ||
        std::abs(whole.x()) >= width() || std::abs(whole.y()) >= height())
        return false;
    scroll(whole.x(), whole.y(), rect());
    for (const QWidget* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (!child->isVisible()) continue;
        update(child->geometry());
        update(child->geometry().translated(whole));
    }
    return true;
}

void PBImageView::zoomDidChange() {
    updateNavigationShowHide();
    _host.updateZoomSizeSlider();
}

void PBImageView::updateNavigationShowHide() {
    const bool isShown = _isNavigationEnabled && placement().shouldShowNavigation() &&
                         _host.focusImageFileItem() && _navigationView->fits(size());
    _navigationView->setZoom(zoomPercent());
    _navigationView->setVisible(isShown);
}

void PBImageView::setNavigationEnabled(bool isEnabled) {
    _isNavigationEnabled = isEnabled;
    updateNavigationShowHide();
}

void PBImageView::updateViewport() {
    const ImageViewport viewport(
        QSizeF(size()), devicePixelRatioF(), QPointF(mapTo(window(), QPoint())));
    if (viewport == placement().viewport()) return;
    const bool isOtherRatio =
        viewport.devicePixelRatio() != placement().viewport().devicePixelRatio();
    _geometry.setViewport(viewport);
    if (isOtherRatio && updateScreen()) screenDidChange();
}

bool PBImageView::updateScreen() {
    const QSize size = screen()->size();
    LargeImageScreen wanted = _loadImageManager.screen();
    wanted.maxScreenSize = std::max(size.width(), size.height());
    wanted.backingScaleFactor = devicePixelRatioF();
    if (wanted == _loadImageManager.screen()) return false;
    _loadImageManager.setScreen(wanted);
    return true;
}

/// What is there may be of too few pixels, or in other colours.
void PBImageView::screenDidChange() {
    update();
    if (!isVisible()) return;
    requestFocus();
    tryPreloadNextOrPrevImage();
}

void PBImageView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateViewport();
    _buttons->layOut();
    _navigationView->layOut(size());
    _dragTipView->setGeometry(rect());
    _progressIndicator->move(
        qRound((width() - _progressIndicator->width()) / 2.0),
        qRound((height() - _progressIndicator->height()) / 2.0));
    settle();
}

void PBImageView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    qApp->installEventFilter(this);
    updateScreen();
    updateViewport();
    startPlayTimer();
    settle();
}

void PBImageView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    qApp->removeEventFilter(this);
    _input.cancel();
    _touch.cancel();
    _player.stopPlayTimer();
    settle();
}

void PBImageView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (_host.isSlideShowMode()) return painter.fillRect(event->rect(), groundNow());
    // The window may have moved the view by parts of a device pixel.
    updateViewport();
    const ImageScene scene = sceneNow();
    _hasMessage = !scene.message.isEmpty();
    ImagePainter::paint(painter, scene, QRectF(event->rect()), font());
    if (!_isFocusShown) return;
    painter.setPen(QPen(PBThemes::colors().accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
}

ImageScene PBImageView::sceneNow() {
    ImageScene scene;
    scene.placement = placement();
    scene.ground = groundNow();
    scene.neighbour = swipedNeighbour();
    const auto item = _host.focusImageFileItem();
    if (!item) {
        _painted = Painted::Nothing;
        if (!isProgressIndicatorShown()) scene.message = platform::localizedString(u"No Photo");
        return scene;
    }
    const ImageViewPictures::Picture picture =
        _pictures.pictureOf(*item, scale(), _player.indexOfImages());
    // Before the file was looked into its size is not known: that of the thumbnail, then of the
    // picture, which is loaded in full.
    if (item->imageSize().isEmpty() && !picture.image.isNull()) {
        _geometry.setImageSize(picture.image.size());
        scene.placement = placement();
    }
    scene.picture = {picture.image, scene.placement.imageSize(), angle()};
    if (isAtRest())
        scene.display = _pictures.displayPicture(scene.placement, picture);
    else
        _pictures.clearDisplayPicture();
    _painted = picture.image.isNull() ? Painted::Nothing
               : picture.isThumbnail  ? Painted::Thumbnail
               : picture.scale < 1    ? Painted::FitIn
                                      : Painted::Original;
    const bool isAway = picture.isThumbnail && !picture.isDone && _pictures.isAway(*item);
    if (isAway)
        scene.message = platform::localizedString(u"PhotoAway");
    else if (picture.isThumbnail && picture.isUnreadable)
        scene.message = platform::localizedString(u"PhotoUnreadable");
    noteWaiting(picture, !isAway);
    return scene;
}

std::optional<ImageScene::Picture> PBImageView::swipedNeighbour() const {
    const double offset = placement().swapOffset();
    if (offset == 0) return {};
    const auto item = offset > 0 ? _host.nextImageFileItem() : _host.prevImageFileItem();
    if (!item) return {};
    const ImagePlacement fitted =
        ImagePlacement::fittedIn(placement().viewport(), item->imageSize(), -item->rotateAngle());
    return ImageScene::Picture{
        _pictures.pictureOf(*item, fitted.scale()).image, item->imageSize(), fitted.angle()};
}

/// Asks for what is missing, and says so where that takes its time.
void PBImageView::noteWaiting(const ImageViewPictures::Picture& picture, bool canCome) {
    const bool isWaiting = !picture.isDone && canCome;
    if (isWaiting) _pictures.requestFocus(scale());
    const QSizeF size = placement().imageSize();
    const bool isLong = size.width() * size.height() >= manyPixels ||
                        (picture.images && picture.images->imageCount() >= manyFrames);
    _isWaitingForPicture = isWaiting && (isLong || _isWaitingForPicture);
    updateSpinner();
}

void PBImageView::updateSpinner() {
    if (isProgressIndicatorShown())
        _progressIndicator->start();
    else
        _progressIndicator->stop();
}

void PBImageView::startProgressIndicator() {
    _isWaitingForPhotographs = true;
    updateSpinner();
    update();
}

void PBImageView::stopProgressIndicator() {
    _isWaitingForPhotographs = false;
    _isWaitingForPicture = false;
    updateSpinner();
    update();
}

bool PBImageView::isProgressIndicatorShown() const {
    return _isWaitingForPhotographs || _isWaitingForPicture;
}

void PBImageView::showPrevNextButton(bool isShown, double delay) {
    _buttons->showPrevNextButton(isShown, delay);
}

void PBImageView::updatePrevNextButton() {
    const SwipeNeighbours there = neighbours();
    _buttons->setEnabled(there.hasPrevious, there.hasNext);
}

FramePlayer::Frames PBImageView::framesNow() const {
    const auto item = _host.focusImageFileItem();
    if (!item || !isVisible() || _host.isSlideShowMode()) return {};
    return _pictures.framesOf(*item, scale());
}

void PBImageView::startPlayTimer() {
    _player.startPlayTimer(framesNow());
    schedule();
}

void PBImageView::didLoad(const std::shared_ptr<PBImageFileItem>& item) {
    if (item != _host.focusImageFileItem()) {
        if (placement().swapOffset() != 0) update();
        return;
    }
    startPlayTimer();
    update();
    _navigationView->pictureDidChange();
}

QImage PBImageView::miniature(int side) {
    const auto item = _host.focusImageFileItem();
    if (!item) return {};
    QImage image = _pictures.thumbnailOf(*item);
    // The thumbnail is at hand and mostly large enough; else the version, made small once. That is
    // the smallest one: of a large original it would take longer than a frame.
    if (std::max(image.width(), image.height()) < side / 2) {
        const QSizeF size = placement().imageSize();
        const double zoom = side / devicePixelRatioF() / std::max(size.width(), size.height());
        image = _pictures.pictureOf(*item, zoom).image;
    }
    if (image.isNull()) return {};
    if (_miniature.cacheKey == image.cacheKey() && _miniature.side == side) return _miniature.image;
    const QSize size = codec::reducedSize(image.size(), side);
    _miniature = {
        image.cacheKey(), side,
        image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)};
    return _miniature.image;
}

QPointF PBImageView::centerAnchor() {
    _motions.finishScroll();
    _geometry.centerAnchor();
    return placement().drawAnchor();
}

void PBImageView::tryMoveDrawAnchorToPoint(const QPointF& point) {
    _geometry.tryMoveDrawAnchorToPoint(point);
    settle();
}

std::shared_ptr<PBImageFileItem> PBImageView::focusImageFileItem() const {
    return _host.focusImageFileItem();
}
