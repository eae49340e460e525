#include "scan/MovedPhotographsOperation.h"

#include "group/ItemLookup.h"
#include "scan/RowsTakenIn.h"
#include "scan/ScanSteps.h"

#include <unordered_set>

void MovedPhotographsOperation::runWithOwnerNSOperation(
    platform::Operation& /*owner*/, bool isLast) {
    const std::unordered_set<qint64> moved(_fileIds.begin(), _fileIds.end());
    std::unordered_set<qint64> wanted = moved;
    const PBImageFileList before =
        group::removeItemsWithIds(*_dictionary->WorkGroupItemArray, wanted);
    // A running pass may hold their former rows.
    _dictionary->EditedMeanwhile->insert(moved.begin(), moved.end());
    const bool hasTakenIn = takeInRows(*_dictionary, moved);
    if (isLast && (hasTakenIn || !before.empty())) publishWorkTree(*_dictionary, true);
}
