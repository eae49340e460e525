#pragma once

#include <QTimer>

#include <array>
#include <chrono>
#include <functional>

/// The timers of a show. Main thread.
class SlideshowClock {
public:
    enum class Timer { Interval, HideControls };

    SlideshowClock() = default;
    SlideshowClock(const SlideshowClock&) = delete;
    SlideshowClock& operator=(const SlideshowClock&) = delete;
    virtual ~SlideshowClock() = default;

    /// Calls once after that time, unless it is stopped or started again before.
    virtual void
    start(Timer timer, std::chrono::milliseconds time, std::function<void()> fired) = 0;
    virtual void stop(Timer timer) = 0;
    [[nodiscard]] virtual bool isRunning(Timer timer) const = 0;
};

/// By the time of the machine.
class SystemSlideshowClock final : public SlideshowClock {
public:
    SystemSlideshowClock();
    void start(Timer timer, std::chrono::milliseconds time, std::function<void()> fired) override;
    void stop(Timer timer) override;
    [[nodiscard]] bool isRunning(Timer timer) const override;

private:
    [[nodiscard]] static std::size_t place(Timer timer) { return static_cast<std::size_t>(timer); }

    std::array<QTimer, 2> _timers;
    std::array<std::function<void()>, 2> _fired;
};
