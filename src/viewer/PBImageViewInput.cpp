#include "viewer/PBImageView.h"

#include "group/PBImageFileItem.h"
#include "image/large/PBLoadImageManager.h"
#include "ui/DragOut.h"
#include "ui/Icons.h"
#include "ui/WheelPixels.h"
#include "viewer/ImageViewHost.h"
#include "viewer/StepButtons.h"
#include "viewer/input/ImageDragOut.h"

#include <QApplication>
#include <QDrag>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPixmap>
#include <QTouchEvent>
#include <QWheelEvent>

#include <utility>

namespace {

constexpr double anglePerTurn = 120;
constexpr QSize zoomCursorSize(24, 24);
constexpr QPoint zoomCursorHotSpot(10, 10);
/// The pointer has left: the buttons go a little later, in seconds.
constexpr double buttonDelay = 1.0;

ImageModifiers modifiersOf(Qt::KeyboardModifiers modifiers) {
    return {
        .shift = modifiers.testFlag(Qt::ShiftModifier),
        .command = modifiers.testFlag(Qt::ControlModifier),
        .option = modifiers.testFlag(Qt::AltModifier)};
}

std::optional<ImageKey> keyOf(int key) {
    switch (key) {
    case Qt::Key_Up:
        return ImageKey::Up;
    case Qt::Key_Down:
        return ImageKey::Down;
    case Qt::Key_Left:
        return ImageKey::Left;
    case Qt::Key_Right:
        return ImageKey::Right;
    case Qt::Key_PageUp:
        return ImageKey::PageUp;
    case Qt::Key_PageDown:
        return ImageKey::PageDown;
    case Qt::Key_Home:
        return ImageKey::Home;
    case Qt::Key_End:
        return ImageKey::End;
    case Qt::Key_Backspace:
        return ImageKey::Backspace;
    case Qt::Key_Space:
        return ImageKey::Space;
    case Qt::Key_Escape:
        return ImageKey::Escape;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return ImageKey::Return;
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift
        return ImageKey::ZoomIn;
    case Qt::Key_Minus:
        return ImageKey::ZoomOut;
    case Qt::Key_Z:
        return ImageKey::ActualSize;
    case Qt::Key_X:
        return ImageKey::FitIn;
    default:
        return std::nullopt;
    }
}

/// Held down they would do it again and again, or undo it.
bool isOnce(ImageKey key) {
    switch (key) {
    case ImageKey::Space:
    case ImageKey::Escape:
    case ImageKey::Return:
    case ImageKey::ActualSize:
    case ImageKey::FitIn:
        return true;
    default:
        return false;
    }
}

bool isStep(int key) {
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Backspace:
        return true;
    default:
        return false;
    }
}

WheelMove::Phase phaseOf(Qt::ScrollPhase phase) {
    switch (phase) {
    case Qt::ScrollBegin:
        return WheelMove::Phase::Begin;
    case Qt::ScrollUpdate:
        return WheelMove::Phase::Update;
    case Qt::ScrollEnd:
        return WheelMove::Phase::End;
    case Qt::ScrollMomentum:
        return WheelMove::Phase::Momentum;
    default:
        return WheelMove::Phase::None;
    }
}

bool isZoomKey(int key) {
    return key == Qt::Key_Control || key == Qt::Key_Alt;
}

} // namespace

bool PBImageView::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::NativeGesture:
        return nativeGesture(static_cast<QNativeGestureEvent*>(event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return touch(static_cast<QTouchEvent*>(event));
    case QEvent::ShortcutOverride: {
        // Without a modifier the letters are this view's own.
        const auto& key = static_cast<QKeyEvent&>(*event);
        const auto known = keyOf(key.key());
        const bool isOwn = known == ImageKey::ActualSize || known == ImageKey::FitIn ||
                           known == ImageKey::ZoomIn || known == ImageKey::ZoomOut;
        if (!isOwn || modifiersOf(key.modifiers()).isZoom()) break;
        event->accept();
        return true;
    }
    case QEvent::ScreenChangeInternal:
        updateViewport();
        if (updateScreen()) screenDidChange();
        settle();
        break;
    case QEvent::WindowDeactivate:
        _input.cancel();
        _isZoomKeyDown = false;
        settle();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

bool PBImageView::eventFilter(QObject* watched, QEvent* event) {
    const bool isPress = event->type() == QEvent::KeyPress;
    if (!isPress && event->type() != QEvent::KeyRelease)
        return QWidget::eventFilter(watched, event);
    const auto& key = static_cast<QKeyEvent&>(*event);
    if (isZoomKey(key.key()) && std::exchange(_isZoomKeyDown, isPress) != isPress) updateCursor();
    if (!isPress && !key.isAutoRepeat() && isStep(key.key())) _loadImageManager.steppingDidEnd();
    return QWidget::eventFilter(watched, event);
}

bool PBImageView::keyDown(const QKeyEvent& event) {
    const auto key = keyOf(event.key());
    if (!key) return false;
    if (event.isAutoRepeat() && isOnce(*key)) return true;
    // Tells signs of the keypad from signs with modifiers of their own.
    if (!_input.keyDown(*key, modifiersOf(event.modifiers()))) return false;
    if (isStep(event.key()) && !event.modifiers().testFlag(Qt::ShiftModifier)) {
        updatePrevNextButton();
        showPrevNextButton(false, 0);
    }
    settle();
    return true;
}

void PBImageView::keyPressEvent(QKeyEvent* event) {
    if (!keyDown(*event)) QWidget::keyPressEvent(event);
}

SwipeNeighbours PBImageView::neighbours() const {
    return {
        .hasNext = _host.nextImageFileItem() != nullptr,
        .hasPrevious = _host.prevImageFileItem() != nullptr};
}

void PBImageView::step(ImageStep step) {
    switch (step) {
    case ImageStep::Next:
        _host.navigateToNextImage();
        break;
    case ImageStep::Previous:
        _host.navigateToPreviousImage();
        break;
    case ImageStep::First:
        _host.navigateToFirstImage();
        break;
    case ImageStep::Last:
        _host.navigateToLastImage();
        break;
    }
    updatePrevNextButton();
}

void PBImageView::perform(ImageCommand command) {
    switch (command) {
    case ImageCommand::RotateLeft:
        return _host.rotateLeft();
    case ImageCommand::RotateRight:
        return _host.rotateRight();
    case ImageCommand::ToggleFlag:
        return _host.toggleFlag();
    case ImageCommand::LeaveLargeView:
        return _host.leaveLargeView();
    }
}

void PBImageView::beginFileDrag() {
    const auto item = _host.focusImageFileItem();
    const QString path = item ? item->filePath(_folderPaths) : QString();
    if (path.isEmpty()) return;
    auto* drag = new QDrag(this); // Qt deletes it when the drag is over
    drag->setMimeData(DragOut::mimeData({path}).release());
    const QImage picture = ImageDragOut::picture(
        _pictures.thumbnailOf(*item), item->rotateAngle(), devicePixelRatioF());
    drag->setPixmap(QPixmap::fromImage(picture));
    drag->setHotSpot(QPoint(ImageDragOut::side / 2, ImageDragOut::side / 2));
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
}

void PBImageView::mousePressEvent(QMouseEvent* event) {
    pressAt(event, 1);
}

void PBImageView::mouseDoubleClickEvent(QMouseEvent* event) {
    pressAt(event, 2);
}

void PBImageView::pressAt(QMouseEvent* event, int clickCount) {
    switch (event->button()) {
    case Qt::BackButton:
        return step(ImageStep::Previous);
    case Qt::ForwardButton:
        return step(ImageStep::Next);
    case Qt::LeftButton:
        break;
    default:
        return event->ignore();
    }
    const auto item = _host.focusImageFileItem();
    // Another photograph may have come under the mouse since the first of two clicks.
    const bool isSame = item && item == std::exchange(_clickedItem, item).lock();
    if (item)
        _input.mouse().mouseDown(
            event->position(), modifiersOf(event->modifiers()), isSame ? clickCount : 1);
    settle();
}

void PBImageView::mouseMoveEvent(QMouseEvent* event) {
    _isZoomKeyDown = modifiersOf(event->modifiers()).isZoom();
    if (event->buttons().testFlag(Qt::LeftButton)) {
        _input.mouse().mouseDragged(event->position());
    } else {
        _input.mouse().cancel(); // the release went elsewhere
        moveButtons(event->position());
    }
    settle();
}

void PBImageView::moveButtons(const QPointF& point) {
    const bool isOnMiniature =
        _navigationView->isVisible() && QRectF(_navigationView->geometry()).contains(point);
    const bool isNear =
        _buttons->isNearPrevious(point) || (_buttons->isNearNext(point) && !isOnMiniature);
    _buttons->showPrevNextButton(isNear, isNear ? 0 : buttonDelay);
}

void PBImageView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    _input.mouse().mouseUp(event->position(), modifiersOf(event->modifiers()));
    settle();
}

void PBImageView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    _buttons->showPrevNextButton(false, buttonDelay);
}

double PBImageView::timeOf(quint64 timestamp) const {
    // Events may have waited for a busy loop.
    return timestamp != 0 ? static_cast<double>(timestamp) / 1000 : _motions.now();
}

void PBImageView::wheelEvent(QWheelEvent* event) {
    event->accept();
    if (!_host.focusImageFileItem()) return;
    _input.wheel().wheel(
        {.phase = phaseOf(event->phase()),
         .point = event->position(),
         .pixels = pixelDeltaOf(*event),
         .turns = QPointF(event->angleDelta()) / anglePerTurn,
         .isZoom = modifiersOf(event->modifiers()).isZoom(),
         .time = timeOf(event->timestamp())});
    settle();
}

bool PBImageView::nativeGesture(QNativeGestureEvent* event) {
    switch (event->gestureType()) {
    case Qt::BeginNativeGesture:
        _input.beginGesture();
        break;
    case Qt::EndNativeGesture:
        _input.endGesture();
        break;
    case Qt::RotateNativeGesture:
        _input.rotate(-event->value()); // clockwise is positive there
        break;
    case Qt::ZoomNativeGesture:
        _input.magnify(event->value(), event->position());
        break;
    case Qt::SmartZoomNativeGesture:
        start(_geometry.toggleActualSizeAtPoint(event->position()));
        break;
    default:
        return QWidget::event(event);
    }
    settle();
    return true;
}

bool PBImageView::touch(QTouchEvent* event) {
    event->accept();
    if (event->type() == QEvent::TouchCancel || !_host.focusImageFileItem()) {
        _touch.cancel();
        settle();
        return true;
    }
    std::vector<QPointF> points;
    for (const QEventPoint& point : event->points())
        if (point.state() != QEventPoint::Released) points.push_back(point.position());
    _touch.touch(points, timeOf(event->timestamp()));
    settle();
    return true;
}

void PBImageView::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    setFocus(Qt::MouseFocusReason);
    // A key means the picture, wherever the pointer is.
    _host.showContextMenu(
        event->reason() == QContextMenuEvent::Mouse ? event->globalPos()
                                                    : mapToGlobal(rect().center()));
}

void PBImageView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    // As links and buttons do: where the keyboard led here.
    _isFocusShown = event->reason() == Qt::TabFocusReason ||
                    event->reason() == Qt::BacktabFocusReason ||
                    event->reason() == Qt::ShortcutFocusReason;
    update();
}

void PBImageView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    _isFocusShown = false;
    update();
}

void PBImageView::updateCursor() {
    const bool isPanning = _input.mouse().isPanning();
    const Cursor wanted = isPanning                                      ? Cursor::Grabbing
                          : _isZoomKeyDown && _host.focusImageFileItem() ? Cursor::Zoom
                          : placement().shouldShowNavigation()           ? Cursor::Hand
                                                                         : Cursor::Arrow;
    if (std::exchange(_cursor, wanted) == wanted) return;
    switch (wanted) {
    case Cursor::Arrow:
        return setCursor(Qt::ArrowCursor);
    case Cursor::Hand:
        return setCursor(Qt::OpenHandCursor);
    case Cursor::Grabbing:
        return setCursor(Qt::ClosedHandCursor);
    case Cursor::Zoom: {
        const QPixmap zoom = Icons::pixmap(
            QStringLiteral("zoom_cursor"), zoomCursorSize, devicePixelRatioF(), Qt::black);
        return setCursor(QCursor(zoom, zoomCursorHotSpot.x(), zoomCursorHotSpot.y()));
    }
    }
}
