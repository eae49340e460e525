#include "scan/PBUpdateFileItemOperation.h"

#include "group/ItemLookup.h"
#include "scan/Reinsertion.h"
#include "scan/RowsTakenIn.h"
#include "scan/ScanSteps.h"

void PBUpdateFileItemOperation::runWithOwnerNSOperation(
    platform::Operation& /*owner*/, bool isLast) {
    PBGroupItemArray& tree = *_dictionary->WorkGroupItemArray;
    std::unordered_set<qint64> wanted(_edited.fileIds.begin(), _edited.fileIds.end());
    const PBImageFileList inTree = _edited.moves ? group::removeItemsWithIds(tree, wanted)
                                                 : group::takeItemsWithIds(tree, wanted);
    // All of them, also after a cancellation: the tree may stay on show.
    if (_edited.moves) reinsertItems(*_dictionary, inTree);
    tellOthers(inTree);
    _dictionary->EditedMeanwhile->insert(wanted.begin(), wanted.end());
    const bool hasTakenIn = takeIn(wanted);
    if (isLast && (_edited.moves || hasTakenIn)) publishWorkTree(*_dictionary, true);
}

void PBUpdateFileItemOperation::tellOthers(const PBImageFileList& inTree) const {
    const std::unordered_set<std::shared_ptr<PBImageFileItem>> known(
        _edited.items.begin(), _edited.items.end());
    std::vector<qint64> others;
    for (const auto& item : inTree)
        if (!known.contains(item)) others.push_back(item->fileId());
    if (!others.empty()) _edited.readAgain(std::move(others));
}

bool PBUpdateFileItemOperation::takeIn(const std::unordered_set<qint64>& fileIds) const {
    // Without a filter and a search whatever is not in the tree is yet to come, or does not belong.
    const bool mayBeLeftOut =
        _edited.areRenamed || _dictionary->Filter != 0 || !_dictionary->SearchString.isEmpty();
    return !fileIds.empty() && mayBeLeftOut && takeInRows(*_dictionary, fileIds);
}
