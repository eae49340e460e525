#pragma once

#include "platform/work/Mutex.h"

#include <QByteArray>
#include <QHashFunctions>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace platform {

/// New files whose writers may not have finished. A file is complete when it was closed after
/// writing, or when it has not changed for a while: a short one if it never changed under our eyes
/// (it was linked here, or written before anyone looked), a long one if it did (its writer has it
/// open and waits for its own source). Paths are those of the file system.
class GrowingFiles {
public:
    using Clock = std::chrono::steady_clock;
    /// What is seen of a file from outside.
    struct State {
        std::int64_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds since 1970
        bool operator==(const State&) const = default;
    };
    /// Nothing for a file that is gone or is no regular file.
    using Look = std::function<std::optional<State>(const QByteArray& path)>;

    static constexpr std::chrono::milliseconds quietTime{500};
    static constexpr std::chrono::seconds quietTimeOfWriter{10};

    explicit GrowingFiles(Look look = &lookAtDisk) : _look(std::move(look)) {}

    /// `flags` go with the file until it is complete.
    void add(const QByteArray& path, std::uint32_t flags, Clock::time_point now);
    void wasClosed(const QByteArray& path);
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

    /// Any thread; all else belongs to one.
    [[nodiscard]] bool contains(const QByteArray& path) const;

    [[nodiscard]] static std::optional<State> lookAtDisk(const QByteArray& path);

private:
    struct File {
        State state;
        Clock::time_point since; ///< of the last change noticed
        std::uint32_t flags = 0;
        bool hasGrown = false;
        bool isClosed = false;
    };

    const Look _look;
    mutable Mutex _mutex;
    std::unordered_map<QByteArray, File> _files VELMORA_GUARDED_BY(_mutex);
};

} // namespace platform
