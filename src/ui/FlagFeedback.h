#pragma once

#include <QBasicTimer>
#include <QWidget>

#include <functional>

/// The flag that shows for half a second over a view when photographs were flagged or lost their
/// flag: it grows in the middle, or shrinks there. Takes no events. Main thread.
class FlagFeedback final : public QWidget {
public:
    /// Seconds of a clock that never goes back.
    using Clock = std::function<double()>;

    /// Shows it in the middle of the view. One that is still on show there gives way to it.
    static void showOver(QWidget& view, bool isSet);

    FlagFeedback(QWidget& view, bool isSet, Clock clock);

    /// The side of the flag so many seconds after the start, in points: from 0 to 60 slowing down,
    /// or from 60 to 0 gathering speed.
    [[nodiscard]] static double sideAfter(double seconds, bool isSet);

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    const bool _isSet;
    const Clock _clock;
    const double _start;
    QBasicTimer _timer;
};
