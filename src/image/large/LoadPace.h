#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

/// How fast the user steps through the pictures, and what that means for loads: while a key is held
/// a picture may be passed long before it is ready, so that only those loads begin which should
/// end before the user has passed their pictures. Pure but for its clock; one thread.
class LoadPace {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;
    using Clock = std::function<Time()>;

    /// What a load is of.
    struct Load {
        std::int64_t index = 0;  ///< of the picture in the list
        double pixels = 0;       ///< of its file
        bool isOriginal = false; ///< else it is the fit-in version, which takes other times
    };

    explicit LoadPace(Clock clock);

    /// The focus has moved to the index.
    void didStep(std::int64_t index);
    /// The key was let go.
    void didEndStepping() { _isHurried = false; }
    /// A load ran to its end.
    void didLoad(Duration time, const Load& load);
    /// One was stopped after so long.
    void didStop(Duration time, const Load& load);

    /// Steps follow each other fast, and the last is not long ago.
    [[nodiscard]] bool isHurried() const;
    [[nodiscard]] bool mayBegin(const Load& load) const;
    /// Until the pause counts as one and everything may begin; nothing when nobody hurries.
    [[nodiscard]] std::optional<Duration> untilPause() const;

private:
    /// Of one kind of loads.
    struct Rate {
        double secondsPerPixel = 0;
        bool isMeasured = false;
    };
    /// Without a step for so long, the key was let go.
    [[nodiscard]] Duration pause() const;
    /// By what was seen of others.
    [[nodiscard]] Duration loadTime(const Load& load) const;
    [[nodiscard]] double seenRate(Duration time, const Load& load) const;
    [[nodiscard]] Rate& rateOf(const Load& load) { return _rates.at(load.isOriginal ? 1 : 0); }

    Clock _clock;
    bool _isHurried = false;
    std::optional<Time> _lastStep;
    std::int64_t _index = 0;
    std::int64_t _direction = 0;
    Duration _interval{};
    /// Of fit-in versions and of originals. To begin with, of the pixels of a JPEG on a slow core.
    std::array<Rate, 2> _rates{Rate{150e-3 / 24e6, false}, Rate{300e-3 / 24e6, false}};
};
