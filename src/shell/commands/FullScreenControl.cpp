#include "shell/commands/FullScreenControl.h"

#include "platform/tasks/MainThread.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

/// Points at the upper edge of the screen that bring the bars back.
constexpr int edgeHeight = 2;
/// How often it is looked whether the mouse has left the bars.
constexpr int lookEveryMilliseconds = 300;

} // namespace

FullScreenControl::FullScreenControl(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)), _menuBar(*_parts.window.menuBar()),
      _edge(new QWidget(&_parts.window)), _bars(new QWidget(&_parts.window)) {
    _edge->hide();
    _bars->hide();
    _bars->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(_bars);
    layout->setContentsMargins({});
    layout->setSpacing(0);
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
        return false;
    }
    switch (event->type()) {
    case QEvent::WindowStateChange:
        stateChanged();
        break;
    case QEvent::Resize:
        _edge->setGeometry(0, 0, _parts.window.width(), edgeHeight);
        placeBars();
        break;
    case QEvent::ShortcutOverride:
        // A menu bar in sight answers the key that comes next.
        if (_isFullScreen && opensMenu(*static_cast<QKeyEvent*>(event))) reveal(true);
        break;
    case QEvent::KeyPress:
        // Nobody below the window had a use for the key.
        if (!_isFullScreen || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) break;
        leave();
        return true;
    default:
        break;
    }
    return false;
}

bool FullScreenControl::opensMenu(const QKeyEvent& event) const {
    if (event.modifiers() != Qt::AltModifier) return false;
    const QKeySequence keys(event.keyCombination());
    return std::ranges::any_of(_menuBar.actions(), [&](const QAction* menu) {
        return QKeySequence::mnemonic(menu->text()) == keys;
    });
}

void FullScreenControl::stateChanged() {
    const bool isFullScreen = _parts.window.isFullScreen();
    if (std::exchange(_isFullScreen, isFullScreen) == isFullScreen) return;
    if (isFullScreen) {
        takeBarsOver();
    } else {
        giveBarsBack();
    }
    reveal(false);
    Q_EMIT fullScreenDidChange(isFullScreen);
}

void FullScreenControl::takeBarsOver() {
    _parts.window.layout()->setMenuBar(nullptr);
    _parts.window.removeToolBar(&_parts.toolbar);
    _bars->layout()->addWidget(&_menuBar);
    _bars->layout()->addWidget(&_parts.toolbar);
    _menuBar.show();
}

void FullScreenControl::giveBarsBack() {
    _bars->hide();
    _parts.window.layout()->setMenuBar(&_menuBar);
    _parts.window.addToolBar(&_parts.toolbar);
    _menuBar.show();
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
    _parts.toolbar.setVisible(!_parts.hideToolbar());
    _bars->setVisible(_isRevealed);
    _edge->setVisible(_isFullScreen && !_isRevealed);
    _edge->raise();
    placeBars();
}

/// Over the content, which stays where it is.
void FullScreenControl::placeBars() {
    if (!_isRevealed) return;
    _bars->setGeometry(0, 0, _parts.window.width(), _bars->layout()->sizeHint().height());
    _bars->raise();
}

void FullScreenControl::hideUnlessUsed() {
    const QWidget* focus = QApplication::focusWidget();
    const bool isTyping = focus && _bars->isAncestorOf(focus);
    if (isTyping || QApplication::activePopupWidget() || QApplication::activeModalWidget()) return;
    const QPoint mouse = _parts.window.mapFromGlobal(QCursor::pos());
    if (!_bars->geometry().adjusted(0, 0, 0, edgeHeight).contains(mouse)) reveal(false);
}
