#include "platform/tasks/Operation.h"

#include "platform/tasks/OperationQueue.h"

namespace platform {

void Operation::setQueuePriority(QueuePriority priority) {
    const bool isOther = _priority.exchange(priority) != priority;
    // One that no queue has yet stands nowhere in a line.
    if (isOther && _sequence.load() != 0) OperationQueue::prioritiesChanged();
}

} // namespace platform
