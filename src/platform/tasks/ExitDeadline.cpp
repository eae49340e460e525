#include "platform/tasks/ExitDeadline.h"

namespace platform {

ExitDeadline::ExitDeadline(std::chrono::milliseconds limit, std::function<void()> passed)
    : _thread([this, limit, passed = std::move(passed)] {
          Lock lock(_mutex);
          const bool isOver = _changed.waitFor(lock, limit, [this] {
              _mutex.assertHeld();
              return _isOver;
          });
          lock.unlock();
          if (!isOver) passed();
      }) {}

ExitDeadline::~ExitDeadline() {
    const Lock lock(_mutex);
    _isOver = true;
    _changed.notifyAll();
}

} // namespace platform
