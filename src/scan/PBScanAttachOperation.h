#pragma once

#include "platform/tasks/Mutex.h"
#include "platform/tasks/Operation.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace platform {
class OperationQueue;
}

/// Work that joins a running scan: something that has to change the work tree, which belongs to the
/// scan thread. Made on any thread; runs once, at the scan's next checkpoint, or by itself when no
/// scan is running.
class PBScanAttachOperation {
public:
    PBScanAttachOperation() = default;
    PBScanAttachOperation(const PBScanAttachOperation&) = delete;
    PBScanAttachOperation& operator=(const PBScanAttachOperation&) = delete;
    virtual ~PBScanAttachOperation() = default;

    /// On the scan thread, within the owner's `main`. `isLast`: nothing else of the same drain that
    /// publishes when it is told so comes after it.
    virtual void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) = 0;
    /// The last of a drain shows what all of them have done. Those that answer false publish by
    /// themselves, where they have found something to show.
    [[nodiscard]] virtual bool publishesWhenLast() const { return true; }

    /// Both wait: whether this one does the other's work as well from now on. Any thread, with the
    /// mailbox locked.
    [[nodiscard]] virtual bool takesOver(const PBScanAttachOperation& /*later*/) { return false; }
};

/// The mailbox of attached operations: one for the whole program.
class PBAttachOperationArray {
public:
    /// The monitor is held while `whileLocked` runs and the operation is added, unless one that
    /// waits takes its work over.
    void
    add(std::shared_ptr<PBScanAttachOperation> operation,
        const std::function<void()>& whileLocked = {});
    [[nodiscard]] std::vector<std::shared_ptr<PBScanAttachOperation>> takeAll();
    /// Grows with each operation that is taken. Whoever has looked something up in the catalogue
    /// and finds another number later has to look again. On the scan thread.
    [[nodiscard]] std::uint64_t takenCount() const { return _takenCount; }
    /// Rows are about to change behind the scans: what they looked up is out of date. Any thread,
    /// within the transaction that changes them, and that lets nobody read meanwhile.
    void rowsWillChange() { ++_takenCount; }
    /// The same for a transaction that lets others read the former rows: `change` begins it and
    /// ends it. Any thread.
    void whileRowsChange(const std::function<void()>& change);
    /// Nothing that was looked up since `takenCount` was that can be out of date. On the scan
    /// thread, within a transaction of its own.
    [[nodiscard]] bool isUpToDate(std::uint64_t count) const {
        return _changing == 0 && count == _takenCount;
    }

private:
    platform::Mutex _monitor;
    std::vector<std::shared_ptr<PBScanAttachOperation>> _operations VELMORA_GUARDED_BY(_monitor);
    std::atomic<std::uint64_t> _takenCount = 0;
    std::atomic<int> _changing = 0;
};

/// Runs what is in the mailbox, as a part of the owner. What a cancelled owner has taken out and
/// not run is lost. Nothing happens without a mailbox. On the scan thread.
void checkAttachedOperation(PBAttachOperationArray* array, platform::Operation& owner);

/// Runs the mailbox where no scan does.
class PBCheckScanAttachOperationOperation final : public platform::Operation {
public:
    [[nodiscard]] static std::shared_ptr<PBCheckScanAttachOperationOperation>
    checkScanAttachOperation(std::shared_ptr<PBAttachOperationArray> array);
    explicit PBCheckScanAttachOperationOperation(std::shared_ptr<PBAttachOperationArray> array)
        : _attachOperationArray(std::move(array)) {}

protected:
    void main() override { checkAttachedOperation(_attachOperationArray.get(), *this); }

private:
    const std::shared_ptr<PBAttachOperationArray> _attachOperationArray;
};

/// Has the operation run on the scan thread. `cancelDelayedPublications` drops publications that
/// would overtake the change, where one of the change itself comes for sure; it is called on this
/// thread. Any thread.
void attachScanOperation(
    const std::shared_ptr<PBAttachOperationArray>& array, platform::OperationQueue& scanQueue,
    std::shared_ptr<PBScanAttachOperation> operation,
    const std::function<void()>& cancelDelayedPublications);
