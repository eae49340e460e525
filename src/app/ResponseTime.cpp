#include "app/ResponseTime.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/Mutex.h"

#include <algorithm>
#include <atomic>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto betweenBeats = std::chrono::milliseconds(4);

} // namespace

struct ResponseTime::Beats {
    std::atomic<bool> isAnswered{true};
    Clock::duration longest{0}; // of the main thread

    static void run(const std::stop_token& stop, const std::shared_ptr<Beats>& beats) {
        platform::Mutex mutex;
        platform::Condition never;
        platform::Lock lock(mutex);
        const auto isOver = [&] { return stop.stop_requested(); };
        while (!never.waitFor(lock, betweenBeats, isOver)) {
            if (!beats->isAnswered) continue;
            beats->isAnswered = false;
            platform::MainLoop::instance()->post(
                platform::MainLoop::Mode::Common, [beats, posted = Clock::now()] {
                    beats->longest = std::max(beats->longest, Clock::now() - posted);
                    beats->isAnswered = true;
                });
        }
    }
};

ResponseTime::ResponseTime() : _beats(std::make_shared<Beats>()) {}

ResponseTime::~ResponseTime() = default;

void ResponseTime::start() {
    _thread = std::jthread(&Beats::run, _beats);
}

void ResponseTime::stop() {
    _thread = {};
}

double ResponseTime::longest() const {
    return std::chrono::duration<double, std::milli>(_beats->longest).count();
}
