#pragma once

#include "fileactions/marks/EditHistory.h"
#include "fileactions/marks/EditRunner.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"

#include <chrono>
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
        /// For another program's lock: a scan that removes many photographs has it for long.
        std::chrono::milliseconds longestWait = std::chrono::seconds(5);
        /// Runs what changes names of files and their rows, so that scans know of it. On the thread
        /// of the edits.
        std::function<void(const std::function<void()>& change)> whileRowsChange =
            [](const auto& change) { change(); };
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
    /// Reads both files behind all that is on its way: `look` is called on the thread of the edits,
    /// with nullptr where they can't be opened, and `done` later; not at all if the program ends
    /// before.
    using Look = std::function<void(FMDatabase* both)>;
    void look(Look look, std::function<void()> done);
    /// Stores marks that come from elsewhere, behind all that is on its way, and without history.
    /// `store` is called on the thread of the edits, `done` later with why not, or nothing; also
    /// where the program ends before. About so many photographs are told to be on their way.
    using Store = std::function<std::variant<PerformedEdit, QString>(FMDatabase& both)>;
    using Stored = std::function<void(const QString& reason)>;
    void store(Store store, qint64 photographs, Stored done);
    /// Stores what is left; nothing is shown any more.
    void finish();
    [[nodiscard]] bool isIdle() const { return !_isRunning && _jobs.empty(); }

private:
    struct Job {
        enum Kind { Edit, Undo, Redo, Read, Import, Other, Look };
        Kind kind = Edit;
        PhotographEdit edit = {};
        std::vector<qint64> fileIds = {};
        Done done = {};
        QString text = {}; ///< of something else
        OtherWay way = {};
        EditQueue::Look look = {};
        std::function<void()> looked = {};
        Store store = {};
        qint64 storeCount = 0;
        Stored stored = {};
        /// Changes nothing.
        [[nodiscard]] bool isLook() const { return kind == Read || kind == Look; }
    };
    using Work = std::variant<PhotographEdit, MarksEdit, std::vector<qint64>, Look, Store>;
    using Outcome = std::variant<StoredEdit, QString>;

    void add(Job job);
    void beginNext();
    [[nodiscard]] static qint64 photographsOf(const Job& job, const Work& work);
    [[nodiscard]] std::optional<Work> workOf(const Job& job) const;
    /// Takes the first job if it is of something that is done elsewhere; answers whether.
    [[nodiscard]] bool beginOther();
    void endOther(bool isUndo, OtherWay::End end, OtherWay back, OtherWay rest);
    void takeFinished();
    void drain();
    void complete(const Job& job, Outcome outcome);
    /// The items get what was read of them, or what an import changed.
    void showAgain(const StoredEdit& stored);
    /// Before the history moves.
    [[nodiscard]] EditResult resultOf(const Job& job, const StoredEdit& stored) const;
    void remember(const Job& job, StoredEdit& stored);
    void fail(const Job& job, const QString& reason);
    /// The undo that was meant for the edit that has just failed would take back an older one.
    void dropUndoOfFailed();

    // On the thread of the edits.
    [[nodiscard]] Outcome perform(const Work& work);
    [[nodiscard]] Outcome performOn(FMDatabase& both, const Work& work) const;
    [[nodiscard]] Outcome performEdit(FMDatabase& both, const PhotographEdit& edit) const;

    const Environment _environment;
    EditHistory _history;
    std::deque<Job> _jobs; ///< the first one runs, if one does
    bool _isRunning = false;
    qint64 _runningCount = 0;     ///< photographs of the job that runs
    bool _isOtherRunning = false; ///< what runs is done elsewhere: nobody can wait for it
    bool _isFinishing = false;
    platform::Mutex _mutex;
    std::optional<Outcome> _finished VELMORA_GUARDED_BY(_mutex);
    std::unique_ptr<FMDatabase> _both; // of the thread of the edits, while one runs
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _queue{QStringLiteral("edits")};
};

} // namespace fileactions
