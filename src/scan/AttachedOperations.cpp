#include "scan/AttachedOperations.h"

#include "group/GroupPublication.h"
#include "group/UnknownPlaces.h"
#include "scan/FileItemCheck.h"
#include "scan/PBScanFolderTask.h"
#include "scan/Reinsertion.h"
#include "scan/ScanServices.h"
#include "scan/ScanSteps.h"
#include "scan/marks/MarksRestorer.h"

namespace {

/// Images found to be gone between two publications.
constexpr std::size_t goneBetweenPublications = 100;

void checkFileItemExist(
    const PBScanDictionary& dictionary, FileItemCheck& check, platform::Operation& owner,
    const std::function<void()>& beforeEach) {
    PBGroupItemArray& tree = *dictionary.WorkGroupItemArray;
    std::size_t published = 0;
    for (std::size_t index = 0; index < tree.size() && !owner.isCancelled();) {
        if (beforeEach) {
            beforeEach(); // may change the tree
            if (index >= tree.size()) break;
        }
        tree[index]->checkFileItemExist([&](auto& item) { return check.isGone(item); });
        if (tree[index]->isEmpty()) {
            tree.erase(tree.begin() + static_cast<std::ptrdiff_t>(index));
        } else {
            ++index;
        }
        if (check.goneCount() - published > goneBetweenPublications) {
            publishWorkTree(dictionary);
            published = check.goneCount();
        }
    }
    if (owner.isCancelled()) return;
    if (check.goneCount() > published || check.markedCount() > 0) publishWorkTree(dictionary);
    check.staleRows().remove(dictionary, owner);
}

} // namespace

void PBRemoveFileItemOperation::runWithOwnerNSOperation(platform::Operation& owner, bool isLast) {
    group::removeFileItemInGroupArray(
        *_dictionary->WorkGroupItemArray, _groupItemArray, [&] { return owner.isCancelled(); });
    // Also after a cancellation: a stale tree is known by its identity.
    if (isLast) publishWorkTree(*_dictionary);
}

void PBRegroupPlacesOperation::runWithOwnerNSOperation(
    platform::Operation& /*owner*/, bool /*isLast*/) {
    PBGroupItemArray& tree = *_dictionary->WorkGroupItemArray;
    const PBImageFileList waiting = group::takeItemsOfUnknownPlaces(tree);
    if (waiting.empty()) return;
    // All of them, also after a cancellation: the tree may stay on show.
    reinsertItems(*_dictionary, waiting);
    PBGroupItem::removeEmptyGroups(tree);
    publishWorkTree(*_dictionary);
}

void PBRestoreMarksOperation::runWithOwnerNSOperation(platform::Operation& owner, bool isLast) {
    MarksRestorer* marks = _dictionary->services->marks;
    // A scan that is running has not seen all yet, and decides at its own end.
    const bool isAlone = dynamic_cast<PBCheckScanAttachOperationOperation*>(&owner) != nullptr;
    if (marks) {
        marks->lookAgain();
        marks->restoreRest(owner, isAlone, {});
    }
    // Those of the same drain that came before leave it to the last.
    if (isLast) publishWorkTree(*_dictionary);
}

void PBScanFolderAttachOperation::runWithOwnerNSOperation(
    platform::Operation& owner, bool /*isLast*/) {
    const auto task = PBScanFolderTask::scanFolderTaskWithDictionary(_dictionary);
    task->setIgnoreCheckAttachOperation(true);
    RewrittenFiles& rewritten = *_dictionary->services->rewritten;
    rewritten.beginFolder();
    task->runWithOperation(owner);
    if (!rewritten.endFolder()) return;
    rewritten.clear();
    publishWorkTree(*_dictionary);
}

void PBEndRewritingOperation::runWithOwnerNSOperation(platform::Operation& /*owner*/, bool isLast) {
    RewrittenFiles& rewritten = *_dictionary->services->rewritten;
    if (!rewritten.mayEnd()) return;
    const bool isAnyMissing = rewritten.clear();
    if (isAnyMissing || isLast) publishWorkTree(*_dictionary);
}

void PBCheckFileItemExistAttachOperation::runWithOwnerNSOperation(
    platform::Operation& owner, bool /*isLast*/) {
    FileItemCheck check(*_dictionary, _rewrittenFiles, _onlyRewritten);
    checkFileItemExist(*_dictionary, check, owner, {});
}

bool PBCheckFileItemExistAttachOperation::takesOver(const PBScanAttachOperation& later) {
    const auto* other = dynamic_cast<const PBCheckFileItemExistAttachOperation*>(&later);
    if (!other || other->_dictionary->WorkGroupItemArray != _dictionary->WorkGroupItemArray)
        return false;
    _rewrittenFiles += other->_rewrittenFiles;
    _onlyRewritten = _onlyRewritten && other->_onlyRewritten;
    return true;
}

void PBCheckFileItemExistOperation::main() {
    FileItemCheck check(*_dictionary, {});
    checkFileItemExist(*_dictionary, check, *this, [this] {
        checkAttachedOperation(_dictionary->AttachOperationArray.get(), *this);
    });
}
