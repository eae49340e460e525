#pragma once

#include "platform/tasks/OperationQueue.h"
#include "support/Support.h"

namespace support {

/// Has a queue perform the operation, also where the queue is cancelled before it comes to it.
inline void perform(const std::shared_ptr<platform::Operation>& operation, bool cancels = false) {
    platform::OperationQueue queue(u"test"_s);
    queue.setSuspended(cancels);
    queue.addOperation(operation);
    if (cancels) queue.cancelAllOperations();
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
}

} // namespace support
