#pragma once

#include <QString>

/// The files of databases as files. Any thread.
namespace DatabaseFile {

/// Moves a database away, with what belongs to it, to a name beside it that is free, and answers
/// that name; empty if it could not be moved.
[[nodiscard]] QString moveAside(const QString& file);

/// Has what was written to a file or folder on the disk when it returns; false where that failed.
[[nodiscard]] bool synchronize(const QString& path);

} // namespace DatabaseFile
