#pragma once

#include "scan/PBScanDictionary.h"

#include <cstdint>
#include <memory>

/// Counts what is still to be done for one folder of a disk scan: its own listing and its
/// sub-folders. At zero the folder is finished, and its parent has one less; at zero of the root
/// the scan is. On the scan thread, without a lock.
class PBScanFinishedTrigger {
public:
    /// The root has no parent.
    [[nodiscard]] static std::shared_ptr<PBScanFinishedTrigger> scanFinishedTriggerWithParent(
        std::shared_ptr<PBScanFinishedTrigger> parent, PBScanFinishedObject scanFinishedObject);
    PBScanFinishedTrigger(
        std::shared_ptr<PBScanFinishedTrigger> parent, PBScanFinishedObject scanFinishedObject);

    /// Of the root only.
    void setScanDictionary(PBScanDictionaryRef dictionary) {
        _scanDictionary = std::move(dictionary);
    }
    void setManager(PBScanFinishedManager& manager) { _manager = &manager; }

    /// The folder could not be looked at as a whole: neither it nor those above it count as
    /// finished. The scan ends all the same.
    void setIncomplete() { _isIncomplete = true; }

    void increaseStatusCount() { ++_statusCount; }
    void decreaseStatusCountWithOperation(platform::Operation& operation);

private:
    void fireTrigger();
    /// Stores and shows the rest of the batch, and reports the end of the scan.
    void fireAllFinishedWithOperation(platform::Operation& operation);

    const std::shared_ptr<PBScanFinishedTrigger> _parent;
    const PBScanFinishedObject _scanFinishedObject;
    PBScanFinishedManager* _manager = nullptr;
    PBScanDictionaryRef _scanDictionary;
    std::uint64_t _statusCount = 0;
    bool _isIncomplete = false;
};
