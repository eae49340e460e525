#include "platform/program/DescriptorLimit.h"

#include <algorithm>

#include <sys/resource.h>

namespace platform {

namespace {

/// Readers of sixteen files for each core, decoders, sockets and connections: a few hundred.
constexpr rlim_t enough = 8192;

} // namespace

void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= enough) return;
    limit.rlim_cur = std::min(limit.rlim_max, enough);
    static_cast<void>(::setrlimit(RLIMIT_NOFILE, &limit));
}

} // namespace platform
