#include "group/FileItemOfRow.h"

#include "group/PBImageFileItem.h"

#include <algorithm>

std::shared_ptr<PBImageFileItem> group::fileItemOfRow(const ImageFileRow& row) {
    auto item = PBImageFileItem::imageFileItemWithId(
        row.id, row.folderId, row.fileName, row.fileSize, row.modificationDate);
    item->setStar(static_cast<quint64>(std::max<qint64>(row.fileStars.toInteger(), 0)));
    item->setFlagged(row.fileFlag.toInteger() != 0);
    item->setImageSize({row.imageWidth.toDouble(), row.imageHeight.toDouble()});
    item->setRotateAngle(row.rotateAngle.toDouble());
    return item;
}
