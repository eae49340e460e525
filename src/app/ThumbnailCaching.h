#pragma once

#include "shell/services/ThumbnailCache.h"

#include <functional>

class FMDatabase;

namespace platform {
class OperationQueue;
}

struct ThumbnailCachingEnvironment {
    FMDatabase& buildThumbDb; ///< of the build queue
    platform::OperationQueue& buildQueue;
    /// Has thumbnails of what is on show made, and shown. Main thread.
    std::function<void()> buildAnew;
};

/// All of the environment outlives the cache's use.
[[nodiscard]] ThumbnailCache makeThumbnailCache(const ThumbnailCachingEnvironment& environment);
