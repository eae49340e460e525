#include "catalogue/marks/MarksFile.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/DatabaseFile.h"
#include "platform/files/PathNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <utility>

namespace marks {

namespace {

constexpr std::chrono::seconds longestWait(1);
constexpr qsizetype snapshotsKept = 10;

const QString snapshotNames = QStringLiteral("marks-*.db");
const QString timeInName = QStringLiteral("yyyy-MM-dd-HHmmss");

struct Count {
    qint64 catalogueId = 0;
    qint64 edits = 0;
    bool operator==(const Count&) const = default;
};

std::optional<Count> countOf(FMDatabase& marks) {
    FMResultSet row =
        marks.executeQuery(QStringLiteral("select CatalogueId,EditCount from Ledger"));
    if (!row.next()) return std::nullopt;
    return Count{row.longLongIntForColumnIndex(0), row.longLongIntForColumnIndex(1)};
}

std::optional<qint64> number(FMDatabase& db, const QString& sql) {
    FMResultSet row = db.executeQuery(sql);
    if (!row.next()) return std::nullopt;
    return row.longLongIntForColumnIndex(0);
}

struct Counts {
    Count ledger;
    Count catalogue;
    [[nodiscard]] bool areOfOneTime() const { return ledger == catalogue && ledger.edits != 0; }
    /// A catalogue that was never bound is a new one; one that got its identity since it was bound
    /// is known by its count.
    [[nodiscard]] bool areOfOneCatalogue() const {
        if (ledger.edits == 0) return false;
        if (ledger.catalogueId == 0) return ledger.edits == catalogue.edits;
        return ledger.catalogueId == catalogue.catalogueId;
    }
};

std::optional<Counts> countsOf(FMDatabase& both) {
    const auto ledger = countOf(both);
    const auto id = number(both, QStringLiteral("pragma main.user_version"));
    const auto edits = number(both, QStringLiteral("pragma main.application_id"));
    if (!ledger || !id || !edits) return std::nullopt;
    return Counts{*ledger, {*id, *edits}};
}

FileState failureOf(const FMDatabase& db) {
    return db.isFileDamaged() ? FileState::Damaged : FileState::Unknown;
}

/// The newest first.
QStringList snapshotsIn(const QString& folder) {
    return QDir(folder).entryList({snapshotNames}, QDir::Files, QDir::Name | QDir::Reversed);
}

/// Makes the copy whole before it gets its name.
bool copyWhole(const QString& from, const QString& to) {
    const QString unfinished = to + QStringLiteral(".new");
    QFile::remove(unfinished);
    QFile::remove(to + QStringLiteral("-journal")); // what a lost file left is not for this one
    return QFile::copy(from, unfinished) && DatabaseFile::synchronize(unfinished) &&
           QFile::rename(unfinished, to) && DatabaseFile::synchronize(QFileInfo(to).absolutePath());
}

/// The time of the snapshot that is in place now; empty when there is no good one.
QString restoreNewest(const QString& path, const QString& snapshotFolder) {
    for (const QString& name : snapshotsIn(snapshotFolder)) {
        const QString snapshot = platform::pathInFolder(snapshotFolder, name);
        if (stateOfLedger(snapshot) == FileState::Good && copyWhole(snapshot, path))
            return name.section(u'.', 0, 0).section(u'-', 1);
    }
    return {};
}

bool makeLedger(const QString& path) {
    FMDatabase marks(path);
    marks.setLongestWait(longestWait);
    return marks.open() && MarksLedger::checkTables(marks);
}

} // namespace

FileState stateOfLedger(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) return FileState::Missing;
    FMDatabase marks(path);
    marks.setLongestWait(longestWait);
    if (!marks.open()) return FileState::Unknown;
    // All rows before the first one counts: an error may end them early.
    bool isWhole = true;
    FMResultSet row = marks.executeQuery(QStringLiteral("pragma quick_check"));
    while (row.next())
        isWhole = isWhole && row.stringForColumnIndex(0) == u"ok";
    if (row.hadError()) return failureOf(marks);
    if (!isWhole) return FileState::Damaged;
    const auto tables = number(
        marks, QStringLiteral("select count(*) from sqlite_master where name in "
                              "('Ledger','Marks')"));
    if (!tables) return failureOf(marks);
    if (*tables == 0) return FileState::Missing;
    return *tables == 2 && countOf(marks) ? FileState::Good : FileState::Damaged;
}

QString settleLedger(const QString& path, const QString& snapshotFolder) {
    const FileState state = stateOfLedger(path);
    if (state == FileState::Good) {
        FMDatabase marks(path);
        marks.setLongestWait(longestWait);
        if (marks.open()) static_cast<void>(MarksLedger::checkIndexes(marks));
        return {};
    }
    const QString cannotBeUsed =
        QStringLiteral("the ledger of marks %1 can't be used; stars, flags and tags can't be "
                       "changed, and none is lost")
            .arg(path);
    if (state == FileState::Unknown) return cannotBeUsed;
    QString aside;
    if (state == FileState::Damaged) {
        aside = DatabaseFile::moveAside(path);
        if (aside.isEmpty()) return cannotBeUsed;
    } else if (QFile::exists(path)) {
        QFile::remove(path); // there is nothing in it
    }
    const QString time = restoreNewest(path, snapshotFolder);
    if (time.isEmpty() && !makeLedger(path)) return cannotBeUsed;
    if (aside.isEmpty() && time.isEmpty()) return {}; // the first one
    const QString replacement =
        time.isEmpty() ? QStringLiteral("what the catalogue knows")
                       : QStringLiteral("the copy of %1 and what the catalogue knows").arg(time);
    return aside.isEmpty()
               ? QStringLiteral("the ledger of marks %1 was missing; it is made again from %2")
                     .arg(path, replacement)
               : QStringLiteral("the ledger of marks was damaged; it is made again from %1, and "
                                "the damaged file is kept as %2")
                     .arg(replacement, aside);
}

bool ensureLedgerIsBound(FMDatabase& both, const RootPaths& roots) {
    const auto counts = countsOf(both);
    if (!counts || counts->areOfOneTime()) return counts.has_value();
    FMTransaction transaction(both);
    return bindLedger(both, roots) && transaction.commit();
}

bool bindLedger(FMDatabase& both, const RootPaths& roots) {
    const auto counts = countsOf(both);
    if (!counts || counts->areOfOneTime()) return counts.has_value();
    const auto& [ledger, catalogue] = *counts;
    MarksLedger rows(both);
    const bool isSame = counts->areOfOneCatalogue();
    // Ids of another catalogue say nothing in this one, and those that an older copy does not know
    // are given once more.
    const QString unknown =
        isSame ? QStringLiteral(" where FileId not in (select Id from ImageFile)") : QString();
    if (!both.executeUpdate(QStringLiteral("update Marks set FileId = null") + unknown))
        return false;
    const auto marked = rows.markedFileIds();
    if (!marked) return false;
    const bool isLedgerNewer = isSame && catalogue.edits < ledger.edits;
    const bool isInStep =
        isLedgerNewer ? rows.giveToCatalogue(*marked) : rows.takeFromCatalogue(*marked, roots);
    if (!isInStep) return false;
    const qint64 edits = std::max({catalogue.edits, ledger.edits, qint64(1)});
    return both.executeUpdate(
               QStringLiteral("update Ledger set CatalogueId = ?,EditCount = ?"),
               catalogue.catalogueId, edits) &&
           both.executeUpdate(QStringLiteral("pragma main.application_id = %1").arg(edits));
}

bool takeSnapshot(FMDatabase& marks, const QString& snapshotFolder, const QDateTime& now) {
    const auto count = countOf(marks);
    if (!count) return false;
    const QStringList before = snapshotsIn(snapshotFolder);
    if (!before.isEmpty()) {
        FMDatabase newest(platform::pathInFolder(snapshotFolder, before.constFirst()));
        newest.setLongestWait(longestWait);
        if (newest.open() && countOf(newest) == count) return true;
    } else if (count->edits == 0) {
        return true; // nobody has marked anything yet
    }
    if (!QDir().mkpath(snapshotFolder)) return false;
    const QString name = QStringLiteral("marks-%1.db").arg(now.toUTC().toString(timeInName));
    const QString path = platform::pathInFolder(snapshotFolder, name);
    const QString unfinished = path + QStringLiteral(".new");
    QFile::remove(unfinished);
    const auto photographs = number(marks, QStringLiteral("select count(*) from Marks"));
    bool isTaken = marks.executeUpdate(QStringLiteral("vacuum into ?"), unfinished) &&
                   stateOfLedger(unfinished) == FileState::Good &&
                   DatabaseFile::synchronize(unfinished);
    if (isTaken) {
        FMDatabase copy(unfinished);
        isTaken = copy.open() &&
                  number(copy, QStringLiteral("select count(*) from Marks")) >= photographs;
    }
    if (!isTaken) {
        QFile::remove(unfinished);
        return false;
    }
    QFile::remove(path); // of the same second
    if (!QFile::rename(unfinished, path) || !DatabaseFile::synchronize(snapshotFolder))
        return false;
    for (const QString& old : dispensableSnapshots(snapshotsIn(snapshotFolder)))
        QFile::remove(platform::pathInFolder(snapshotFolder, old));
    return true;
}

QStringList dispensableSnapshots(QStringList names) {
    std::ranges::sort(names, std::greater());
    QStringList dispensable;
    QString keptMonth;
    constexpr qsizetype throughMonth = sizeof "marks-2026-11" - 1;
    for (const QString& name : names.mid(snapshotsKept)) {
        const QString month = name.left(throughMonth);
        if (month == keptMonth) dispensable.append(name);
        keptMonth = month;
    }
    return dispensable;
}

} // namespace marks
