#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

/// Notices when nothing is pending in the background any more: for `--until-idle`.
class IdleWatch final : public QObject {
    Q_OBJECT

public:
    /// `isIdle` is asked on the main thread, every few milliseconds once `start` was called.
    explicit IdleWatch(std::function<bool()> isIdle);
    void start();

Q_SIGNALS:
    /// Idle at two looks one after the other, with all events between them handled: work that
    /// hands on to other work through the main loop does not count as its end.
    void becameIdle();

private:
    void look();

    std::function<bool()> _isIdle;
    QTimer _timer;
    int _idleLooks = 0;
};
