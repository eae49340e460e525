#include "shell/large/SlideshowStart.h"

#include "browser/PBImageBrowserView.h"
#include "platform/tasks/MainThread.h"
#include "shell/large/SlideshowCommand.h"
#include "shell/panes/BrowserPane.h"

#include <QTimerEvent>

#include <utility>

namespace {

/// A first scan takes minutes where there is much: the show then begins with what has come.
constexpr int longestPatience = 3000; // milliseconds

} // namespace

SlideshowStart::SlideshowStart(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {
    // Not within the swap that brought them.
    connect(
        &_parts.browserPane.browserView(), &PBImageBrowserView::itemCountDidChange, this,
        [this] { look(); }, Qt::QueuedConnection);
}

void SlideshowStart::begin() {
    platform::assertMainThread();
    _isWanted = true;
    _isPatient = true;
    _patience.start(longestPatience, this);
    photographsCame();
}

void SlideshowStart::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _patience.timerId()) return QObject::timerEvent(event);
    _patience.stop();
    _isPatient = false;
    look();
}

void SlideshowStart::photographsCame() {
    platform::assertMainThread();
    if (!_isWanted || _parts.isComing()) return;
    // Behind what else the end of the scan brings.
    QMetaObject::invokeMethod(
        this,
        [this] {
            look();
            if (!_parts.isComing() && !_parts.isAwaited()) _isWanted = false;
        },
        Qt::QueuedConnection);
}

void SlideshowStart::look() {
    if (!_isWanted || _parts.isAwaited() || (_isPatient && _parts.isComing())) return;
    if (!_parts.browserPane.browserView().hasGroups()) return;
    _isWanted = false;
    _patience.stop();
    _parts.command.view_SlideshowView();
}
