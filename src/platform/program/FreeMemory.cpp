#include "platform/program/FreeMemory.h"

#include <malloc.h>

namespace platform {

void returnFreeMemory() {
    ::malloc_trim(0);
}

} // namespace platform
