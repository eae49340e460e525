#include "platform/tasks/MainLoop.h"

#include "platform/tasks/MainThread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>

#include <algorithm>
#include <atomic>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<MainLoop*> theLoop = nullptr;

QEvent::Type wakeType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

struct MainLoop::DelayedCall {
    std::uint64_t id;
    Clock::time_point deadline;
    const void* target;
    std::string name;
    std::function<void()> function;
    std::shared_ptr<const DelayedArgument> argument;
};

MainLoop::MainLoop(QObject* parent) : QObject(parent) {
    assertMainThread();
    wakeType();
    [[maybe_unused]] const MainLoop* former = theLoop.exchange(this);
    Q_ASSERT(former == nullptr);
}

MainLoop::~MainLoop() {
    assertMainThread();
    theLoop = nullptr;
}

MainLoop* MainLoop::instance() {
    return theLoop;
}

bool MainLoop::isTracking() const {
    assertMainThread();
    return _trackingDepth > 0;
}

std::vector<std::function<void()>>& MainLoop::posted(Mode mode) {
    return mode == Mode::Default ? _default : _common;
}

void MainLoop::post(Mode mode, std::function<void()> function) {
    const Lock lock(_mutex);
    posted(mode).push_back(std::move(function));
    if (_wakePosted) return;
    _wakePosted = true;
    // The toolkit's own copy: the sanitizer of threads knows that it hands its memory over by locks
    // that can't be seen from here.
    static const QEvent wake(wakeType());
    QCoreApplication::postEvent(this, wake.clone());
}

bool MainLoop::event(QEvent* event) {
    if (event->type() != wakeType()) return QObject::event(event);
    {
        const Lock lock(_mutex);
        _wakePosted = false;
    }
    runPosted(Mode::Common);
    if (!isTracking()) runPosted(Mode::Default);
    return true;
}

void MainLoop::runPosted(Mode mode) {
    std::vector<std::function<void()>> calls;
    {
        const Lock lock(_mutex);
        calls.swap(posted(mode));
    }
    for (std::size_t i = 0; i < calls.size(); ++i) {
        // A call may itself start tracking (open a menu): the default calls behind it then wait.
        if (mode == Mode::Default && isTracking()) {
            const Lock lock(_mutex);
            _default.insert(
                _default.begin(),
                std::make_move_iterator(calls.begin() + static_cast<std::ptrdiff_t>(i)),
                std::make_move_iterator(calls.end()));
            return;
        }
        calls[i]();
        calls[i] = nullptr;
    }
}

void MainLoop::performAfterDelay(
    const void* target, std::string_view name, std::chrono::milliseconds delay,
    std::function<void()> function, std::shared_ptr<const DelayedArgument> argument) {
    assertMainThread();
    DelayedCall call{_nextDelayed++,    Clock::now() + delay, target,
                     std::string(name), std::move(function),  std::move(argument)};
    const auto place =
        std::ranges::upper_bound(_delayed, call.deadline, {}, &DelayedCall::deadline);
    _delayed.insert(place, std::move(call));
    startTimer();
}

void MainLoop::cancelPreviousPerformRequestsWithTarget(const void* target) {
    eraseDelayed([&](const DelayedCall& call) { return call.target == target; });
}

void MainLoop::cancelPreviousPerformRequestsWithTarget(const void* target, std::string_view name) {
    eraseDelayed(
        [&](const DelayedCall& call) { return call.target == target && call.name == name; });
}

void MainLoop::cancelPreviousPerformRequestsWithTarget(
    const void* target, std::string_view name, const DelayedArgument& argument) {
    eraseDelayed([&](const DelayedCall& call) {
        return call.target == target && call.name == name && call.argument &&
               argument.isEqual(*call.argument);
    });
}

void MainLoop::eraseDelayed(const std::function<bool(const DelayedCall&)>& matches) {
    assertMainThread();
    std::erase_if(_delayed, matches);
    startTimer();
}

void MainLoop::startTimer() {
    if (_timer != 0) killTimer(_timer);
    _timer = 0;
    if (_delayed.empty() || isTracking()) return;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(_delayed.front().deadline - Clock::now());
    _timer = QObject::startTimer(std::max(left, std::chrono::milliseconds(0)), Qt::PreciseTimer);
}

void MainLoop::timerEvent(QTimerEvent* event) {
    if (event->timerId() == _timer) runDueCalls();
}

void MainLoop::runDueCalls() {
    // Calls added from here on belong to the next round, so that a call which schedules itself
    // with delay 0 leaves the loop time for events.
    const std::uint64_t end = _nextDelayed;
    const auto now = Clock::now();
    while (!isTracking()) {
        const auto due = std::ranges::find_if(_delayed, [&](const DelayedCall& call) {
            return call.id < end && call.deadline <= now;
        });
        if (due == _delayed.end()) break;
        const auto function = std::move(due->function);
        const auto argument = std::move(due->argument);
        _delayed.erase(due);
        function();
    }
    startTimer();
}

void MainLoop::beginTracking() {
    assertMainThread();
    ++_trackingDepth;
    startTimer();
}

void MainLoop::endTracking() {
    assertMainThread();
    if (--_trackingDepth > 0) return;
    startTimer();
    post(Mode::Common, [] {}); // wakes the loop for what was held back
}

TrackingScope::TrackingScope() {
    if (MainLoop* loop = MainLoop::instance()) loop->beginTracking();
}

TrackingScope::~TrackingScope() {
    if (MainLoop* loop = MainLoop::instance()) loop->endTracking();
}

} // namespace platform
