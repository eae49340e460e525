#include "shell/commands/FullScreenControl.h"

#include "platform/work/MainThread.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>

#include <utility>

namespace {

/// Points at the upper edge of the screen that bring the bars back.
constexpr int edgeHeight = 2;
/// How often it is looked whether the mouse has left the bars.
constexpr int lookEveryMilliseconds = 300;

} // namespace

FullScreenControl::FullScreenControl(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)), _edge(new QWidget(&_parts.window)) {
    _edge->hide();
    _edge->installEventFilter(this);
    _parts.window.installEventFilter(this);
    _hideTimer.setInterval(lookEveryMilliseconds);
    connect(&_hideTimer, &QTimer::timeout, this, &FullScreenControl::hideUnlessUsed);
    updateBars();
}

void FullScreenControl::toggle() {
    platform::assertMainThread();
    _parts.window.setWindowState(_parts.window.windowState() ^ Qt::WindowFullScreen);
}

void FullScreenControl::leave() {
    platform::assertMainThread();
    _parts.window.setWindowState(_parts.window.windowState() & ~Qt::WindowFullScreen);
}

bool FullScreenControl::eventFilter(QObject* watched, QEvent* event) {
    if (watched == _edge) {
        if (event->type() == QEvent::Enter) reveal(true);
    } else if (event->type() == QEvent::WindowStateChange) {
        stateChanged();
    } else if (event->type() == QEvent::Resize) {
        _edge->setGeometry(0, 0, _parts.window.width(), edgeHeight);
    } else if (
        event->type() == QEvent::KeyPress && _isFullScreen &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        // Nobody below the window had a use for the key.
        leave();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void FullScreenControl::stateChanged() {
    const bool isFullScreen = _parts.window.isFullScreen();
    if (std::exchange(_isFullScreen, isFullScreen) == isFullScreen) return;
    reveal(false);
    Q_EMIT fullScreenDidChange(isFullScreen);
}

void FullScreenControl::reveal(bool isRevealed) {
    _isRevealed = isRevealed && _isFullScreen;
    if (_isRevealed) {
        _hideTimer.start();
    } else {
        _hideTimer.stop();
    }
    updateBars();
}

void FullScreenControl::updateBars() {
    platform::assertMainThread();
    const bool shown = !_isFullScreen || _isRevealed;
    _parts.window.menuBar()->setVisible(shown);
    _parts.toolbar.setVisible(shown && !_parts.hideToolbar());
    _edge->setVisible(!shown);
    if (!shown) _edge->raise();
}

void FullScreenControl::hideUnlessUsed() {
    const QWidget* focus = QApplication::focusWidget();
    const bool isTyping = focus && _parts.toolbar.isAncestorOf(focus);
    if (isTyping || QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
    int height = _parts.window.menuBar()->height();
    if (_parts.toolbar.isVisible()) height += _parts.toolbar.height();
    const QPoint mouse = _parts.window.mapFromGlobal(QCursor::pos());
    if (!QRect(0, 0, _parts.window.width(), height + edgeHeight).contains(mouse)) reveal(false);
}
