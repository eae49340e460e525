#include "catalogue/CatalogueCheck.h"

#include "FMDB/FMDatabase.h"

#include <QStringList>

#include <limits>

namespace {

constexpr int rowsOfStep = 500;

QStringList tablesOf(FMDatabase& db) {
    QStringList names;
    FMResultSet found =
        db.executeQuery(QStringLiteral("select name from sqlite_master where type = 'table'"));
    while (found.next())
        names.append(found.stringForColumnIndex(0));
    return names;
}

/// The values are asked for, too: long ones lie on pages of their own.
QString
damageOfRows(FMDatabase& db, const QString& table, const std::function<bool()>& shouldStop) {
    const QString sql = QStringLiteral("select rowid,* from \"%1\" where rowid > ? order by rowid "
                                       "limit %2")
                            .arg(table)
                            .arg(rowsOfStep);
    qint64 last = std::numeric_limits<qint64>::min();
    int count = rowsOfStep;
    while (count == rowsOfStep && !shouldStop()) {
        count = 0;
        FMResultSet rows = db.executeQuery(sql, last);
        const int columns = rows.columnCount();
        while (rows.next()) {
            last = rows.longLongIntForColumnIndex(0);
            for (int column = 1; column < columns; ++column)
                static_cast<void>(rows.dataForColumnIndex(column));
            ++count;
        }
        if (db.isFileDamaged()) return db.lastErrorMessage();
    }
    return {};
}

QString damageOfTable(FMDatabase& db, const QString& table) {
    FMResultSet lines = db.executeQuery(QStringLiteral("pragma integrity_check('%1')").arg(table));
    const QString first = lines.next() ? lines.stringForColumnIndex(0) : QString();
    lines.close();
    if (db.isFileDamaged()) return db.lastErrorMessage();
    return first == u"ok" ? QString() : first;
}

} // namespace

QString
CatalogueCheck::firstDamage(FMDatabase& db, Depth depth, const std::function<bool()>& shouldStop) {
    const QStringList tables = tablesOf(db);
    if (db.isFileDamaged()) return db.lastErrorMessage();
    for (const QString& table : tables) {
        if (shouldStop()) break;
        const QString damage =
            depth == Depth::Rows ? damageOfRows(db, table, shouldStop) : damageOfTable(db, table);
        if (!damage.isEmpty() && !shouldStop()) return damage;
    }
    return {};
}
