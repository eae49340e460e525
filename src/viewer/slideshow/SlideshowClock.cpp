#include "viewer/slideshow/SlideshowClock.h"

SystemSlideshowClock::SystemSlideshowClock() {
    for (std::size_t i = 0; i < _timers.size(); ++i) {
        QTimer& timer = _timers.at(i);
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [this, i] {
            // The call may start this timer anew.
            const std::function<void()> fired = _fired.at(i);
            fired();
        });
    }
}

void SystemSlideshowClock::start(
    Timer timer, std::chrono::milliseconds time, std::function<void()> fired) {
    _fired.at(place(timer)) = std::move(fired);
    _timers.at(place(timer)).start(time);
}

void SystemSlideshowClock::stop(Timer timer) {
    _timers.at(place(timer)).stop();
}

bool SystemSlideshowClock::isRunning(Timer timer) const {
    return _timers.at(place(timer)).isActive();
}
