#pragma once

#include "platform/values/PBValue.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <span>
#include <vector>

class FMDatabase;

namespace group {

/// Reads columns of the catalogue's metadata tables by file id: one kept statement for all tables,
/// and, when it is told which images come next, one run of it for many images at once. The results
/// are those of a query for each image and table. Belongs to the thread of the connection.
class MetadataRows {
public:
    struct Table {
        QString name;
        QStringList columns;
    };

    explicit MetadataRows(std::vector<Table> tables);

    /// The images that will be asked for, in about that order. Their rows may be read ahead of
    /// time; leaving some out is no harm.
    void willRead(std::vector<qint64> fileIds);

    /// Moves to an image. A table that can't be read counts as one without a row.
    void read(qint64 fileId, FMDatabase& database);
    /// The columns of one table for the image that was read; empty if it has no row there. Valid
    /// until the next `read`.
    [[nodiscard]] std::span<const PBValue> row(std::size_t table) const;

private:
    /// Where a table's values begin among those of an image.
    struct Place {
        Table table;
        std::size_t first = 0;
    };

    [[nodiscard]] QString joinedQuery(std::size_t imageCount) const;
    /// Moves to the image if its row was read ahead.
    [[nodiscard]] bool findInBatch(qint64 fileId);
    /// The images of `_upcoming` from this one on, as many as a batch takes; the image alone if it
    /// is none of them.
    [[nodiscard]] std::span<const qint64> nextBatch(const qint64& fileId);
    bool readBatch(std::span<const qint64> fileIds, FMDatabase& database);
    void readTableByTable(qint64 fileId, FMDatabase& database);

    std::vector<Place> _places;
    std::size_t _stride = 0; // values of one image
    QString _queryForOne;
    QString _queryForBatch;

    std::vector<qint64> _upcoming;
    std::size_t _next = 0;                 // behind the images of `_upcoming` read so far
    QHash<qint64, std::size_t> _positions; // in `_upcoming`; made when images come out of order

    std::vector<qint64> _batch;
    std::vector<PBValue> _values; // of the batch's images, one after the other
    std::vector<bool> _hasRow;    // for each image of the batch and each table
    std::size_t _current = 0;     // index in `_batch`
};

} // namespace group
