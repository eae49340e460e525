#pragma once

#include <QSet>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

namespace platform {

/// How a disk itself spells the names on it. One that takes no note of case finds "trip" also as
/// "Trip", and lists it under one of the two: that spelling is the one by which the program knows
/// it, so that paths can be compared without asking anyone. A disk that takes note of case has
/// nothing to say: each name is spelled as it is. Two names of one file there, such as hard links,
/// are both listed, and stay two.
///
/// Blocks for the disk; any thread.

/// What is asked of the disk.
struct NamesOnDisk {
    /// Device and inode of what has the path, links followed; nothing where that can't be told.
    using Identity = std::pair<std::uint64_t, std::uint64_t>;
    std::function<std::optional<Identity>(const QString& path)> identity;
    /// All names in the folder, hidden ones too; nothing where it can't be read to its end.
    std::function<std::optional<QSet<QString>>(const QString& folder)> names;

    [[nodiscard]] static const NamesOnDisk& real();
};

/// The path as its disk spells it, from the mount point down. What is not there, or can't be looked
/// at, stays as given.
[[nodiscard]] QString
spelledAsOnDisk(const QString& path, const NamesOnDisk& disk = NamesOnDisk::real());

/// Whether names are there in just the spelling by which somebody knows them, asked of many of
/// them: a disk that takes note of case is asked once for each folder. What it learns it keeps, so
/// it lives for one piece of work. One thread at a time.
class SpellingCheck {
public:
    explicit SpellingCheck(const NamesOnDisk& disk = NamesOnDisk::real()) : _disk(disk) {}

    /// Of an entry that is there. True also where the disk can't tell.
    [[nodiscard]] bool isSpelledSo(const QString& folder, const QString& name);
    /// Each name of a path below a folder; an empty one is the folder itself.
    [[nodiscard]] bool isPathSpelledSo(const QString& folder, const QString& relativePath);

private:
    struct Folder {
        bool isAsked = false;
        /// Of a folder that finds names in other spellings, too.
        std::optional<QSet<QString>> names = std::nullopt;
    };
    [[nodiscard]] bool isListed(Folder& folder, const QString& path, const QString& name) const;

    const NamesOnDisk& _disk;
    std::unordered_map<QString, Folder> _folders; // by path
};

} // namespace platform
