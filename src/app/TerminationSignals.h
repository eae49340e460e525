#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Turns the signals that ask a program to end (hang-up, interrupt, terminate) into an event of the
/// main loop, so that quitting goes its usual way.
class TerminationSignals final : public QObject {
    Q_OBJECT

public:
    /// Keeps the signals from every thread that is started afterwards; call it before any is. The
    /// toolkit starts some with the application object already.
    static void block();

    /// One for the process.
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    int _descriptor = -1;
    std::unique_ptr<QSocketNotifier> _notifier;
};
