#pragma once

#include "scan/PBScanAttachOperation.h"
#include "scan/PBScanDictionary.h"

#include <vector>

/// Brings the work tree in step with photographs whose rows went with their files to other folders,
/// or out of the catalogue: what is in the tree goes, and what the folder on show has now comes in.
class MovedPhotographsOperation final : public PBScanAttachOperation {
public:
    /// The catalogue has it already.
    MovedPhotographsOperation(PBScanDictionaryRef dictionary, std::vector<qint64> fileIds)
        : _dictionary(std::move(dictionary)), _fileIds(std::move(fileIds)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;

private:
    const PBScanDictionaryRef _dictionary;
    const std::vector<qint64> _fileIds;
};
