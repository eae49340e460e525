#pragma once

#include "fileactions/marks/EditHistory.h"
#include "fileactions/marks/EditRunner.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"

#include <deque>
#include <memory>
#include <optional>

class FMDatabase;
class FolderRootPaths;

namespace fileactions {

/// The runner of edits: a line of jobs, a thread that stores one after the other, and the history.
/// What is read back for the items takes its turn in the same line, so that the items get what the
/// catalogue had in the order in which it had it. Main thread.
class EditQueue final : public EditRunner {
    Q_OBJECT

public:
    struct Environment {
        /// A connection to both files; nullptr where it can't be had. On the thread of the edits.
        std::function<std::unique_ptr<FMDatabase>()> connect;
        /// On the thread of the edits.
        std::function<marks::RootPaths()> mountedRoots;
        /// What paths are asked of; outlives this object. On the thread of the edits.
        const FolderRootPaths& folderRoots;
        /// Brings items and trees in step: rows, and `ShownField`s. Answers whether any photograph
        /// left the display.
        std::function<bool(const std::vector<marks::ShownRow>& rows, unsigned fields)> show;
        /// A tag has another name everywhere, or is gone.
        std::function<void()> tagsDidChange;
        /// There are photographs whose files are to be looked at, and a change to be kept.
        std::function<void()> ledgerDidChange;
    };

    explicit EditQueue(Environment environment);
    ~EditQueue() override;

    void run(PhotographEdit edit, Done done = {}) override;
    void didOther(const QString& text, OtherWay back) override;
    void countTags(Counted done) override;
    void undo() override { add({.kind = Job::Undo}); }
    void redo() override { add({.kind = Job::Redo}); }
    [[nodiscard]] bool canUndo() const override { return _history.undoStep() != nullptr; }
    [[nodiscard]] bool canRedo() const override { return _history.redoStep() != nullptr; }
    [[nodiscard]] QString undoText() const override { return _history.undoText(); }
    [[nodiscard]] QString redoText() const override { return _history.redoText(); }
    [[nodiscard]] qint64 pendingCount() const override;

    /// Has the items of these photographs made what the catalogue says.
    void readAgain(std::vector<qint64> fileIds);
    /// Stores marks that come from elsewhere, behind all that is on its way, and waits for it;
    /// answers why not, or nothing. Without history.
    [[nodiscard]] QString storeNow(MarksEdit edit);
    /// Stores what is left; nothing is shown any more.
    void finish();
    [[nodiscard]] bool isIdle() const { return !_isRunning && _jobs.empty(); }

private:
    struct Job {
        enum Kind { Edit, Undo, Redo, Read, Import, Other, Count };
        Kind kind = Edit;
        PhotographEdit edit = {};
        MarksEdit marks = {};
        std::vector<qint64> fileIds = {};
        Done done = {};
        QString text = {}; ///< of something else
        OtherWay way = {};
        Counted counted = {};
        /// Changes nothing.
        [[nodiscard]] bool isLook() const { return kind == Read || kind == Count; }
    };
    struct CountTags {};
    using Counts = std::optional<std::vector<marks::TagRows::Count>>;
    using Work = std::variant<PhotographEdit, MarksEdit, std::vector<qint64>, CountTags>;
    using Outcome = std::variant<StoredEdit, QString, Counts>;

    void add(Job job);
    void beginNext();
    [[nodiscard]] static qint64 photographsOf(const Work& work);
    [[nodiscard]] std::optional<Work> workOf(const Job& job) const;
    /// Takes the first job if it is of something that is done elsewhere; answers whether.
    [[nodiscard]] bool beginOther();
    void endOther(bool isUndo, OtherWay::End end, OtherWay back);
    void takeFinished();
    void drain();
    void complete(const Job& job, Outcome outcome);
    /// Before the history moves.
    [[nodiscard]] EditResult resultOf(const Job& job, const StoredEdit& stored) const;
    void remember(const Job& job, StoredEdit& stored);
    void fail(const Job& job, const QString& reason);
    /// The undo that was meant for the edit that has just failed would take back an older one.
    void dropUndoOfFailed();

    // On the thread of the edits.
    [[nodiscard]] Outcome perform(const Work& work);
    [[nodiscard]] Outcome performOn(FMDatabase& both, const Work& work) const;

    const Environment _environment;
    EditHistory _history;
    std::deque<Job> _jobs; ///< the first one runs, if one does
    bool _isRunning = false;
    qint64 _runningCount = 0;     ///< photographs of the job that runs
    bool _isOtherRunning = false; ///< what runs is done elsewhere: nobody can wait for it
    bool _isFinishing = false;
    QString _importFailure;
    platform::Mutex _mutex;
    std::optional<Outcome> _finished VELMORA_GUARDED_BY(_mutex);
    std::unique_ptr<FMDatabase> _both; // of the thread of the edits, while one runs
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _queue{QStringLiteral("edits")};
};

} // namespace fileactions
