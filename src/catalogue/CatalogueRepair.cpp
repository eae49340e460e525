#include "catalogue/CatalogueRepair.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"

#include <QFile>

#include <algorithm>
#include <vector>

namespace {

/// Moves the rows of one table. Where a page can't be read, what lies beyond it is looked for in
/// steps that double, and from there back to the page's other end.
class TableCopy {
public:
    TableCopy(FMDatabase& from, FMDatabase& to, const CatalogueTable& table)
        : _from(from), _to(to) {
        const QStringList& columns = CatalogueSchema::columnsOfTable(table.name);
        const QString names = columns.join(u',');
        _select = QStringLiteral("select rowid,%1 from %2 where rowid ").arg(names, table.name);
        QStringList places(columns.size(), QStringLiteral("?"));
        _insert = QStringLiteral("insert or ignore into %1 (rowid,%2) values (?,%3)")
                      .arg(table.name, names, places.join(u','));
    }

    /// False when the new file does not take them.
    bool run() {
        qint64 position = 0;
        qint64 step = 1;
        while (true) {
            const qint64 before = _last;
            const bool isEnd = copyUpwards(position);
            if (_hasFailed) return false;
            if (isEnd) return true;
            if (_last > before) {
                if (position > before) copyDownwards(before, position);
                step = 1;
            }
            position = std::max(position, _last);
            if (position > largestId - step) return !_hasFailed;
            position += step;
            step *= 2;
        }
    }

private:
    static constexpr qint64 largestId = qint64(1) << 48;

    /// From behind the position to the first row that can't be read; true at the table's end.
    bool copyUpwards(qint64 position) {
        FMResultSet rows =
            _from.executeQuery(_select + QStringLiteral("> ? order by rowid"), position);
        if (!rows.isValid()) return true;
        while (rows.next()) {
            insert(rows);
            _last = std::max(_last, rows.longLongIntForColumnIndex(0));
        }
        return !_from.hadError();
    }

    /// Between two ids, both not included, down to the first row that can't be read.
    void copyDownwards(qint64 above, qint64 below) {
        FMResultSet rows = _from.executeQuery(
            _select + QStringLiteral("> ? and rowid <= ? order by rowid desc"), above, below);
        while (rows.next())
            insert(rows);
    }

    void insert(const FMResultSet& row) {
        std::vector<PBValue> values;
        for (int column = 0; column < row.columnCount(); ++column)
            values.push_back(row.objectForColumnIndex(column));
        if (!_to.executeUpdateWithArgumentsInArray(_insert, values)) _hasFailed = true;
    }

    FMDatabase& _from;
    FMDatabase& _to;
    QString _select;
    QString _insert;
    qint64 _last = 0;
    bool _hasFailed = false;
};

/// The counters of ids go on where they were.
bool copyCounters(FMDatabase& from, FMDatabase& to) {
    FMResultSet counters =
        from.executeQuery(QStringLiteral("select name,seq from sqlite_sequence"));
    while (counters.next()) {
        const QString table = counters.stringForColumnIndex(0);
        const qint64 last = counters.longLongIntForColumnIndex(1);
        if (!to.executeUpdate(
                QStringLiteral("update sqlite_sequence set seq = max(seq,?) where name = ?"), last,
                table))
            return false;
        if (to.changes() == 0 &&
            !to.executeUpdate(
                QStringLiteral("insert into sqlite_sequence (name,seq) values (?,?)"), table, last))
            return false;
    }
    return true;
}

/// What lost its folder or its photograph would never be shown, nor found again by a scan.
bool removeStrays(FMDatabase& db) {
    QStringList statements{
        QStringLiteral("delete from Folder where AliasId not in (select Id from FolderAlias)"),
        QStringLiteral("delete from ImageFile where FolderId not in (select Id from Folder)")};
    for (const CatalogueTable& table : CatalogueSchema::filesTables()) {
        if (CatalogueSchema::metadataColumnsOfTable(table.name).isEmpty()) continue;
        statements.append(
            QStringLiteral("delete from %1 where FileId not in (select Id from ImageFile)")
                .arg(table.name));
    }
    return std::ranges::all_of(
        statements, [&db](const QString& statement) { return db.executeUpdate(statement); });
}

/// The thumbnails stay those of this catalogue.
bool copyIdentity(FMDatabase& from, FMDatabase& to) {
    FMResultSet identity = from.executeQuery(QStringLiteral("pragma user_version"));
    return identity.next() && to.executeUpdate(QStringLiteral("pragma user_version = %1")
                                                   .arg(identity.longLongIntForColumnIndex(0)));
}

std::optional<qint64> copyAll(FMDatabase& from, FMDatabase& to) {
    if (!PBCatalogue(to).checkTables_FilesDb() || !to.beginTransaction()) return {};
    for (const CatalogueTable& table : CatalogueSchema::filesTables())
        if (!TableCopy(from, to, table).run()) return {};
    if (!copyCounters(from, to) || !copyIdentity(from, to) || !removeStrays(to)) return {};
    FMResultSet count = to.executeQuery(QStringLiteral("select count(*) from ImageFile"));
    if (!count.next()) return {};
    const qint64 photographs = count.longLongIntForColumnIndex(0);
    count.close();
    if (!to.commit()) return {};
    return photographs;
}

} // namespace

std::optional<qint64> CatalogueRepair::copyReadable(const QString& damaged, const QString& copy) {
    std::optional<qint64> photographs;
    {
        FMDatabase from(damaged);
        FMDatabase to(copy);
        if (from.open() && to.open()) photographs = copyAll(from, to);
    }
    if (!photographs) {
        QFile::remove(copy);
        QFile::remove(copy + QStringLiteral("-journal"));
    }
    return photographs;
}
