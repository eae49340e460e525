#include "app/ResponseTime.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <condition_variable>
#include <mutex>

namespace {

constexpr auto betweenBeats = std::chrono::milliseconds(4);

QEvent::Type beatType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

void ResponseTime::start() {
    beatType();
    _thread = std::jthread([this](const std::stop_token& stop) { beat(stop); });
}

void ResponseTime::stop() {
    _thread = {};
}

double ResponseTime::longest() const {
    return std::chrono::duration<double, std::milli>(_longest).count();
}

void ResponseTime::beat(const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    while (!never.wait_for(lock, stop, betweenBeats, [&] { return stop.stop_requested(); })) {
        if (!_isAnswered) continue;
        _isAnswered = false;
        _posted = Clock::now();
        QCoreApplication::postEvent(this, new QEvent(beatType()));
    }
}

bool ResponseTime::event(QEvent* event) {
    if (event->type() != beatType()) return QObject::event(event);
    _longest = std::max(_longest, Clock::now() - _posted);
    _isAnswered = true;
    return true;
}
