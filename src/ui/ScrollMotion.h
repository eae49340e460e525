#pragma once

#include <cstdint>
#include <functional>

/// Milliseconds between two frames of something that scrolls: 60 a second.
constexpr int scrollFrameInterval = 16;

/// What a motion moves: one coordinate of something that scrolls.
class ScrollTarget {
public:
    virtual ~ScrollTarget() = default;
    [[nodiscard]] virtual double scrollPosition() const = 0;
    virtual void setScrollPosition(double position) = 0;
    /// Where a motion towards the position may end.
    [[nodiscard]] virtual double roundPosition(double position) const { return position; }
    /// The motion wants `tick` at every frame from now on, and no longer. The direction is that of
    /// the motion that ended: -1, 0 or 1.
    virtual void scrollTimeWillBegin() {}
    virtual void scrollTimeDidEnd(std::int64_t direction) { static_cast<void>(direction); }
};

/// Eased scrolling along one axis: the wheel, the scroller and every jump share one target
/// position, so that several ticks in a row lengthen one motion instead of starting it over.
/// Main thread.
class ScrollMotion {
public:
    /// Seconds from any fixed start; never runs backwards.
    using Clock = std::function<double()>;

    /// The target outlives this object.
    explicit ScrollMotion(ScrollTarget& target, Clock clock = monotonicClock());

    [[nodiscard]] static Clock monotonicClock();
    void setClock(Clock clock) { _clock = std::move(clock); }

    /// The length of a motion, in seconds.
    static constexpr double scrollAnimationDuration = 0.6;

    [[nodiscard]] bool isRunning() const { return _isRunning; }
    /// -1, 0 or 1; 0 outside a motion.
    [[nodiscard]] std::int64_t scrollPosFlag() const { return _scrollPosFlag; }
    /// Where the motion ends; meaningful while it runs.
    [[nodiscard]] double scrollStopPos() const { return _scrollStopPos; }

    /// Goes there, from wherever a running motion is just now.
    void scrollToPosition(double position, bool animation);
    /// The target of a relative move: added to that of a motion in the same direction, else to the
    /// present position.
    [[nodiscard]] double animationScrollDestinationPositionWithDelta(double delta);
    /// A relative move by the eased motion.
    void scrollBy(double delta);
    /// One turn of the wheel, positive towards the start of the document. The first turns against a
    /// run of others are swallowed: wheels jitter.
    void wheel(double delta);
    /// Goes on at a velocity, in points a second, and comes to rest by itself.
    void fling(double velocity);
    [[nodiscard]] bool isFling() const { return _isRunning && _isFling; }
    /// The content has moved under a running motion.
    void updateScrollAmtByOffset(double offset);
    /// Takes the motion to where it should be by now.
    void tick();
    /// Ends the motion where it is.
    void stop();

private:
    void start();
    void begin(double stopPos);

    ScrollTarget& _target;
    Clock _clock;
    double _scrollStartTime = 0;
    double _scrollStartPos = 0;
    double _scrollStopPos = 0;
    std::int64_t _amtScrollFlag = 0; // -2 to 2: recent turns of the wheel
    std::int64_t _scrollPosFlag = 0;
    double _duration = scrollAnimationDuration;
    double _curveDuration = 0; // in powers of the curve's base
    bool _isRunning = false;
    bool _isFling = false;
};

/// A gesture that moves the document step by step, with the system's momentum where there is one.
/// Between the lift of the fingers and the first step of the momentum it counts as going on. The
/// end may never come, as where another workspace is switched to. Main thread.
class PhasedScrolling {
public:
    /// Bridges the gap until momentum begins, in seconds.
    static constexpr double momentumGap = 0.1;
    /// After so many seconds without a step it has ended without a word.
    static constexpr double longestPause = 1.5;

    explicit PhasedScrolling(ScrollMotion::Clock clock = ScrollMotion::monotonicClock())
        : _clock(std::move(clock)) {}
    void setClock(ScrollMotion::Clock clock) { _clock = std::move(clock); }

    /// At the begin, and at each step.
    void moved();
    void ended();
    /// A step of a device that tells neither begin nor end.
    void stepped();
    void cancel() { _state = State::Resting; }
    [[nodiscard]] bool isMagicScrolling() const;

private:
    enum class State { Resting, Moving, Ending };
    ScrollMotion::Clock _clock;
    State _state = State::Resting;
    double _lastTime = 0;
};
