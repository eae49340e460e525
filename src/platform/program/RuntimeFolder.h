#pragma once

#include <QByteArray>

namespace platform {

/// A folder for sockets that only this user can change. Any thread, before anything else needs it.
namespace RuntimeFolder {

/// `$XDG_RUNTIME_DIR` if it is this user's own; else one below the temporary folder. Every process
/// of the user gets the same answer. Empty if there is none.
[[nodiscard]] QByteArray path();

/// The folder `runtime-<user id>` in the given one, made if need be. Where that name is taken by
/// something that others have or may have put their hands on, `runtime-<user id>-2` and so on.
/// Empty if none of them can be had.
[[nodiscard]] QByteArray ownFolderIn(const QByteArray& temporaryFolder);

} // namespace RuntimeFolder
} // namespace platform
