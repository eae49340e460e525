#pragma once

#include "platform/files/Presence.h"
#include "platform/files/Writers.h"
#include "platform/tasks/Mutex.h"

#include <QByteArray>
#include <QHashFunctions>

#include <chrono>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

namespace platform {

/// Files, new ones and such as are written anew, whose writers may not have finished. A file is
/// complete when it was closed after writing, or when it has been quiet for a short time and the
/// kernel says that nobody has it open for writing (it was linked here, or closed before anyone
/// watched). Where somebody has, or the kernel doesn't say, it is told after a long quiet time all
/// the same; if it has changed by the time when it is closed, it is told again as one that was not
/// complete. Paths are those of the file system.
class GrowingFiles {
public:
    using Clock = std::chrono::steady_clock;
    /// What is seen of a file from outside.
    struct State {
        std::int64_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds since 1970
        bool operator==(const State&) const = default;
    };
    struct Sight {
        Presence presence = Presence::Unknown; ///< what is no regular file counts as gone
        State state;
    };
    /// What is asked of the disk.
    struct Questions {
        std::function<Sight(const QByteArray& path)> look;
        std::function<Writers(const QByteArray& path)> writers;
    };

    static constexpr std::chrono::milliseconds quietTime{500};
    static constexpr std::chrono::seconds quietTimeOfWriter{10};
    /// Nobody is asked about the writers of files that have not changed for so long.
    static constexpr std::chrono::hours oldTime{1};

    GrowingFiles() : GrowingFiles({&lookAtDisk, &writersOfFile}) {}
    explicit GrowingFiles(Questions questions) : _questions(std::move(questions)) {}

    /// `flags` go with the file until it is complete.
    void add(const QByteArray& path, std::uint32_t flags, Clock::time_point now);
    /// Somebody has written to the file. `flags` are those of one that stood already, or is told
    /// again; a file that stood is complete when it has been quiet, since whoever writes it anew
    /// may do so in several goes.
    void wasClosed(const QByteArray& path, std::uint32_t flags, Clock::time_point now);
    void remove(const QByteArray& path);
    /// Answers whether the file was one of these.
    bool rename(const QByteArray& from, const QByteArray& to, std::uint32_t flags);
    /// The files below a folder take its new name; an empty one drops them.
    void renameFolder(const QByteArray& from, const QByteArray& to);
    [[nodiscard]] bool isEmpty() const;

    struct Complete {
        QByteArray path;
        std::uint32_t flags;
    };
    /// Looks at all of them, and takes out what is complete, or gone.
    [[nodiscard]] std::vector<Complete> takeComplete(Clock::time_point now);

    /// Whether the file is one of these, or is made so (with the flags) because somebody has it
    /// open for writing. Any thread; all else belongs to one.
    [[nodiscard]] bool
    holdIfWritten(const QByteArray& path, std::uint32_t flags, Clock::time_point now);

    [[nodiscard]] static Sight lookAtDisk(const QByteArray& path);

private:
    struct File {
        State state;
        Clock::time_point since; ///< of the last change noticed
        std::uint32_t flags = 0;
        bool isClosed = false;
        bool isNew = false;
    };

    [[nodiscard]] bool isOld(const State& state) const;

    const Questions _questions;
    mutable Mutex _mutex;
    std::unordered_map<QByteArray, File> _files VELMORA_GUARDED_BY(_mutex);
    /// Told as they were then, though their writers may not have finished.
    std::unordered_map<QByteArray, State> _toldEarly VELMORA_GUARDED_BY(_mutex);
};

} // namespace platform
