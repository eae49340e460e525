#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

/// Counters of the work in the background, since the program was started. Cheap to read.
struct WorkFigures {
    bool isScanning = false;
    /// Photographs that the present scan has come across.
    quint64 scanned = 0;
    /// Thumbnails: jobs that have ended, and jobs that wait or run.
    quint64 thumbnailsFinished = 0;
    quint64 thumbnailsPending = 0;
    /// Photographs of the edits that are being stored.
    quint64 editing = 0;
};

/// What of the background work is worth telling: nothing while it is short, then how many are done
/// of how many. Main thread.
class WorkProgress final : public QObject {
    Q_OBJECT

public:
    enum class Kind { None, Scanning, Thumbnails, Editing };
    struct State {
        Kind kind = Kind::None;
        quint64 done = 0;
        /// 0: not known.
        quint64 total = 0;
        friend bool operator==(const State&, const State&) = default;
    };

    explicit WorkProgress(std::function<WorkFigures()> figures, QObject* parent = nullptr);

    [[nodiscard]] const State& state() const { return _state; }
    /// Another scan began: what was counted before is forgotten.
    void restart();
    /// There may be work: looks after it until it is done.
    void wake();
    /// Reads the counters; called by itself while there is work.
    void update();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] State stateOf(const WorkFigures& figures) const;

    const std::function<WorkFigures()> _figures;
    QTimer _timer{this};
    State _state;
    quint64 _finishedBefore = 0; // thumbnails, when the present work began
    int _busyLooks = 0;
    int _editingLooks = 0;
};
