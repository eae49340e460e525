#pragma once

#include "catalogue/marks/MarksLedger.h"
#include "fileactions/copy/FollowingRows.h"
#include "platform/files/FileIdentity.h"

#include <QHash>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class FMDatabase;
class FMTransaction;

namespace fileactions {

/// Lets the rows of catalogue and ledger go with the files that the program moves, by their paths
/// before and after: the row, and with it the thumbnail and the marks, is the same one at the new
/// place. A photograph that leaves all folder roots keeps its marks in the ledger, under its new
/// path; one that is written over takes its marks along.
///
/// Names and rows change within one transaction, so that no scan sees the one without the other.
/// What can't be stored is left to the next scan and to the search for marks. On the thread of the
/// command.
class CatalogueRows final : public FollowingRows {
public:
    /// A folder root and the way from it to a folder.
    struct Place {
        qint64 aliasId = 0;
        QString relativePath;
    };
    struct Environment {
        /// A connection to both files, for the calling thread; nullptr where it can't be had.
        std::function<std::unique_ptr<FMDatabase>()> connect;
        std::function<marks::RootPaths()> mountedRoots;
        /// Of an absolute path; nothing outside of the roots.
        std::function<std::optional<Place>(const QString& folder)> placeOfFolder;
        /// Tells the scans that what they know of the catalogue is out of date from now on.
        std::function<void()> rowsWillChange;
    };
    explicit CatalogueRows(Environment environment);
    ~CatalogueRows() override;

    void begin() override;
    void moved(const QByteArray& path, const QByteArray& toPath) override;
    void replaced(const QByteArray& path) override;
    void returned(const QByteArray& path) override;
    void settle() override;

    /// The rows, by their ids, that went elsewhere with their files, or out of the catalogue, or
    /// have their files again.
    [[nodiscard]] const std::vector<qint64>& changedRows() const { return _changedRows; }

private:
    /// So long the catalogue is kept from others at most, but for the time of one rename.
    static constexpr std::chrono::milliseconds longestTransaction{50};
    /// So long nobody waits for a catalogue that was locked: 10,000 files are not held up.
    static constexpr std::chrono::seconds pauseAfterFailure{10};

    struct Folder {
        std::optional<Place> place;
        qint64 folderId = 0; ///< 0: the catalogue has none
    };
    [[nodiscard]] Folder& folderOf(const QByteArray& path);
    [[nodiscard]] qint64 rowOf(const QByteArray& path);
    [[nodiscard]] qint64 makeFolderRow(Folder& folder);
    void moveRow(qint64 fileId, Folder& folder, const QByteArray& toPath);
    void leaveRoots(qint64 fileId, const QByteArray& toPath);
    void moveLostMarks(const QByteArray& path, const QByteArray& toPath);
    /// Takes what another file had at this path out of the catalogue.
    void clearPlace(const QByteArray& path, bool withMarks);
    void removeRow(qint64 fileId);

    const Environment _environment;
    std::unique_ptr<FMDatabase> _both;
    bool _isUnreachable = false;
    marks::RootPaths _roots;
    std::unique_ptr<FMTransaction> _transaction; // goes before its connection
    std::chrono::steady_clock::time_point _begun;
    std::optional<std::chrono::steady_clock::time_point> _failed;
    QHash<QByteArray, Folder> _folders; ///< of the transaction
    struct Moved {
        qint64 fileId;
        platform::FileIdentity identity;
    };
    std::vector<Moved> _moved;   ///< within the transaction
    std::vector<qint64> _others; ///< changed within it otherwise
    std::vector<qint64> _changedRows;
};

} // namespace fileactions
