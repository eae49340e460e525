#pragma once

#include <cstddef>
#include <functional>
#include <optional>

/// Which frame of a picture that plays is on show, by an injected clock. Main thread.
class FramePlayer {
public:
    /// Seconds from any fixed start; never runs backwards.
    using Clock = std::function<double()>;

    /// A picture that plays.
    struct Frames {
        std::size_t count = 0;
        /// Seconds that a frame stays on show.
        std::function<double(std::size_t)> delayTimeAtIndex;
        /// Whether the frame can be shown; frames are decoded as they are needed.
        std::function<bool(std::size_t)> isReady;
        [[nodiscard]] bool canPlay() const { return count >= 2; }
    };

    explicit FramePlayer(Clock clock) : _clock(std::move(clock)) {}

    [[nodiscard]] std::size_t indexOfImages() const { return _indexOfImages; }
    /// Plays on from the frame on show; nothing when it plays already or can't.
    void startPlayTimer(const Frames& frames);
    /// Back to the first frame.
    void stopPlayTimer();
    /// When the next frame is due; nothing when none is.
    [[nodiscard]] std::optional<double> nextTime() const { return _nextTime; }
    /// True when another frame is to be shown. `frames` are those of the picture on show now.
    [[nodiscard]] bool playTimerMethod(const Frames& frames);

    /// How long a frame with this delay is shown: too short ones as everywhere on this desktop.
    [[nodiscard]] static double shownTime(double delay);

private:
    const Clock _clock;
    std::size_t _indexOfImages = 0;
    std::optional<double> _nextTime;
};
