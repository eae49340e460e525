#pragma once

#include "viewer/slideshow/transitions/TransitionStyle.h"

namespace platform {
class UserDefaults;
}

/// How the user likes shows to be. Each change is stored at once. Main thread.
class SlideshowSettings {
public:
    static constexpr int leastInterval = 1;
    static constexpr int mostInterval = 5;

    /// Outlives this object.
    explicit SlideshowSettings(platform::UserDefaults& userDefaults);

    /// Seconds between the end of a transition and the next step, 1 to 5.
    [[nodiscard]] double interval() const { return _interval; }
    void setInterval(int seconds);
    /// The next whole number of seconds above or below, within the limits.
    void stepInterval(int direction);
    [[nodiscard]] TransitionStyle transition() const { return _transition; }
    void setTransition(TransitionStyle style);
    [[nodiscard]] bool isLoopPlay() const { return _isLoopPlay; }
    void setLoopPlay(bool isLoopPlay);
    [[nodiscard]] bool isShuffled() const { return _isShuffled; }
    void setShuffled(bool isShuffled);

private:
    platform::UserDefaults& _userDefaults;
    double _interval;
    TransitionStyle _transition;
    bool _isLoopPlay;
    bool _isShuffled;
};
