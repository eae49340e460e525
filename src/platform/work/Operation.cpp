#include "platform/work/Operation.h"

#include "platform/work/OperationQueue.h"

namespace platform {

void Operation::setQueuePriority(QueuePriority priority) {
    if (_priority.exchange(priority) != priority) OperationQueue::prioritiesChanged();
}

} // namespace platform
