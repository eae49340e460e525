#pragma once

#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace bench {

/// Prints a figure in the machine's own units, where a ratio would say nothing; answers whether it
/// is at most the target.
inline bool printFigure(
    const char* name, double figure, const char* unit,
    std::optional<double> target = std::nullopt) {
    const bool met = !target || figure <= *target;
    std::printf("%-52s %9.3f %s", name, figure, unit);
    if (target) std::printf("  target %.2f  %s", *target, met ? "met" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
    return met;
}

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
