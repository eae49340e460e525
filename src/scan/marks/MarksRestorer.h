#pragma once

#include "catalogue/marks/LedgerIndex.h"
#include "catalogue/marks/MarksLedger.h"
#include "catalogue/marks/MarksMatching.h"
#include "group/ImageFileRow.h"
#include "platform/files/FileManager.h"
#include "platform/tasks/Operation.h"
#include "platform/values/PBValue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

class FMDatabase;

/// A photograph whose row was just made.
struct InsertedPhotograph {
    qint64 fileId = 0;
    QString folderPath;
    platform::FileIdentity identity;
    /// Those of the row; its marks are written into them. Outlives this.
    PBDictionary* columns = nullptr;
};

/// Gives photographs that lost their row in the catalogue, or got a new one, the marks that the
/// ledger has of them. A scan tells of what it sees; what is known by its file alone gets its marks
/// before it is shown, all else at the end of the scan. On the scan thread; lives as long as the
/// program, since what is looked for may turn up in a later scan.
class MarksRestorer {
public:
    struct Environment {
        /// To both files; nullptr where it can't be had. Called when it is first needed.
        std::function<std::unique_ptr<FMDatabase>()> connect;
        std::function<marks::RootPaths()> mountedRoots;
        /// Whether the folder root with this path is on a removable volume.
        std::function<bool(const QByteArray& rootPath)> isRemovable;
        /// The rows of these photographs have got marks, which are shown and those that are on
        /// their way into a tree among them. On the scan thread.
        std::function<void(std::vector<qint64> fileIds)> marksCameBack;
        std::function<void()> ledgerDidChange;
    };
    explicit MarksRestorer(Environment environment);
    ~MarksRestorer();
    MarksRestorer(const MarksRestorer&) = delete;
    MarksRestorer& operator=(const MarksRestorer&) = delete;

    /// Reads the ledger, if it changed since.
    void scanBegins();

    /// The file that a row of the catalogue names is there, with the row's size and date.
    void sawPhotograph(
        const group::ImageFileRow& row, const QString& folderPath,
        const platform::ResourceValues& values);
    /// Whether the file in the row's place is another photograph of the ledger, with which it has
    /// size and date in common.
    [[nodiscard]] bool isExchanged(qint64 fileId, const platform::FileIdentity& identity) const;
    /// Whether the row is a marked one, and the file in its place is another one rather than one
    /// that was written anew.
    [[nodiscard]] bool isReplaced(qint64 fileId, const platform::ResourceValues& values) const;
    void rowsWereRemoved(const std::vector<qint64>& fileIds);
    /// A folder root went with all its rows: the next scan reads the ledger again. Any thread.
    void rootsWereRemoved() { _mustRead = true; }

    /// Rows were just made of these files. What is known by its file gets its marks now, in the
    /// catalogue and in the columns that it will be shown by.
    void restoreInserted(const std::vector<InsertedPhotograph>& photographs);
    /// Decides about all else that was seen, and about what was not found before. `isEndOfScan`:
    /// all of the folder was looked at. `checkpoint` runs between files that are read.
    void restoreRest(
        const platform::Operation& operation, bool isEndOfScan,
        const std::function<void()>& checkpoint);
    /// Rows may have lost their files without a scan's having seen it.
    void lookAgain() { _isSomethingNew = true; }

private:
    [[nodiscard]] bool isOpen();
    void refresh();
    [[nodiscard]] bool readLedger();
    void note(marks::Sighting sighting, bool isInserted);
    [[nodiscard]] std::vector<marks::Sighting> openSightings();
    void recordMarked();
    void readMarks(qint64 fileId, PBDictionary& columns);
    [[nodiscard]] std::vector<qint64> store(
        const std::vector<marks::LedgerRow>& rows, const std::vector<marks::Sighting>& sightings,
        const std::vector<marks::Match>& matches);

    const Environment _environment;
    std::unique_ptr<FMDatabase> _both;
    marks::RootPaths _roots;
    marks::LedgerIndex _index;
    qint64 _dataVersion = -1; // of the ledger when it was read
    std::atomic<bool> _mustRead = false;
    struct Seen {
        marks::Sighting sighting;
        /// Its row is of this run: its old place may be left only now.
        bool isInserted = false;
    };
    /// Photographs without marks that may be some of the ledger's, by their ids.
    std::unordered_map<qint64, Seen> _seen;
    /// Photographs with marks that the ledger does not have: those of a root that was away when the
    /// same photograph came to another place, say.
    std::vector<qint64> _unrecorded;
    bool _isSomethingNew = false;
};
