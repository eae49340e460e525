#pragma once

#include "catalogue/marks/MarksUpkeep.h"
#include "fileactions/marks/EditQueue.h"
#include "fileactions/marks/ShownPhotographs.h"
#include "scan/ScanFactory.h"
#include "scan/marks/MarksRestorer.h"

#include <functional>
#include <memory>
#include <optional>
#include <variant>

class PBAliasManager;
class ScanPipeline;

/// All that the marks of photographs need: their ledger and its upkeep, the edits, and what gives
/// them back. Main thread.
class MarksServices {
public:
    struct Environment {
        QString filesPath; ///< `files.db`; the ledger lies beside it
        const PBAliasManager& aliasManager;
        /// Tells the user in a sentence what happened to the ledger. Any thread.
        std::function<void(const QString& sentence)> tell;
        /// Called with each connection to the ledger before its first use, on any thread. May be
        /// empty.
        std::function<void(FMDatabase& connection)> observe;
    };
    /// Sees to it that there is a good ledger before anything else opens it.
    explicit MarksServices(Environment environment);
    ~MarksServices();
    MarksServices(const MarksServices&) = delete;
    MarksServices& operator=(const MarksServices&) = delete;

    /// For the scans; of their thread.
    [[nodiscard]] MarksRestorer& restorer() { return _restorer; }
    /// Edits show in the trees of the pipeline, which is made with the restorer. `browsing` is how
    /// the user browses now. Both are let go of by `finish`.
    void setPipeline(ScanPipeline& pipeline, std::function<ScanBrowsing()> browsing);
    /// The runner of the user's edits. After `setPipeline`.
    [[nodiscard]] fileactions::EditQueue& edits() { return *_edits; }
    /// Called where a tag has another name everywhere, or is gone.
    void setTagsDidChange(std::function<void()> tagsDidChange) {
        _tagsDidChange = std::move(tagsDidChange);
    }

    // Behind the edits that are on their way, on their thread; without a pipeline at once.

    /// All marks as text; nothing where the ledger can't be read. `done` is not called if the
    /// program ends before.
    using Exported = std::function<void(const std::optional<QByteArray>& lines)>;
    void exportMarks(Exported done);
    struct ImportResult {
        bool isWhole = false; ///< all lines were good, and are stored
        QStringList told;
    };
    using Imported = std::function<void(const ImportResult& result)>;
    void importMarks(const QByteArray& lines, Imported done);

    /// To both files, for the calling thread; nullptr where it can't be had.
    [[nodiscard]] std::unique_ptr<FMDatabase> connect() const;
    /// Of mounted ones; with `withAway` of all, as far as a place is known. Any thread.
    [[nodiscard]] marks::RootPaths roots(bool withAway = false) const;
    /// Marked photographs have moved, or were edited.
    void ledgerDidChange() { _upkeep.wake(); }

    [[nodiscard]] bool isIdle() const { return _upkeep.isIdle() && (!_edits || _edits->isIdle()); }
    /// The queues of scans have ended: stores the edits that are left, stops the upkeep and keeps a
    /// copy of the ledger.
    void finish();

private:
    /// What an import comes to, but for why it is not stored; its plan is looked up and stored by
    /// whoever has the connection.
    [[nodiscard]] std::variant<fileactions::PerformedEdit, QString>
    storeLines(FMDatabase& both, const QByteArray& lines, ImportResult& result) const;
    /// Any thread.
    void readAgain(std::vector<qint64> fileIds);

    const Environment _environment;
    const QString _marksPath;
    const QString _snapshotFolder;
    marks::MarksUpkeep _upkeep;
    MarksRestorer _restorer;
    std::function<void()> _tagsDidChange;
    std::optional<fileactions::ShownPhotographs> _shown;
    std::optional<fileactions::EditQueue> _edits;
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
};
