#include "platform/tasks/ExitDeadline.h"

namespace platform {

namespace {

/// A catalogue may lie on a disk that does not answer, too.
constexpr int mostLimits = 10;

} // namespace

ExitDeadline::ExitDeadline(std::chrono::milliseconds limit, std::function<void()> passed)
    : _thread([this, limit, passed = std::move(passed)] {
          Lock lock(_mutex);
          for (int count = 0; count == 0 || (count < mostLimits && holds > 0); ++count) {
              const bool isOver = _changed.waitFor(lock, limit, [this] {
                  _mutex.assertHeld();
                  return _isOver;
              });
              if (isOver) return;
          }
          lock.unlock();
          passed();
      }) {}

ExitDeadline::~ExitDeadline() {
    const Lock lock(_mutex);
    _isOver = true;
    _changed.notifyAll();
}

} // namespace platform
