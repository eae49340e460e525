#include "scan/PBScanAttachOperation.h"

#include "platform/tasks/OperationQueue.h"

#include <algorithm>

void PBAttachOperationArray::add(
    std::shared_ptr<PBScanAttachOperation> operation, const std::function<void()>& whileLocked) {
    const platform::Lock lock(_monitor);
    if (whileLocked) whileLocked();
    const bool isTakenOver = std::ranges::any_of(
        _operations, [&](const auto& waiting) { return waiting->takesOver(*operation); });
    if (!isTakenOver) _operations.push_back(std::move(operation));
}

std::vector<std::shared_ptr<PBScanAttachOperation>> PBAttachOperationArray::takeAll() {
    const platform::Lock lock(_monitor);
    _takenCount += _operations.size();
    return std::exchange(_operations, {});
}

void PBAttachOperationArray::whileRowsChange(const std::function<void()>& change) {
    ++_changing;
    change();
    // In this order: at no moment what was looked up meanwhile counts as true.
    ++_takenCount;
    --_changing;
}

void checkAttachedOperation(PBAttachOperationArray* array, platform::Operation& owner) {
    if (!array) return;
    const auto operations = array->takeAll();
    const auto last =
        std::ranges::find_if(operations.rbegin(), operations.rend(), [](const auto& operation) {
            return operation->publishesWhenLast();
        });
    for (const auto& operation : operations) {
        if (owner.isCancelled()) return;
        const bool isLast = last == operations.rend() || operation == *last;
        operation->runWithOwnerNSOperation(owner, isLast);
    }
}

std::shared_ptr<PBCheckScanAttachOperationOperation>
PBCheckScanAttachOperationOperation::checkScanAttachOperation(
    std::shared_ptr<PBAttachOperationArray> array) {
    return std::make_shared<PBCheckScanAttachOperationOperation>(std::move(array));
}

void attachScanOperation(
    const std::shared_ptr<PBAttachOperationArray>& array, platform::OperationQueue& scanQueue,
    std::shared_ptr<PBScanAttachOperation> operation,
    const std::function<void()>& cancelDelayedPublications) {
    const bool publishes = operation->publishesWhenLast();
    array->add(
        std::move(operation), publishes ? cancelDelayedPublications : std::function<void()>());
    scanQueue.addOperation(PBCheckScanAttachOperationOperation::checkScanAttachOperation(array));
}
