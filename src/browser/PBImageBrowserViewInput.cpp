#include "browser/PBImageBrowserView.h"

#include "browser/BrowserAccessible.h"
#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserSelectView.h"
#include "catalogue/marks/Stars.h"
#include "platform/program/HarmlessText.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/DragOut.h"
#include "ui/PBModalTextField.h"

#include <QApplication>
#include <QDrag>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPixmap>
#include <QScopedValueRollback>
#include <QStyleHints>
#include <QTimerEvent>
#include <QToolTip>
#include <QWheelEvent>

#include <cmath>

namespace {

constexpr int renameTag = 1;
constexpr double nameFieldMargin = 3;

BrowserModifiers modifiersOf(Qt::KeyboardModifiers modifiers) {
    return {
        .shift = modifiers.testFlag(Qt::ShiftModifier),
        .command = modifiers.testFlag(Qt::ControlModifier),
        .other = modifiers.testFlag(Qt::AltModifier) || modifiers.testFlag(Qt::MetaModifier)};
}

std::optional<BrowserKey> keyOf(int key) {
    switch (key) {
    case Qt::Key_Up:
        return BrowserKey::Up;
    case Qt::Key_Down:
        return BrowserKey::Down;
    case Qt::Key_Left:
        return BrowserKey::Left;
    case Qt::Key_Right:
        return BrowserKey::Right;
    case Qt::Key_PageUp:
        return BrowserKey::PageUp;
    case Qt::Key_PageDown:
        return BrowserKey::PageDown;
    case Qt::Key_Home:
        return BrowserKey::Home;
    case Qt::Key_End:
        return BrowserKey::End;
    case Qt::Key_Space:
        return BrowserKey::Space;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return BrowserKey::Return;
    default:
        return std::nullopt;
    }
}

/// A digit that stands for so many stars. Behind letters it belongs to a name that is typed. Some
/// keyboards have the digits above other signs.
std::optional<int> starsOf(const QKeyEvent& event) {
    constexpr Qt::KeyboardModifiers digitModifiers = Qt::KeypadModifier | Qt::ShiftModifier;
    const int stars = event.key() - Qt::Key_0;
    const bool isPlain = (event.modifiers() & ~digitModifiers) == Qt::NoModifier;
    return isPlain && stars >= 0 && stars <= marks::mostStars ? std::optional(stars) : std::nullopt;
}

} // namespace

bool PBImageBrowserView::event(QEvent* event) {
    if (event->type() == QEvent::NativeGesture)
        return nativeGesture(static_cast<QNativeGestureEvent*>(event));
    if (event->type() == QEvent::ShortcutOverride && _input.hasBand() &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept(); // no menu's
        return true;
    }
    if (event->type() == QEvent::ToolTip && showToolTip(*static_cast<QHelpEvent*>(event)))
        return true;
    if (event->type() == QEvent::FontChange || event->type() == QEvent::ApplicationFontChange) {
        _painter.fontDidChange();
        update();
    }
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ActivationChange)
        update();
    return QWidget::event(event);
}

bool PBImageBrowserView::eventFilter(QObject* watched, QEvent* event) {
    const bool isRelease = event->type() == QEvent::MouseButtonRelease && watched->isWidgetType() &&
                           watched != this &&
                           static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    const bool isBlocked = event->type() == QEvent::WindowBlocked && watched == window();
    if (isRelease || isBlocked) _input.cancelDrag();
    return QWidget::eventFilter(watched, event);
}

bool PBImageBrowserView::nativeGesture(QNativeGestureEvent* event) {
    switch (event->gestureType()) {
    case Qt::BeginNativeGesture:
        _input.beginGesture();
        return true;
    case Qt::EndNativeGesture:
        _input.endGesture();
        return true;
    // Counter-clockwise is negative there.
    case Qt::RotateNativeGesture:
        _input.rotate(-event->value());
        return true;
    case Qt::ZoomNativeGesture:
        _input.magnify(event->value());
        return true;
    default:
        return QWidget::event(event);
    }
}

std::int64_t PBImageBrowserView::headAt(const QPoint& point) {
    // The sticky head lies over the next one.
    for (const BrowserHead& head : _layout.visibleHeads(visibleRect()))
        if (head.rect.contains(toSheet(point))) return head.group;
    return -1;
}

QString PBImageBrowserView::toolTipAt(const QPoint& point) {
    platform::assertMainThread();
    const std::int64_t group = headAt(point);
    if (group >= 0) {
        const bool isShortened =
            _painter.heads().isShortened(_leaves.leaf(group), _layout.headRect(group).width());
        return isShortened ? headText(group) : QString();
    }
    const BrowserHit hit = _layout.itemIndexByPoint(toSheet(point), _painter);
    const auto item = _leaves.imageFileAtIndex(hit.index);
    if (!item || hit.part != BrowserPart::FileName) return {};
    const QRectF room = _layout.fileNameRectWithCellRect(_layout.cellRectAtIndex(hit.index));
    return _painter.fileNameWidth(hit.index) > room.width() ? item->fileName() : QString();
}

bool PBImageBrowserView::showToolTip(const QHelpEvent& event) {
    const QString text = toolTipAt(event.pos());
    // Names are no rich text, whatever is in them.
    QToolTip::showText(
        event.globalPos(),
        text.isEmpty()
            ? QString()
            : QStringLiteral("<span>%1</span>").arg(platform::harmlessText(text).toHtmlEscaped()),
        this);
    return !text.isEmpty();
}

void PBImageBrowserView::wheelEvent(QWheelEvent* event) {
    if (event->modifiers() != Qt::ControlModifier) return event->ignore(); // the scroll view's
    event->accept();
    constexpr double anglePerTurn = 120;
    if (event->phase() != Qt::ScrollMomentum) _input.zoom(event->angleDelta().y() / anglePerTurn);
}

void PBImageBrowserView::mousePressEvent(QMouseEvent* event) {
    pressAt(event, 1);
}

void PBImageBrowserView::mouseDoubleClickEvent(QMouseEvent* event) {
    pressAt(event, 2);
}

void PBImageBrowserView::pressAt(QMouseEvent* event, int clickCount) {
    _lastMouse = event->position().toPoint();
    _clickCount = clickCount;
    if (event->button() != Qt::LeftButton) return event->ignore();
    const QPointF point = toSheet(event->position());
    const std::int64_t head = headAt(event->position().toPoint());
    if (head >= 0) return scrollToGroup(head);
    const auto clickedBefore = _input.downImageFileItem();
    captureScrollIfNone();
    _input.mouseDown(point, modifiersOf(event->modifiers()));
    // Another image may have come under the mouse since the first of two clicks.
    if (_input.downImageFileItem() != clickedBefore) _clickCount = 1;
}

void PBImageBrowserView::mouseMoveEvent(QMouseEvent* event) {
    _lastMouse = event->position().toPoint();
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        // The release went elsewhere.
        _input.cancelDrag();
        return;
    }
    _input.mouseDragged(toSheet(event->position()));
}

void PBImageBrowserView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) _input.mouseUp(_clickCount);
}

void PBImageBrowserView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Mouse) {
        const QPointF point = toSheet(event->pos());
        if (headAt(event->pos()) < 0)
            Q_EMIT contextMenuRequested(_input.rightMouseDown(point), event->globalPos());
        return;
    }
    // By a key: at the current image, if it shows.
    QPoint position = event->globalPos();
    const PBImageBrowserIndex current = currentIndex();
    if (current.isValid() && widgetRect(current).intersects(rect()))
        position = mapToGlobal(widgetRect(current).center());
    Q_EMIT contextMenuRequested(_selection.hasSelect(FoldedLeaves::Excluded), position);
}

void PBImageBrowserView::perform(BrowserCommand command) {
    switch (command) {
    case BrowserCommand::ToggleFlag:
        Q_EMIT flagToggleRequested();
        break;
    case BrowserCommand::RotateLeft:
        Q_EMIT rotateLeftRequested();
        break;
    case BrowserCommand::RotateRight:
        Q_EMIT rotateRightRequested();
        break;
    }
}

void PBImageBrowserView::keyPressEvent(QKeyEvent* event) {
    const BrowserModifiers modifiers = modifiersOf(event->modifiers());
    const auto key = keyOf(event->key());
    if (key && !(*key == BrowserKey::Space && isTyping())) {
        // It would set the flag and take it back until the key is let go.
        if (*key == BrowserKey::Space && event->isAutoRepeat()) return;
        const QScopedValueRollback repeats(_isAutoRepeat, event->isAutoRepeat());
        if (!_input.keyDown(*key, modifiers)) event->ignore();
        return;
    }
    if (event->key() == Qt::Key_Escape && _input.cancelBand()) return;
    const QString text = event->text();
    if (const auto stars = starsOf(*event);
        stars && !isTyping() && _selection.hasSelect(FoldedLeaves::Included)) {
        if (!event->isAutoRepeat()) Q_EMIT ratingRequested(*stars);
        return;
    }
    if (modifiers.hasCommandOrOther() || text.isEmpty() || !text.at(0).isPrint())
        return QWidget::keyPressEvent(event);
    typed(text);
}

/// Letters that come soon after one another make one beginning of a name.
bool PBImageBrowserView::isTyping() const {
    const int interval = QGuiApplication::styleHints()->keyboardInputInterval(); // milliseconds
    return !_typed.isEmpty() && _scrollView.now() - _lastTyped < interval / 1000.0;
}

void PBImageBrowserView::typed(const QString& text) {
    if (!isTyping()) _typed.clear();
    _lastTyped = _scrollView.now();
    // The same letter again goes on to the next name.
    if (_typed != text) _typed += text;
    _input.typeAhead(_typed);
}

void PBImageBrowserView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    BrowserAccessible::currentDidChange(*this);
    update();
}

void PBImageBrowserView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

void PBImageBrowserView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    _input.cancelDrag();
}

void PBImageBrowserView::enterToLargeView(const PBImageBrowserIndex& index) {
    Q_EMIT enterToLargeViewRequested(index);
}

void PBImageBrowserView::setDragging(bool isDragging) {
    // Trees wait until the button is up.
    qApp->removeEventFilter(this);
    if (isDragging) qApp->installEventFilter(this);
    if (!isDragging) {
        _tracking.reset();
    } else if (platform::MainLoop::instance()) {
        _tracking = std::make_unique<platform::TrackingScope>();
    }
}

void PBImageBrowserView::showBand(const QRectF& band) {
    if (band.isNull()) return _selectView->hide();
    const QRectF visible = visibleRect();
    const QRectF shown = band.intersected(visible).translated(-visible.topLeft());
    _selectView->setGeometry(
        static_cast<int>(shown.x()), static_cast<int>(shown.y()),
        std::max(1, static_cast<int>(shown.width())),
        std::max(1, static_cast<int>(shown.height())));
    _selectView->show();
    _selectView->raise();
}

void PBImageBrowserView::setSelectTimerScrollStep(int step) {
    _selectTimerScrollStep = step;
    if (step == 0) {
        _selectTimer.stop();
    } else if (!_selectTimer.isActive()) {
        _selectTimer.start(scrollFrameInterval, Qt::PreciseTimer, this);
    }
}

void PBImageBrowserView::timerEvent(QTimerEvent* event) {
    if (event->timerId() == _adjustTimer.timerId()) return adjustBuildThumb();
    if (event->timerId() == _standInTimer.timerId()) {
        _standInTimer.stop();
        return _feed.loadStandIns(visibleRect());
    }
    if (event->timerId() == _largerTimer.timerId()) {
        _largerTimer.stop();
        return _feed.loadLarger(visibleRect());
    }
    if (event->timerId() != _selectTimer.timerId()) return QWidget::timerEvent(event);
    _scrollView.scrollToPosition(visibleRect().top() + _selectTimerScrollStep, false);
    // The band grows while the mouse stands still.
    _input.mouseDragged(toSheet(_lastMouse));
}

void PBImageBrowserView::beginDragOut(const PBImageBrowserIndex& index) {
    const QStringList paths =
        _selection.selectedFilePath(_services.folderPaths(), FoldedLeaves::Included);
    const auto item = _leaves.imageFileAtIndex(index);
    if (paths.isEmpty() || !item) return;
    const QRectF target = _layout.hitTarget(_layout.cellRectAtIndex(index), index);
    const QImage thumbnail = item->hasThumbnail()
                                 ? item->thumbnailRef()
                                 : _services.thumbnailLoader().loadThumbnail(*item);
    auto* drag = new QDrag(this); // Qt deletes it when the drag is over
    drag->setMimeData(DragOut::mimeData(paths).release());
    drag->setPixmap(QPixmap::fromImage(DragOut::picture(
        thumbnail, target.size().toSize(), item->rotateAngle(), paths.size(),
        devicePixelRatioF())));
    drag->setHotSpot((toSheet(_lastMouse) - target.topLeft()).toPoint());
    // While the drag is on, the tree under it stays.
    setDragging(true);
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
    setDragging(false);
}

void PBImageBrowserView::renameIndex(const PBImageBrowserIndex& index, const QString& typed) {
    platform::assertMainThread();
    if (!_leaves.imageFileAtIndex(index)) return;
    scrollIndexToVisible(index);
    beginRename(index);
    if (!typed.isEmpty()) _editFileNameTextField->setText(typed);
    _input.clearDownImageFileItem();
}

/// Puts the field over the name of its image, wherever that is by now.
void PBImageBrowserView::placeNameField() {
    if (!_editFileNameTextField || !_editingNameFileItem) return;
    const PBImageBrowserIndex index = _leaves.indexForImageFile(_editingNameFileItem);
    if (!index.isValid()) {
        // The image has gone: there is nothing to be named any more.
        return _editFileNameTextField->cancel();
    }
    const QRectF cell = _layout.cellRectAtIndex(index);
    const QRectF name = _layout.fileNameRectWithCellRect(cell);
    const QRectF frame(
        cell.x(), name.y() - nameFieldMargin, cell.width(), name.height() + 2 * nameFieldMargin);
    _editFileNameTextField->setGeometry(frame.translated(-visibleRect().topLeft()).toAlignedRect());
}

void PBImageBrowserView::beginRename(const PBImageBrowserIndex& index) {
    const auto item = _leaves.imageFileAtIndex(index);
    if (!item) return;
    delete _editFileNameTextField.data();
    _editingNameFileItem = item;
    _editFileNameTextField = new PBModalTextField(renameTag, item->fileName(), this);
    placeNameField();
    connect(_editFileNameTextField, &PBModalTextField::ended, this, [this] {
        _editingNameFileItem.reset();
        setFocus();
    });
    connect(
        _editFileNameTextField, &PBModalTextField::textFieldDidFinished, this,
        [this, item](int, const QString& text) { Q_EMIT renameRequested(item, text); });
    _editFileNameTextField->show();
    _editFileNameTextField->setFocus();
    _editFileNameTextField->selectBaseName();
}
