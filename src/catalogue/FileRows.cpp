#include "catalogue/FileRows.h"

#include "FMDB/FMDatabase.h"

#include <algorithm>

namespace {

QString
queryFor(std::size_t count, const QString& table, const QString& key, const QStringList& columns) {
    QStringList names{QStringLiteral("t.") + key};
    for (const QString& column : columns)
        names.append(QStringLiteral("t.") + column);
    const QStringList ids(static_cast<qsizetype>(count), QStringLiteral("(?)"));
    // A left join answers the photographs in the order in which they are listed.
    return QStringLiteral("with Photograph(Id) as (values %1) select %2 from Photograph "
                          "left join %3 t on t.%4 = Photograph.Id")
        .arg(ids.join(u','), names.join(u','), table, key);
}

} // namespace

FileRows::FileRows(const QString& table, const QString& key, const QStringList& columns)
    : _queryForOne(queryFor(1, table, key, columns)),
      _queryForMany(queryFor(most, table, key, columns)) {}

std::optional<std::vector<PBArray>>
FileRows::read(FMDatabase& database, std::span<const qint64> fileIds) const {
    std::vector<PBArray> read;
    const bool isOne = fileIds.size() == 1;
    PBArray ids(isOne ? 1 : most, PBValue(PBNull()));
    std::ranges::copy(fileIds.first(std::min(fileIds.size(), most)), ids.begin());
    FMResultSet rows =
        database.executeQueryWithArgumentsInArray(isOne ? _queryForOne : _queryForMany, ids);
    while (read.size() < fileIds.size()) {
        if (!rows.next()) return std::nullopt;
        PBArray& row = read.emplace_back();
        if (rows.columnIndexIsNull(0)) continue;
        const int count = rows.columnCount();
        row.reserve(static_cast<std::size_t>(count - 1));
        for (int column = 1; column < count; ++column)
            row.push_back(rows.objectForColumnIndex(column));
    }
    return read;
}
