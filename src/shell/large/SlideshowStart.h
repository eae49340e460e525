#pragma once

#include <QBasicTimer>
#include <QObject>

#include <functional>

class BrowserPane;
class LargeView;
class SlideshowCommand;

/// A slideshow that was asked for together with what it is of, as on the command line: begins as
/// soon as the photographs are there, and not at all if none come. Main thread.
class SlideshowStart final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        SlideshowCommand& command;
        BrowserPane& browserPane;
        std::function<bool()> isScanning;
        /// What was opened, or is to come back, is still on its way.
        std::function<bool()> isAwaiting;
    };

    /// The parts outlive this object.
    SlideshowStart(Parts parts, QObject* parent);

    /// Plays what is shown, or what is about to be.
    void begin();
    /// The scan began or ended.
    void scanStateDidChange();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void look();

    const Parts _parts;
    bool _isWanted = false;
    bool _isPatient = true; ///< waits for the whole list
    QBasicTimer _patience;
};
