#pragma once

#include "group/PBGroupItem.h"
#include "scan/PBScanAttachOperation.h"
#include "scan/PBScanDictionary.h"

#include <functional>
#include <unordered_set>
#include <vector>

/// Brings the work tree in step with photographs that were edited: those that are in it move to
/// their new place, or out of it; one that search text or filter had left out, and now lets in,
/// comes in; one that a running pass has yet to come to is read again by it. However the tree and
/// the display differ at that moment, no photograph is in it twice or lost.
class PBUpdateFileItemOperation final : public PBScanAttachOperation {
public:
    struct Edited {
        /// All of them. The catalogue has the edit already.
        std::vector<qint64> fileIds;
        /// The items that have it already; kept alive here.
        PBImageFileList items;
        /// Their places in the tree may be others.
        bool moves = true;
        /// Their files have other names: a look at the disk may have missed them, and taken them
        /// out of the tree.
        bool areRenamed = false;
        /// Called with those that are in the tree as other items: these have it not. On the scan
        /// thread.
        std::function<void(std::vector<qint64> fileIds)> readAgain;
    };

    PBUpdateFileItemOperation(PBScanDictionaryRef dictionary, Edited edited)
        : _dictionary(std::move(dictionary)), _edited(std::move(edited)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;
    [[nodiscard]] bool publishesWhenLast() const override { return _edited.moves; }

private:
    void tellOthers(const PBImageFileList& inTree) const;
    [[nodiscard]] bool takeIn(const std::unordered_set<qint64>& fileIds) const;

    const PBScanDictionaryRef _dictionary;
    const Edited _edited;
};
