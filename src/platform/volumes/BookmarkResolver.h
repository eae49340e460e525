#pragma once

#include "platform/volumes/Bookmark.h"
#include "platform/volumes/Volumes.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <stop_token>

namespace platform {

/// What became of a bookmarked folder.
struct Resolution {
    enum class Outcome {
        Found,        // at `path`
        NotFound,     // its volume is there, the folder is not where it was or could easily have
                      // gone: it may be anywhere else (`VolumeSearch`)
        Gone,         // all folders of its volume were looked at, and it is none of them
        VolumeAbsent, // the volume is not mounted
        NoAnswer      // the disk gave an error, or no answer in time: nothing is known
    };
    Outcome outcome = Outcome::NoAnswer;
    QString path;
};

/// Where else to look for a folder that is not at its path any more.
struct SearchPlaces {
    QString lastSeenPath;      // may be newer than the bookmark; may be empty
    QString movedTo = {};      // where somebody saw it go; may be empty
    QStringList otherRoots;    // folders near which the user keeps such folders
    QStringList commonFolders; // the home folder, the media folders
};

/// Finds bookmarked folders again. Any thread; waits for disks, at most for the limit as long as
/// they answer.
class BookmarkResolver {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// For one folder, looking and searching together, while somebody waits.
    static constexpr std::chrono::milliseconds timeLimit{200};

    explicit BookmarkResolver(VolumeSources sources = {}, Clock clock = {});

    [[nodiscard]] const Volumes& volumes() const { return _volumes; }

    /// The same folder at its path; else on its volume wherever that is mounted now; else the same
    /// inode where its path leads with another name for one of the folders on it; else near where
    /// it was, then in the other places, the most recently changed folders first. That search
    /// leaves out hidden folders, such as the trash. Links are not followed. Never answers `Gone`.
    [[nodiscard]] Resolution resolve(
        const Bookmark& bookmark, const SearchPlaces& places,
        std::chrono::milliseconds limit = timeLimit, const std::stop_token& stop = {}) const;

    /// The user's home folder and the media folders.
    [[nodiscard]] static QStringList commonFolders(const VolumeSources& sources);

private:
    const Volumes _volumes;
    const Clock _clock;
};

} // namespace platform
