#include "platform/Operation.h"

#include "platform/OperationQueue.h"

namespace platform {

void Operation::setQueuePriority(QueuePriority priority) {
    if (_priority.exchange(priority) != priority) OperationQueue::prioritiesChanged();
}

} // namespace platform
