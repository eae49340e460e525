#pragma once

#include <QObject>

#include <atomic>
#include <chrono>
#include <thread>

/// How long the main loop lets a press of a key wait, for `--stats`: a thread of its own posts an
/// event a few milliseconds after the last one was answered and takes the time until the loop comes
/// to it, so that work on the main thread, the line of other events and cores that others use all
/// count. Main thread.
class ResponseTime final : public QObject {
public:
    /// Measures until `stop` or destruction.
    void start();
    void stop();
    /// The longest wait so far in milliseconds; 0 when none was measured.
    [[nodiscard]] double longest() const;

protected:
    bool event(QEvent* event) override;

private:
    using Clock = std::chrono::steady_clock;

    void beat(const std::stop_token& stop);

    std::atomic<bool> _isAnswered{true};
    Clock::time_point _posted; // handed over with the event and `_isAnswered`
    Clock::duration _longest{0};
    std::jthread _thread;
};
