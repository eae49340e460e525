#pragma once

#include <QtGlobal>

class FMDatabase;

/// Removes thumbnails of photographs that have left the catalogue, in small steps, each of which
/// stands for itself. Ids are never given twice: one that was given and has no row any more is gone
/// for good. The pages that become free are used for the next thumbnails; the file does not shrink.
///
/// Nothing is removed where `files.db` can't be read, or where the two files are not each other's.
/// One thread at a time.
class ThumbnailCleaning {
public:
    enum class Outcome {
        More,    ///< another step goes on from here
        Done,    ///< all were looked through; another step would begin anew
        Unknown, ///< one of the files can't be read or written now, or they don't belong together
    };
    /// At most so many thumbnails go in a step, and so many photographs are looked through: both
    /// take some milliseconds.
    static constexpr int removedAtOnce = 200;
    static constexpr int lookedAtAtOnce = 2000;

    /// Connections of the calling thread to `files.db` and `thumbnail.db`.
    [[nodiscard]] Outcome step(FMDatabase& files, FMDatabase& thumbnails);

private:
    qint64 _next = 1; ///< ids below were looked through
};
