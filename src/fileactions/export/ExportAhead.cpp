#include "fileactions/export/ExportAhead.h"

#include <algorithm>
#include <utility>

namespace fileactions {

ExportAhead::ExportAhead(std::size_t count, int threads, Make make)
    : _count(count), _ahead(static_cast<std::size_t>(threads) + 1), _make(std::move(make)) {
    const std::size_t used = std::min(count, static_cast<std::size_t>(std::max(threads, 1)));
    for (std::size_t i = 0; i < used; ++i)
        _threads.emplace_back([this] { work(_stop.get_token()); });
}

ExportAhead::~ExportAhead() {
    _stop.request_stop();
    _threads.clear();
}

void ExportAhead::work(const std::stop_token& stop) {
    platform::Lock lock(_mutex);
    for (;;) {
        const bool goesOn = _changed.waitUnlessStopped(lock, stop, [this] {
            _mutex.assertHeld();
            return _next >= _count || _next < _wanted + _ahead;
        });
        if (!goesOn || stop.stop_requested() || _next >= _count) return;
        const std::size_t index = _next++;
        lock.unlock();
        ExportedPicture made = _make(index, stop);
        lock.lock();
        if (index >= _wanted) _made.emplace(index, std::move(made));
        _changed.notifyAll();
    }
}

ExportedPicture ExportAhead::take(std::size_t index, const std::stop_token& stop) {
    platform::Lock lock(_mutex);
    _wanted = std::max(_wanted, index);
    _next = std::max(_next, _wanted);
    _made.erase(_made.begin(), _made.lower_bound(index));
    _changed.notifyAll();
    const bool isThere = _changed.waitUnlessStopped(lock, stop, [this, index] {
        _mutex.assertHeld();
        return _made.contains(index);
    });
    if (!isThere)
        return {.error = std::make_error_code(std::errc::operation_canceled), .content = {}};
    ExportedPicture picture = std::move(_made.extract(index).mapped());
    _wanted = index + 1;
    _changed.notifyAll();
    return picture;
}

} // namespace fileactions
