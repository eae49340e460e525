#pragma once

#include "catalogue/ThumbnailCleaning.h"
#include "platform/tasks/Operation.h"

#include <QString>

#include <functional>
#include <memory>

class FMDatabase;

/// One step of the cleaning of thumbnails, behind all else in its queue.
class PBCleanThumbOperation final : public platform::Operation {
public:
    /// Called on the thread of the queue, unless the operation was cancelled.
    using Ended = std::function<void(ThumbnailCleaning::Outcome)>;

    /// `thumbnails` is the connection to `thumbnail.db` that belongs to the queue; it outlives the
    /// operation. Only one operation of a cleaning is under way at a time.
    PBCleanThumbOperation(
        std::shared_ptr<ThumbnailCleaning> cleaning, QString filesPath, FMDatabase& thumbnails,
        Ended ended);

protected:
    void main() override;

private:
    [[nodiscard]] ThumbnailCleaning::Outcome step() const;

    const std::shared_ptr<ThumbnailCleaning> _cleaning;
    const QString _filesPath;
    FMDatabase& _thumbnails;
    const Ended _ended;
};
