#pragma once

#include "catalogue/marks/Marks.h"

#include <QHash>
#include <QString>

#include <memory>
#include <optional>
#include <span>
#include <vector>

class FMDatabase;

namespace marks {

/// The absolute paths of mounted folder roots by their `FolderAlias.Id`.
using RootPaths = QHash<qint64, QString>;

/// The ledger of all photographs that were ever marked, in a file of its own beside `files.db`:
/// `marks.db`. It needs no other table, so it outlives whatever happens to the catalogue's rows.
///
/// The operations run on a connection to `files.db` with the ledger attached (`connect`), on the
/// thread of the connection. They work on sets: ten thousand photographs are a few statements.
/// Whoever changes something opens an `FMTransaction` around it, which is then one over both files:
/// both have rollback journals, for SQLite commits several files at once only with those. Failure
/// shows in the result only.
class MarksLedger {
public:
    explicit MarksLedger(FMDatabase& both) : _db(both) {}

    /// A connection to both files, open; its statements are kept. Nothing when one of them can't be
    /// opened. Waits for other connections' locks for a bounded time: with a ledger that somebody
    /// else has locked, an edit fails, and the program goes on.
    [[nodiscard]] static std::unique_ptr<FMDatabase>
    connect(const QString& filesPath, const QString& marksPath);

    /// Makes what is missing of the ledger's tables. `marks` is a connection to the ledger alone.
    static bool checkTables(FMDatabase& marks);
    /// Makes what a ledger of an earlier version has not: it can be used without. The same
    /// connection.
    static bool checkIndexes(FMDatabase& marks);

    // Of the catalogue's rows with these ids

    /// Writes the marks into the catalogue's rows; what the change leaves out stays.
    bool changeCatalogue(std::span<const qint64> fileIds, const MarksChange& change);
    /// Turns what the catalogue has by degrees counter-clockwise, from wherever each is.
    bool turnInCatalogue(std::span<const qint64> fileIds, int degrees);
    /// Gives those that have none a row of the ledger, and makes the marks in the ledger what the
    /// catalogue has: the end of an edit.
    bool takeFromCatalogue(std::span<const qint64> fileIds, const RootPaths& roots);
    /// The same after a change of stars and flag only, of photographs that have a row of the ledger
    /// already.
    bool takeChange(std::span<const qint64> fileIds, const MarksChange& change);
    /// The reverse: makes the catalogue's marks what the ledger has.
    bool giveToCatalogue(std::span<const qint64> fileIds);
    /// Brings what the ledger knows of the photographs into step with the catalogue. Identity and
    /// digest go where size or date changed.
    bool retrace(std::span<const qint64> fileIds, const RootPaths& roots);
    /// The marks that the catalogue has, in the order of the ids; those without a row are left out.
    struct Held {
        qint64 fileId = 0;
        Marks marks;
    };
    [[nodiscard]] std::optional<std::vector<Held>> held(std::span<const qint64> fileIds);
    /// The rows that have marks, or a row in the ledger.
    [[nodiscard]] std::optional<std::vector<qint64>> markedFileIds();

    /// What the catalogue knows of them, in the order of the ids; those without a row are left out.
    [[nodiscard]] std::optional<std::vector<std::pair<qint64, Trace>>>
    traces(std::span<const qint64> fileIds, const RootPaths& roots);

    // Of the ledger's own rows

    /// All of them. Where the catalogue has a photograph, its path is the catalogue's.
    [[nodiscard]] std::optional<std::vector<LedgerRow>> rows(const RootPaths& roots);
    /// A root has moved: what the catalogue does not have of it is sought at its new place.
    bool followRoot(const QByteArray& from, const QByteArray& to);
    /// A row without a photograph in the catalogue; answers its id, or 0.
    qint64 insert(const Trace& trace, const Marks& marks);
    bool setMarks(qint64 id, const Marks& marks);
    bool remove(qint64 id);
    /// Says which row of the catalogue has the photograph now; 0 for none.
    bool setFileId(qint64 id, qint64 fileId);
    bool setInheritedFrom(qint64 id, qint64 inheritedFrom);
    /// Takes back what rows inherited from this one, as far as nobody edited it since; answers the
    /// photographs of the catalogue that had it.
    [[nodiscard]] std::optional<std::vector<qint64>> disinheritHeirs(qint64 id);
    /// Whether the photograph has a row in the catalogue and none in the ledger.
    [[nodiscard]] bool isWithoutMarks(qint64 fileId);
    /// What was learnt of the row's file, unless the row is that of another size or date by now. An
    /// empty digest leaves the ledger's as it is. Works on a connection to the ledger alone too.
    bool setContent(
        const LedgerRow& row, const platform::FileIdentity& identity, const QByteArray& digest);
    /// Photographs that the catalogue has and whose files nobody has read yet, from above an id on;
    /// with path, size and date only. `marks` is a connection to the ledger alone.
    [[nodiscard]] static std::optional<std::vector<LedgerRow>>
    rowsWithoutContent(FMDatabase& marks, qint64 afterId, int most);

    // Of files that the program itself moves

    /// Of the row with this photograph: where its file lies on its disk now.
    bool setIdentity(qint64 fileId, const platform::FileIdentity& identity);
    /// The photograph leaves all folder roots for another path; the row waits for it there.
    bool
    leaveCatalogue(qint64 fileId, const QByteArray& path, const platform::FileIdentity& identity);
    /// A photograph that the catalogue does not have goes to another path.
    bool moveLost(
        const QByteArray& path, const QByteArray& toPath, const platform::FileIdentity& identity);
    /// The photograph was written over, by choice: its marks go with it.
    bool removePhotograph(qint64 fileId);
    /// The same of one that the catalogue does not have.
    bool removeLost(const QByteArray& path);

    // Of both files

    /// Counts a change, in both files and within its transaction: two files that don't have the
    /// same count are not of one time.
    bool countEdit();

private:
    FMDatabase& _db;
};

} // namespace marks
