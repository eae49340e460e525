#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace platform {

class GrowingFiles;

/// What an event says of its path; several may be set.
enum EventFlag : std::uint32_t {
    EventMustScanSubDirs = 0x00000001, ///< changes below the path were lost: look for yourself
    EventRootChanged = 0x00000020,     ///< a watched root moved, is gone, or may have come
    EventItemCreated = 0x00000100,
    EventItemRemoved = 0x00000200,
    EventItemRenamed = 0x00000800,  ///< the path is the former or the new name
    EventItemModified = 0x00001000, ///< the file was written to when it stood already
    EventItemIsFile = 0x00010000,
    EventItemIsDir = 0x00020000,
};

struct FileSystemEvent {
    std::uint64_t eventId = 0; ///< grows from event to event
    QString path;              ///< absolute, without a separator at its end
    std::uint32_t flags = 0;
    QString movedTo = {}; ///< of a root: where it was seen to go; empty where nobody saw it
};

/// Watches folders with all that is below them, and tells what came, went, was renamed and was
/// written there.
///
/// Hidden entries, the content of packages, and what lies behind links are left out. A new file, or
/// one that is written anew, is told once it is complete (`GrowingFiles`). Events of one path
/// within a batch are joined. When the kernel lost events, or watches no more folders, that is said
/// once on standard error, and the roots concerned get an event that is a renamed folder which must
/// be scanned.
///
/// Watches are added on a thread of the stream's own, so that making one costs nothing.
class EventStream {
public:
    using Clock = std::chrono::steady_clock;
    using Handler = std::function<void(std::vector<FileSystemEvent>)>;

    struct Options {
        /// From the first event of a batch to its delivery. A root that moves takes its
        /// photographs out of reach, and is told after a tenth of a second at most.
        std::chrono::milliseconds latency{1000};
        std::function<Clock::time_point()> now = &Clock::now;
        /// Told once when no more folders can be watched, with the limit of the system, such as
        /// "fs.inotify.max_user_watches = 8192". On the stream's thread; may be empty.
        std::function<void(const QString& limit)> limitReached = {};
        /// Roots that are not there. They are told with `EventRootChanged` once something is at
        /// their path, and then watched like the others.
        QStringList awaited = {};
        /// Those of the paths of which nothing below the folder itself is watched, nor listed.
        QStringList flat = {};
        /// Of an earlier stream, which has ended: what it waited for is waited for on. May be
        /// empty.
        std::shared_ptr<GrowingFiles> growing = nullptr;
    };

    /// The handler is called with each batch on the main thread, in the main loop's default mode,
    /// and no more once the stream is gone from that thread. Paths that do not exist are told as
    /// changed roots.
    EventStream(const QStringList& paths, Handler handler, Options options);
    EventStream(const QStringList& paths, Handler handler)
        : EventStream(paths, std::move(handler), Options()) {}
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;
    /// Waits for the stream's thread, which ends at once. Any thread.
    ~EventStream();

    /// The system refused to watch anything; said on standard error.
    [[nodiscard]] bool isValid() const;

    /// Has everything that happened until now delivered; returns when the batch is on its way to
    /// the main thread (and so, the first time, when all folders are watched). Any thread but the
    /// stream's.
    void flushSync();

    /// The file is new and its writer has not finished: its event is still to come. Any thread.
    [[nodiscard]] bool isBeingWritten(const QString& path);

private:
    class Worker;
    std::unique_ptr<Worker> _worker;
};

} // namespace platform
