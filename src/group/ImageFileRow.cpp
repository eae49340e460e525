#include "group/ImageFileRow.h"

#include "FMDB/FMResultSet.h"
#include "group/ItemOrder.h"

namespace group {

namespace {

/// In the order in which fromResultSet reads them.
constexpr QStringView columnNames =
    u"Id,FolderId,FileName,FileSize,ModificationDate,FileFlag,FileStars,Tag,RotateAngle,"
    u"ColorModel,ImageDPI,ImageWidth,ImageHeight,UTIType";

QStringView orderColumn(int sortType) {
    switch (sortType) {
    case SortFileName:
        return u"FileName";
    case SortFileSize:
        return u"FileSize";
    case SortModificationDate:
    case SortDateTaken:
        return u"ModificationDate";
    case SortKind:
        return u"UTIType";
    case SortPixelArea:
        return u"ImageWidth";
    default:
        return {};
    }
}

/// The numbers of SQLite are signed; a size below zero is none.
quint64 unsignedSize(qint64 size) {
    return size > 0 ? static_cast<quint64>(size) : 0;
}

} // namespace

ImageFileRow ImageFileRow::fromResultSet(const FMResultSet& row) {
    return {
        .id = row.longLongIntForColumnIndex(0),
        .folderId = row.longLongIntForColumnIndex(1),
        .fileName = row.stringForColumnIndex(2),
        .fileSize = unsignedSize(row.longLongIntForColumnIndex(3)),
        .modificationDate = row.doubleForColumnIndex(4),
        .fileFlag = row.objectForColumnIndex(5),
        .fileStars = row.objectForColumnIndex(6),
        .tag = row.objectForColumnIndex(7),
        .rotateAngle = row.objectForColumnIndex(8),
        .colorModel = row.objectForColumnIndex(9),
        .imageDPI = row.objectForColumnIndex(10),
        .imageWidth = row.objectForColumnIndex(11),
        .imageHeight = row.objectForColumnIndex(12),
        .utiType = row.objectForColumnIndex(13),
    };
}

ImageFileRow ImageFileRow::fromColumns(const PBDictionary& columns) {
    const auto column = [&](const QString& name) { return valueForKey(columns, name); };
    return {
        .id = column(QStringLiteral("Id")).toInteger(),
        .folderId = column(QStringLiteral("FolderId")).toInteger(),
        .fileName = column(QStringLiteral("FileName")).toText(),
        .fileSize = unsignedSize(column(QStringLiteral("FileSize")).toInteger()),
        .modificationDate = column(QStringLiteral("ModificationDate")).toDouble(),
        .fileFlag = column(QStringLiteral("FileFlag")),
        .fileStars = column(QStringLiteral("FileStars")),
        .tag = column(QStringLiteral("Tag")),
        .rotateAngle = column(QStringLiteral("RotateAngle")),
        .colorModel = column(QStringLiteral("ColorModel")),
        .imageDPI = column(QStringLiteral("ImageDPI")),
        .imageWidth = column(QStringLiteral("ImageWidth")),
        .imageHeight = column(QStringLiteral("ImageHeight")),
        .utiType = column(QStringLiteral("UTIType")),
    };
}

QString ImageFileRow::queryForIds() {
    return QStringLiteral(
               "select %1 from ImageFile where Id in (select value from json_each(?)) order by Id")
        .arg(columnNames);
}

QString ImageFileRow::queryForFolder(int sortType, bool descendingSort, quint64 filter) {
    QString sql = QStringLiteral("select %1 from ImageFile where FolderId = ?").arg(columnNames);
    if ((filter & FilterFlagged) != 0) sql += QStringLiteral(" and FileFlag = 1");
    if ((filter & FilterRated) != 0) sql += QStringLiteral(" and FileStars > 0");
    if (const QStringView order = orderColumn(sortType); !order.isEmpty()) {
        sql += QStringLiteral(" order by %1 %2")
                   .arg(order, descendingSort ? QStringView(u"desc") : QStringView(u"asc"));
    }
    return sql;
}

} // namespace group
