#pragma once

#include <cstdio>
#include <cstdlib>

namespace bench {

/// Ends the program where what is measured does not even work.
inline void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "bench: %s failed\n", what);
    std::exit(1);
}

} // namespace bench
