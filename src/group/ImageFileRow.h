#pragma once

#include "platform/values/PBValue.h"

#include <QString>

class FMResultSet;

namespace group {

/// The columns of one image's row in the catalogue that the grouping needs. A column is the null
/// marker where it is NULL, and absent where it was not asked for.
struct ImageFileRow {
    qint64 id = 0;
    qint64 folderId = 0;
    QString fileName;
    quint64 fileSize = 0;        ///< bytes
    double modificationDate = 0; ///< seconds since 1970
    PBValue fileFlag;
    PBValue fileStars;
    PBValue tag;
    PBValue rotateAngle;
    PBValue colorModel;
    PBValue imageDPI;
    PBValue imageWidth;
    PBValue imageHeight;
    PBValue utiType;

    /// The row that a cursor over `queryForFolder` stands on.
    [[nodiscard]] static ImageFileRow fromResultSet(const FMResultSet& row);
    /// A row made of the columns under their names, as they are about to go into the catalogue.
    [[nodiscard]] static ImageFileRow fromColumns(const PBDictionary& columns);

    /// The statement for rows whose ids are its argument, as a JSON array.
    [[nodiscard]] static QString queryForIds();
    /// The statement for the rows of one folder, whose id is its argument. They come in the order
    /// of the sort type, as far as a column has it, so that most items go to the end of their
    /// groups; the filter leaves out what would not be shown.
    [[nodiscard]] static QString queryForFolder(int sortType, bool descendingSort, quint64 filter);
};

} // namespace group
