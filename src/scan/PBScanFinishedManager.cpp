#include "scan/PBScanFinishedManager.h"

#include "core/Paths.h"

#include <algorithm>

int PBScanFinishedObject::compare(const PBScanFinishedObject& other) const {
    if (_aliasObject != other._aliasObject) return -2;
    if (_relativePath == other._relativePath) return 0;
    if (!_relativePath) return 1;
    if (!other._relativePath) return -1;
    return PBUtilities::comparePath(*_relativePath, *other._relativePath);
}

std::vector<PBScanFinishedObject> PBScanFinishedManager::scanFinishedArray() const {
    const platform::Lock lock(_lock);
    return _scanFinishedArray;
}

void PBScanFinishedManager::scanFinished(const PBScanFinishedObject& folder) {
    const platform::Lock lock(_lock);
    const bool isCovered = std::ranges::any_of(_scanFinishedArray, [&](const auto& entry) {
        const int place = folder.compare(entry);
        return place == 0 || place == -1;
    });
    if (isCovered) return;
    std::erase_if(
        _scanFinishedArray, [&](const auto& entry) { return folder.compare(entry) == 1; });
    _scanFinishedArray.push_back(folder);
}
