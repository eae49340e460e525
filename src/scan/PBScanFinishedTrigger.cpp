#include "scan/PBScanFinishedTrigger.h"

#include "scan/FilePropertyBatch.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

std::shared_ptr<PBScanFinishedTrigger> PBScanFinishedTrigger::scanFinishedTriggerWithParent(
    std::shared_ptr<PBScanFinishedTrigger> parent, PBScanFinishedObject scanFinishedObject) {
    return std::make_shared<PBScanFinishedTrigger>(
        std::move(parent), std::move(scanFinishedObject));
}

PBScanFinishedTrigger::PBScanFinishedTrigger(
    std::shared_ptr<PBScanFinishedTrigger> parent, PBScanFinishedObject scanFinishedObject)
    : _parent(std::move(parent)), _scanFinishedObject(std::move(scanFinishedObject)) {}

void PBScanFinishedTrigger::decreaseStatusCountWithOperation(platform::Operation& operation) {
    if (--_statusCount != 0) return;
    fireTrigger();
    if (_parent) {
        _parent->decreaseStatusCountWithOperation(operation);
    } else {
        fireAllFinishedWithOperation(operation);
    }
}

void PBScanFinishedTrigger::fireTrigger() {
    if (_isIncomplete) {
        if (_parent) _parent->setIncomplete();
    } else if (_manager) {
        _manager->scanFinished(_scanFinishedObject);
    }
}

void PBScanFinishedTrigger::fireAllFinishedWithOperation(platform::Operation& operation) {
    if (!_scanDictionary) return;
    const PBScanDictionary& dictionary = *_scanDictionary;
    FilePropertyBatch batch(_scanDictionary, operation);
    if (!batch.isEmpty()) {
        batch.flush(
            [&] { checkAttachedOperation(dictionary.AttachOperationArray.get(), operation); });
    }
    if (dictionary.services->marks && !dictionary.IsOpenFilesScanFolder && !dictionary.IsAttached) {
        dictionary.services->marks->restoreRest(operation, !_isIncomplete, [&] {
            checkAttachedOperation(dictionary.AttachOperationArray.get(), operation);
        });
    }
    // Within a scan that is running, the end of what was watched is not that of the scan.
    const bool isWithinScan =
        dictionary.IsAttached &&
        dynamic_cast<PBCheckScanAttachOperationOperation*>(&operation) == nullptr;
    if (!dictionary.IsOpenFilesScanFolder && !isWithinScan && !operation.isCancelled()) {
        ScanFigures& figures = dictionary.services->figures;
        figures.mark(figures.scanFinished);
        dictionary.services->scanFinished(dictionary.WorkGroupItemArray);
    }
}
