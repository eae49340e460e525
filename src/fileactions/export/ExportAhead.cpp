#include "fileactions/export/ExportAhead.h"

#include <algorithm>
#include <utility>

namespace fileactions {

ExportAhead::ExportAhead(std::size_t count, int threads, Make make, qsizetype mostBytes)
    : _count(count), _ahead(static_cast<std::size_t>(threads) + 1), _mostBytes(mostBytes),
      _make(std::move(make)) {
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
            // The one that is wanted now is always begun.
            return _next >= _count || _next <= _wanted ||
                   (_next < _wanted + _ahead && _madeBytes < _mostBytes);
        });
        if (!goesOn || stop.stop_requested() || _next >= _count) return;
        const std::size_t index = _next++;
        lock.unlock();
        ExportedPicture made = _make(index, stop);
        lock.lock();
        if (index >= _wanted) {
            _madeBytes += made.content.size();
            _made.emplace(index, std::move(made));
        }
        _changed.notifyAll();
    }
}

void ExportAhead::drop(std::map<std::size_t, ExportedPicture>::iterator picture) {
    _madeBytes -= picture->second.content.size();
    _made.erase(picture);
}

ExportedPicture ExportAhead::take(std::size_t index, const std::stop_token& stop) {
    platform::Lock lock(_mutex);
    _wanted = std::max(_wanted, index);
    _next = std::max(_next, _wanted);
    while (!_made.empty() && _made.begin()->first < index)
        drop(_made.begin());
    _changed.notifyAll();
    const bool isThere = _changed.waitUnlessStopped(lock, stop, [this, index] {
        _mutex.assertHeld();
        return _made.contains(index);
    });
    if (!isThere)
        return {.error = std::make_error_code(std::errc::operation_canceled), .content = {}};
    const auto found = _made.find(index);
    ExportedPicture picture = found->second; // shares its bytes
    drop(found);
    _wanted = index + 1;
    _changed.notifyAll();
    return picture;
}

} // namespace fileactions
