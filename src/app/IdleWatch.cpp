#include "app/IdleWatch.h"

namespace {

constexpr int interval = 15; // milliseconds

} // namespace

IdleWatch::IdleWatch(std::function<bool()> isIdle) : _isIdle(std::move(isIdle)) {
    _timer.setInterval(interval);
    connect(&_timer, &QTimer::timeout, this, &IdleWatch::look);
}

void IdleWatch::start() {
    _timer.start();
}

void IdleWatch::look() {
    _idleLooks = _isIdle() ? _idleLooks + 1 : 0;
    if (_idleLooks < 2) return;
    _timer.stop();
    Q_EMIT becameIdle();
}
