#include "fileactions/marks/ShownPhotographs.h"

#include "group/GroupTypes.h"
#include "group/ItemLookup.h"
#include "group/ItemOrder.h"
#include "platform/tasks/MainThread.h"
#include "scan/PBUpdateFileItemOperation.h"

#include <algorithm>
#include <unordered_map>

namespace fileactions {

namespace {

void bringInStep(PBImageFileItem& item, const marks::ShownRow& row, unsigned fields) {
    if ((fields & ShownStars) != 0) item.setStar(static_cast<quint64>(row.stars));
    if ((fields & ShownFlag) != 0) item.setFlagged(row.flag);
    if ((fields & ShownRotation) != 0) item.setRotateAngle(row.rotateAngle);
    // Each name that was given lives as long as the item.
    if ((fields & ShownName) != 0 && item.fileName() != row.fileName)
        item.setFileName(row.fileName);
}

} // namespace

bool ShownPhotographs::canMove(unsigned fields, const ScanBrowsing& browsing) {
    const auto groupsBy = [&](int type) {
        const auto& chain = browsing.groupTypeArray;
        return chain && std::ranges::find(*chain, type) != chain->end();
    };
    const bool isStars = (fields & ShownStars) != 0;
    const bool isFlag = (fields & ShownFlag) != 0;
    const bool isName = (fields & ShownName) != 0;
    return (isStars &&
            (groupsBy(group::StarRating) || (browsing.filter & group::FilterRated) != 0)) ||
           (isFlag && (groupsBy(group::Flag) || (browsing.filter & group::FilterFlagged) != 0)) ||
           ((fields & ShownTags) != 0 && groupsBy(group::Tags)) ||
           (isName &&
            (browsing.sortType == group::SortFileName || !browsing.searchString.isEmpty()));
}

bool ShownPhotographs::show(const std::vector<marks::ShownRow>& rows, unsigned fields) {
    platform::assertMainThread();
    const auto& work = _environment.source.groupItemArray_work();
    if (rows.empty() || !work) return false;
    std::unordered_map<qint64, const marks::ShownRow*> byId;
    std::unordered_set<qint64> wanted;
    PBUpdateFileItemOperation::Edited edited;
    for (const marks::ShownRow& row : rows) {
        byId.emplace(row.fileId, &row);
        wanted.insert(row.fileId);
        edited.fileIds.push_back(row.fileId);
    }
    const ScanBrowsing browsing = _environment.browsing();
    const group::SearchText search(browsing.searchString);
    edited.items = group::takeItemsWithIds(_environment.source.groupItemArray(), wanted);
    std::unordered_set<qint64> leaving;
    for (const auto& item : edited.items) {
        bringInStep(*item, *byId.at(item->fileId()), fields);
        if (item->isMatchedForSearchString(search, browsing.filter)) continue;
        leaving.insert(item->fileId());
        // It would count among those that are selected.
        item->setIsSelected(false);
    }
    edited.moves = canMove(fields, browsing);
    edited.areRenamed = fields == ShownName;
    edited.readAgain = _environment.readAgain;
    // Before the views look: a copy of the work tree as it was would bring them back.
    _environment.factory.attach(std::make_shared<PBUpdateFileItemOperation>(
        _environment.factory.makeDictionary(nullptr, {}, work, browsing), std::move(edited)));
    if (leaving.empty()) return false;
    _environment.source.removeItemsWithIds(std::move(leaving));
    return true;
}

} // namespace fileactions
