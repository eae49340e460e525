#pragma once

#include "platform/tasks/Operation.h"

#include <functional>

class FMDatabase;

/// Removes all thumbnails and gives their room on the disk back. A scan that begins does not drop
/// it: the user has asked for it.
class PBClearThumbOperation final : public platform::Operation {
public:
    /// `thumbnails` is the connection to `thumbnail.db` that belongs to the queue; it outlives the
    /// operation. `ended` is called on the thread of the queue.
    PBClearThumbOperation(FMDatabase& thumbnails, std::function<void(bool isCleared)> ended);

    [[nodiscard]] bool mustRun() const override { return true; }

protected:
    void main() override;

private:
    FMDatabase& _thumbnails;
    const std::function<void(bool isCleared)> _ended;
};
