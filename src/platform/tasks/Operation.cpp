#include "platform/tasks/Operation.h"

#include "platform/tasks/OperationQueue.h"

namespace platform {

void Operation::setQueuePriority(QueuePriority priority) {
    if (_priority.exchange(priority) != priority) OperationQueue::prioritiesChanged();
}

} // namespace platform
