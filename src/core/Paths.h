#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstdint>
#include <span>

/// Paths compared by whole components. Case counts: "trip" and "Trip" are two folders. On a disk
/// that takes no note of case they are one, but then one of them is how the disk spells it: paths
/// that come from outside are brought to that spelling where they enter
/// (`platform::spelledAsOnDisk`), and none of these functions asks a disk. Any thread.
namespace PBUtilities {

/// The parts of a path: "/" first for an absolute path, then the names. A path of at least two
/// parts drops a trailing separator; the empty path has no parts.
[[nodiscard]] QStringList pathComponents(QStringView path);
/// The reverse: "/" and names joined with single separators.
[[nodiscard]] QString pathWithComponents(const QStringList& components);

/// 0: the same path, also when both are empty. 1: `path` lies above `otherPath`. -1: `path` lies
/// below it. -2: unrelated, or only one of them is empty.
[[nodiscard]] int comparePath(QStringView path, QStringView otherPath);

/// The deepest common folder; "/" when there is none.
[[nodiscard]] QString ancestorOfPath(QStringView path, QStringView otherPath);

/// The same paths in any order.
[[nodiscard]] bool
isEqualPathArray(const QStringList& pathArray, const QStringList& otherPathArray);
/// The same numbers in the same order.
[[nodiscard]] bool isEqualGroupTypeArray(
    std::span<const int> groupTypeArray, std::span<const int> otherGroupTypeArray);

/// Whether `path` has fewer parts than `otherPath` and they are its beginning. A path without parts
/// is a parent of anything longer than nothing.
[[nodiscard]] bool isParentOfPath(QStringView path, QStringView otherPath);
/// The name under which the path is shown: its last part, "/" for the root, and line breaks as
/// blanks. Never touches the disk.
[[nodiscard]] QString displayNameOfPath(QStringView path);
/// The path exists and is a directory.
[[nodiscard]] bool isFolder(const QString& path);

} // namespace PBUtilities
