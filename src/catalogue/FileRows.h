#pragma once

#include "platform/values/PBValue.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <vector>

class FMDatabase;

/// Reads columns of one table for many photographs, some at a time, so that whoever reads ten
/// thousand of them can stop in between: no cursor stays open. Belongs to the thread of the
/// connection.
class FileRows {
public:
    /// So many photographs are read at once, at most.
    static constexpr std::size_t most = 64;

    /// `key` is the column with the file's id: "Id" of `ImageFile`, "FileId" of the metadata
    /// tables.
    FileRows(const QString& table, const QString& key, const QStringList& columns);

    /// For each of the photographs, in their order, the values of the columns, the null marker for
    /// NULL; empty for one without a row. Nothing where the table could not be read.
    [[nodiscard]] std::optional<std::vector<PBArray>>
    read(FMDatabase& database, std::span<const qint64> fileIds) const;

private:
    QString _queryForOne;
    QString _queryForMany;
};
