#pragma once

#include <cstdio>
#include <cstring>
#include <memory>

namespace bench {

/// KiB in a line of /proc/self/status, such as "VmRSS:"; 0 if there is none.
inline long statusOf(const char* line) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        std::fopen("/proc/self/status", "r"), &std::fclose);
    char text[256];
    const std::size_t length = std::strlen(line);
    while (file && std::fgets(text, sizeof text, file.get())) {
        long value = 0;
        if (std::strncmp(text, line, length) == 0 && std::sscanf(text + length, "%ld", &value) == 1)
            return value;
    }
    return 0;
}

} // namespace bench
