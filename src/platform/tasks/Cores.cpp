#include "platform/tasks/Cores.h"

#include <algorithm>

#include <sched.h>

namespace platform {

int usableCores() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (::sched_getaffinity(0, sizeof cores, &cores) != 0) return 1;
    return std::max(1, CPU_COUNT(&cores));
}

} // namespace platform
