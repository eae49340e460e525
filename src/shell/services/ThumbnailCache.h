#pragma once

#include <QtGlobal>

#include <functional>

/// The file of stored thumbnails, as the user sees it. Main thread.
struct ThumbnailCache {
    /// Bytes on the disk.
    std::function<qint64()> byteCount;
    /// Removes all thumbnails behind the window and has those of the photographs on show made anew.
    /// Calls back when they are gone, or could not be removed; not at all after the end.
    std::function<void(std::function<void(bool isCleared)> done)> clear;
};
