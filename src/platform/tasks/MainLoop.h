#pragma once

#include "platform/tasks/Mutex.h"

#include <QObject>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

class QTimerEvent;

namespace platform {

/// What a delayed call was made with. Two calls of one target and name are told apart by it.
class DelayedArgument {
public:
    DelayedArgument() = default;
    DelayedArgument(const DelayedArgument&) = delete;
    DelayedArgument& operator=(const DelayedArgument&) = delete;
    virtual ~DelayedArgument() = default;
    /// Asked of the argument given to a cancellation, with that of each pending call.
    [[nodiscard]] virtual bool isEqual(const DelayedArgument& pending) const {
        return this == &pending;
    }
};

/// The application's loop on the main thread: delayed calls, and calls posted from other threads.
/// There is one for the process, made by main() before any other thread starts.
class MainLoop final : public QObject {
public:
    /// When a posted call may run. Default calls wait while a tracking scope is on (a drag, an open
    /// menu); common ones never do. Within one mode calls run in the order in which they came.
    enum class Mode { Default, Common };

    explicit MainLoop(QObject* parent = nullptr);
    ~MainLoop() override;

    /// The loop of this process; nullptr before it is made. Any thread: the others start after it
    /// was made and end before it goes.
    [[nodiscard]] static MainLoop* instance();

    /// Runs the function on the main thread, never within this call. Any thread.
    void post(Mode mode, std::function<void()> function);

    /// Runs the function after the delay, in default mode; a delay of 0 leaves the present stack.
    /// The target's address and the name make it cancellable. Main thread.
    void performAfterDelay(
        const void* target, std::string_view name, std::chrono::milliseconds delay,
        std::function<void()> function, std::shared_ptr<const DelayedArgument> argument = nullptr);

    /// Drops the pending delayed calls of the target: all of them, those of one name, or those of
    /// one name whose argument equals. A target cancels its calls before it dies. Main thread.
    void cancelPreviousPerformRequestsWithTarget(const void* target);
    void cancelPreviousPerformRequestsWithTarget(const void* target, std::string_view name);
    void cancelPreviousPerformRequestsWithTarget(
        const void* target, std::string_view name, const DelayedArgument& argument);

    /// Main thread.
    [[nodiscard]] bool isTracking() const;

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    friend class TrackingScope;
    struct DelayedCall;

    void beginTracking();
    void endTracking();
    /// Runs what has been posted in that mode until now; later calls wait for the next round.
    void runPosted(Mode mode);
    [[nodiscard]] std::vector<std::function<void()>>& posted(Mode mode) VELMORA_REQUIRES(_mutex);
    void runDueCalls();
    void startTimer();
    void eraseDelayed(const std::function<bool(const DelayedCall&)>& matches);

    Mutex _mutex;
    std::vector<std::function<void()>> _default VELMORA_GUARDED_BY(_mutex);
    std::vector<std::function<void()>> _common VELMORA_GUARDED_BY(_mutex);
    bool _wakePosted VELMORA_GUARDED_BY(_mutex) = false;

    // The rest belongs to the main thread.
    std::vector<DelayedCall> _delayed; // in order of their deadlines
    std::uint64_t _nextDelayed = 1;
    int _timer = 0;
    int _trackingDepth = 0;
};

/// While one exists, default-mode calls are held back. Main thread; scopes may nest.
class TrackingScope {
public:
    TrackingScope();
    TrackingScope(const TrackingScope&) = delete;
    TrackingScope& operator=(const TrackingScope&) = delete;
    ~TrackingScope();
};

} // namespace platform

/// Argument of a delayed call that any fresh instance can cancel, since it equals anything. May
/// keep an object alive for the call.
class PBCancelDelayArg final : public platform::DelayedArgument {
public:
    explicit PBCancelDelayArg(std::shared_ptr<const void> object = nullptr)
        : contextObj(std::move(object)) {}
    [[nodiscard]] bool isEqual(const DelayedArgument&) const override { return true; }

    const std::shared_ptr<const void> contextObj;
};
