#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>

class BrowserPane;
class SlideshowCommand;

/// A slideshow that was asked for together with what it is of, as on the command line: begins as
/// soon as the photographs are there, and not at all if none come. Main thread.
class SlideshowStart final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        SlideshowCommand& command;
        BrowserPane& browserPane;
        /// There may be more of them in a while.
        std::function<bool()> isComing;
        /// Those that were opened are not there yet.
        std::function<bool()> isAwaited;
    };

    /// The parts outlive this object.
    SlideshowStart(Parts parts, QObject* parent);

    /// Plays what is shown, or what is about to be.
    void begin();
    /// All that come may have come.
    void photographsCame();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void look();

    const Parts _parts;
    bool _isWanted = false;
    bool _isPatient = true; ///< waits for the whole list
    QBasicTimer _patience;
};
