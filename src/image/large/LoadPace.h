#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

/// How fast the user steps through the pictures, and what that means for loads: while a key is held
/// a picture is passed long before it is ready, so what is begun then is only what lies so far
/// ahead that it can be ready when the user comes by. Pure but for its clock; one thread.
class LoadPace {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;
    using Clock = std::function<Time()>;

    explicit LoadPace(Clock clock);

    /// The focus has moved to the index, to a picture whose file has so many pixels.
    void didStep(std::int64_t index, double pixels);
    /// The key was let go.
    void didEndStepping() { _isHurried = false; }
    /// A fit-in load ran to its end.
    void didLoad(Duration time, double pixels);
    /// One was stopped after so long.
    void didStop(Duration time, double pixels);

    /// Steps follow each other faster than pictures load, and the last is not long ago.
    [[nodiscard]] bool isHurried() const;
    /// Whether a load of the picture at the index may begin.
    [[nodiscard]] bool mayBegin(std::int64_t index, double pixels) const;
    /// Until the pause counts as one and everything may begin; nothing when nobody hurries.
    [[nodiscard]] std::optional<Duration> untilPause() const;

    [[nodiscard]] Time now() const { return _clock(); }

private:
    /// Without a step for so long, the key was let go.
    [[nodiscard]] Duration pause() const;
    [[nodiscard]] Duration loadTime(double pixels) const;

    Clock _clock;
    bool _isHurried = false;
    std::optional<Time> _lastStep;
    std::int64_t _index = 0;
    std::int64_t _direction = 0;
    Duration _interval{};
    bool _hasMeasured = false;
    double _secondsPerPixel = 150e-3 / 24e6; // of the file; a JPEG on a slow core, to begin with
};
