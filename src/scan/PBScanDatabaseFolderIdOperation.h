#pragma once

#include "platform/tasks/Operation.h"
#include "scan/PBScanDictionary.h"

#include <memory>

/// The catalogue's side of a scan for the folders that were held back until opened files were
/// shown. On the scan queue.
class PBScanDatabaseFolderIdOperation final : public platform::Operation {
public:
    [[nodiscard]] static std::shared_ptr<PBScanDatabaseFolderIdOperation>
    scanDatabaseFolderIdOperationWithDictionary(PBScanDictionaryRef dictionary);
    explicit PBScanDatabaseFolderIdOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}

protected:
    void main() override;

private:
    const PBScanDictionaryRef _dictionary;
};
