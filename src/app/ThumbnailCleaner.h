#pragma once

#include "catalogue/ThumbnailCleaning.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class FMDatabase;

namespace platform {
class Operation;
class OperationQueue;
} // namespace platform

/// Has thumbnails without a photograph removed while nothing else is going on: one step at a time,
/// and the next one only when the program is idle again. Main thread.
class ThumbnailCleaner final : public QObject {
public:
    struct Environment {
        QString filesPath; ///< `files.db`
        FMDatabase& buildThumbDb;
        platform::OperationQueue& buildQueue;
        /// Whether there is no work in the background.
        std::function<bool()> isIdle;
    };
    explicit ThumbnailCleaner(Environment environment);

    /// Rows of photographs went, or may have gone in the last run: looks through all thumbnails
    /// once more, as soon as there is time.
    void wake();
    /// Whether there is nothing to look through.
    [[nodiscard]] bool isDone() const { return !_isWanted; }

private:
    void look();
    void stepDidEnd(ThumbnailCleaning::Outcome outcome);

    const Environment _environment;
    std::shared_ptr<ThumbnailCleaning> _cleaning = std::make_shared<ThumbnailCleaning>();
    std::weak_ptr<platform::Operation> _step; ///< the one under way
    bool _isWanted = false;
    QTimer _timer;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
};
