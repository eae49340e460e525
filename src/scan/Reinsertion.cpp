#include "scan/Reinsertion.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"
#include "group/FolderPaths.h"
#include "group/GroupTypes.h"
#include "library/PBAliasManager.h"
#include "scan/ScanServices.h"

#include <algorithm>
#include <unordered_map>

namespace {

/// What a grouping needs of the images' rows, one for each. Without a row, or where it can't be
/// read, an image goes to those without values.
std::vector<group::ImageFileRow>
rowsOf(const PBImageFileList& items, bool withColumns, FMDatabase& db) {
    std::vector<group::ImageFileRow> rows(items.size());
    std::unordered_map<qint64, std::size_t> places;
    std::vector<qint64> ids;
    for (std::size_t index = 0; index < items.size(); ++index) {
        rows[index].id = items[index]->fileId();
        places.emplace(rows[index].id, index);
        ids.push_back(rows[index].id);
    }
    if (!withColumns) return rows;
    FMResultSet cursor = db.executeQuery(
        QStringLiteral("select Id,UTIType,ImageDPI,ColorModel,Tag from ImageFile "
                       "where Id in (select value from json_each(?))"),
        catalogue::idsText(ids));
    while (cursor.next()) {
        group::ImageFileRow& row = rows[places.at(cursor.longLongIntForColumnIndex(0))];
        row.utiType = cursor.objectForColumnIndex(1);
        row.imageDPI = cursor.objectForColumnIndex(2);
        row.colorModel = cursor.objectForColumnIndex(3);
        row.tag = cursor.objectForColumnIndex(4);
    }
    return rows;
}

} // namespace

void reinsertItems(const PBScanDictionary& dictionary, const PBImageFileList& items) {
    const group::GroupingParameters parameters = dictionary.groupingParameters();
    const auto groupsBy = [&chain = parameters.groupTypeArray](int type) {
        return std::ranges::find(chain, type) != chain.end();
    };
    // Their positions were looked up when they first came in.
    group::GroupingStep step(
        parameters, *dictionary.Database,
        groupsBy(group::Place) ? dictionary.services->places : nullptr);
    const bool needsFolder = groupsBy(group::Folder);
    const group::CatalogueFolderPaths paths(
        *dictionary.Database, dictionary.services->aliasManager);
    group::FolderPathCache cache;
    std::vector<group::ImageFileRow> rows = rowsOf(items, step.needsRow(), *dictionary.Database);
    step.willInsert(rows);
    for (std::size_t index = 0; index < items.size(); ++index) {
        const QString folder = needsFolder ? items[index]->folderPath(paths, cache) : QString();
        step.reinsert(
            items[index], std::move(rows[index]),
            folder.isEmpty() ? PBValue(PBNull{}) : PBValue(folder));
    }
}
