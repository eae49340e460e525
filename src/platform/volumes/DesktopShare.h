#pragma once

#include "platform/volumes/MountTable.h"

#include <QByteArray>
#include <QString>

namespace platform {

/// The user-space mounts of the desktops show each server or device that the user is connected with
/// as a folder below one mount point, which stays when they go: such a folder is the volume.

/// Whether a file system of this type is one of these.
[[nodiscard]] bool isDesktopMount(const QByteArray& type);

/// The part of `pathInFileSystem` that names the server or device, such as
/// "smb-share:server=nas,share=photos" or "smb/nas"; empty for a path that names none. Pure.
[[nodiscard]] QByteArray desktopShare(const QByteArray& type, const QString& pathInFileSystem);

/// The address under which the desktop is asked to connect, such as "smb://nas/photos"; empty for a
/// share of another kind. `share` is encoded as the mount shows it (GVfs: kind and percent-encoded
/// values). Pure.
[[nodiscard]] QString addressOfDesktopShare(const QByteArray& share);

} // namespace platform
