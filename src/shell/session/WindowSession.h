#pragma once

#include "shell/session/SessionRestore.h"

#include <QBasicTimer>
#include <QObject>

/// Keeps in a file what the window shows, while the program runs and at its end, and brings it back
/// at the next start. A run that crashed comes back like any other, but not into the large view of
/// a photograph with which it crashed twice. Main thread.
class WindowSession final : public QObject {
    Q_OBJECT

public:
    using Parts = SessionRestore::Parts;

    /// The parts outlive this object.
    WindowSession(const Parts& parts, QObject* parent);

    /// `begin` comes as soon as the window is painted.
    void expect() { _isExpected = true; }
    /// From now on the file is kept. With `bringsBack` what it has of the former run comes back, as
    /// soon as its photographs are there.
    void begin(const QString& file, bool bringsBack);
    /// The user wants something else than what is still to come back.
    void drop();
    [[nodiscard]] bool isBringingBack() const { return _isExpected || _restore.pending(); }
    void scanStateDidChange() { _restore.scanStateDidChange(); }
    /// Writes what is shown now: the program may be ended.
    void save() { write(false); }
    /// The same for the last time: it ends in good order.
    void finish();

Q_SIGNALS:
    /// Nothing is to come back any more.
    void didBringBack();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    [[nodiscard]] SessionState present() const;
    void describeLargeView(SessionState& state) const;
    /// The folder is one that was only opened, or none.
    [[nodiscard]] bool isForThisRun(const QString& folder) const;
    /// Counts it, and leaves out the large view where that is not safe.
    void noteCrash(SessionState& former);
    void write(bool hasEnded);

    const Parts _parts;
    SessionRestore _restore;
    QString _file; // empty: not begun
    SessionState _written;
    SessionState _lasting;             // the latest that the next run can bring back
    SessionState::Photograph _suspect; // was shown large in `_crashes` runs that crashed
    int _crashes = 0;
    bool _isExpected = false;
    QBasicTimer _timer;
};
