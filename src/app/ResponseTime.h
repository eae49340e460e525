#pragma once

#include <memory>
#include <thread>

/// How long the main loop lets a press of a key wait, for `--stats`: a thread of its own posts a
/// call a few milliseconds after the last one was answered and takes the time until the loop comes
/// to it, so that work on the main thread, the line of other events and cores that others use all
/// count. Main thread.
class ResponseTime final {
public:
    ResponseTime();
    ~ResponseTime();
    ResponseTime(const ResponseTime&) = delete;
    ResponseTime& operator=(const ResponseTime&) = delete;

    /// Measures until `stop` or destruction.
    void start();
    void stop();
    /// The longest wait so far in milliseconds; 0 when none was measured.
    [[nodiscard]] double longest() const;

private:
    struct Beats;

    const std::shared_ptr<Beats> _beats; // shared with calls on their way to the main thread
    std::jthread _thread;
};
