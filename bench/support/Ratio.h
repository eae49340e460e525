#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

/// Timings as ratios: what is measured runs alternately with a floor, the least work that any
/// program would have to do for the same result, so that the machine and its load drop out.
namespace bench {

/// Milliseconds that the work takes.
template <typename Work>
[[nodiscard]] double millisecondsOf(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

/// The time of one round. Work that answers a number has timed itself, in milliseconds, so that it
/// can leave its preparations out.
template <typename Work>
[[nodiscard]] double timeRound(Work& work) {
    if constexpr (std::is_void_v<std::invoke_result_t<Work&>>) {
        return millisecondsOf(work);
    } else {
        return work();
    }
}

/// Keeps the compiler from dropping a computation whose result nobody reads.
template <typename T>
void keep(const T& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

/// Runs floor and subject alternately, takes the minimum of each, prints one line and answers
/// whether the ratio is at most the target; without a target the ratio is only recorded.
template <typename Floor, typename Subject>
bool printRatio(
    const char* name, int rounds, Floor&& floor, Subject&& subject,
    std::optional<double> target = std::nullopt) {
    double floorTime = std::numeric_limits<double>::infinity();
    double subjectTime = floorTime;
    for (int round = 0; round < rounds; ++round) {
        floorTime = std::min(floorTime, timeRound(floor));
        subjectTime = std::min(subjectTime, timeRound(subject));
    }
    const double ratio = subjectTime / floorTime;
    const bool met = !target || ratio <= *target;
    std::printf(
        "%-52s floor %9.3f ms  subject %9.3f ms  ratio %7.3f", name, floorTime, subjectTime, ratio);
    if (target) std::printf("  target %.2f  %s", *target, met ? "met" : "MISSED");
    std::printf("\n");
    std::fflush(stdout);
    return met;
}

/// The same for differences that are smaller than what the machine adds at random: the ratio is
/// that of the medians of so many pairs, taken alternately.
template <typename Floor, typename Subject>
bool printMedianRatio(
    const char* name, int pairs, Floor&& floor, Subject&& subject, double target) {
    std::vector<double> floorTimes;
    std::vector<double> subjectTimes;
    for (int pair = 0; pair < pairs; ++pair) {
        floorTimes.push_back(timeRound(floor));
        subjectTimes.push_back(timeRound(subject));
    }
    const auto median = [](std::vector<double>& times) {
        std::ranges::sort(times);
        return times[times.size() / 2];
    };
    const double floorTime = median(floorTimes);
    const double subjectTime = median(subjectTimes);
    const bool met = subjectTime <= target * floorTime;
    std::printf(
        "%-52s floor %9.3f ms  subject %9.3f ms  ratio %7.3f  target %.2f  %s\n", name, floorTime,
        subjectTime, subjectTime / floorTime, target, met ? "met" : "MISSED");
    std::fflush(stdout);
    return met;
}

enum class Bound { AtMost, AtLeast };

/// Prints a figure in the machine's own units, where a ratio would say nothing, and answers whether
/// it keeps to the target; without a target it is only recorded.
inline bool printFigure(
    const char* name, double figure, const char* unit, std::optional<double> target = std::nullopt,
    Bound bound = Bound::AtMost) {
    const bool met = !target || (bound == Bound::AtMost ? figure <= *target : figure >= *target);
    std::printf("%-52s figure %9.*f %s", name, figure < 1 ? 5 : 3, figure, unit);
    if (target) {
        std::printf(
            "  target %s%g  %s", bound == Bound::AtMost ? "" : ">= ", *target,
            met ? "met" : "MISSED");
    }
    std::printf("\n");
    std::fflush(stdout);
    return met;
}

} // namespace bench
