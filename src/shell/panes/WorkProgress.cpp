#include "shell/panes/WorkProgress.h"

#include "platform/tasks/MainThread.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto lookInterval = 150ms;
/// Work that has ended by then is not worth a word: a warm start stays quiet.
constexpr int quietLooks = 4;
/// Half a second.
constexpr int quietEditingLooks = 3;

} // namespace

WorkProgress::WorkProgress(std::function<WorkFigures()> figures, QObject* parent)
    : QObject(parent), _figures(std::move(figures)) {
    _timer.setInterval(lookInterval);
    connect(&_timer, &QTimer::timeout, this, &WorkProgress::update);
}

void WorkProgress::restart() {
    platform::assertMainThread();
    _finishedBefore = _figures().thumbnailsFinished;
    _busyLooks = 0;
    wake();
}

void WorkProgress::wake() {
    platform::assertMainThread();
    if (!_timer.isActive()) _timer.start();
}

void WorkProgress::update() {
    platform::assertMainThread();
    const WorkFigures figures = _figures();
    const bool isBusy = figures.isScanning || figures.thumbnailsPending > 0 || figures.editing > 0;
    if (!isBusy) {
        _finishedBefore = figures.thumbnailsFinished;
        _busyLooks = 0;
        _timer.stop();
    } else {
        ++_busyLooks;
    }
    _editingLooks = figures.editing > 0 ? _editingLooks + 1 : 0;
    State state = _busyLooks > quietLooks ? stateOf(figures) : State();
    // The user waits for it.
    if (_editingLooks > quietEditingLooks) state = {Kind::Editing, 0, figures.editing};
    if (std::exchange(_state, state) != state) Q_EMIT changed();
}

WorkProgress::State WorkProgress::stateOf(const WorkFigures& figures) const {
    if (!figures.isScanning && figures.thumbnailsPending == 0) return {};
    if (figures.thumbnailsPending == 0) return {Kind::Scanning, figures.scanned, 0};
    const quint64 done = figures.thumbnailsFinished - _finishedBefore;
    return {Kind::Thumbnails, done, done + figures.thumbnailsPending};
}
