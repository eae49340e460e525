#pragma once

#include "fileactions/export/PictureExport.h"
#include "platform/tasks/Mutex.h"

#include <cstddef>
#include <functional>
#include <map>
#include <thread>
#include <vector>

namespace fileactions {

/// Makes the pictures of an export on several threads, a few ahead of the one that is written, and
/// none while those that wait for it take much memory. Made on any thread; `take` on one.
class ExportAhead {
public:
    using Make = std::function<ExportedPicture(std::size_t index, const std::stop_token& stop)>;

    /// Begins. `make` is called on the threads, once for each index below `count`.
    /// `mostBytes`: of pictures that wait, before no further one is begun.
    ExportAhead(
        std::size_t count, int threads, Make make, qsizetype mostBytes = qsizetype{256} << 20);
    /// Stops what runs, and waits for it.
    ~ExportAhead();
    ExportAhead(const ExportAhead&) = delete;
    ExportAhead& operator=(const ExportAhead&) = delete;

    /// Waits for the picture; stopped, it is `operation_canceled`. Indices rise from one call to
    /// the next; those that are passed over are dropped.
    [[nodiscard]] ExportedPicture take(std::size_t index, const std::stop_token& stop);

private:
    void work(const std::stop_token& stop);
    void drop(std::map<std::size_t, ExportedPicture>::iterator picture) VELMORA_REQUIRES(_mutex);

    const std::size_t _count;
    const std::size_t _ahead; ///< how many may be made and not taken
    const qsizetype _mostBytes;
    const Make _make;
    platform::Mutex _mutex;
    platform::Condition _changed;
    std::size_t _next VELMORA_GUARDED_BY(_mutex) = 0;
    std::size_t _wanted VELMORA_GUARDED_BY(_mutex) = 0;
    std::map<std::size_t, ExportedPicture> _made VELMORA_GUARDED_BY(_mutex);
    qsizetype _madeBytes VELMORA_GUARDED_BY(_mutex) = 0;
    std::stop_source _stop;
    std::vector<std::jthread> _threads; // ends before all else
};

} // namespace fileactions
