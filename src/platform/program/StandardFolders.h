#pragma once

#include <QString>

namespace platform {

/// Where this program keeps its own files. Each folder is made when it is first asked for; failure
/// to make it shows when something is written there. Any thread.
namespace StandardFolders {

/// Puts catalogue and settings into one folder of the caller's choice instead of the user's own
/// places. Call before anything else asks for a place; an empty folder goes back to the user's.
void setProfile(const QString& folder);

/// Folder of the catalogue files: the profile, else `$XDG_DATA_HOME/Velmora`.
[[nodiscard]] QString dataFolder();
/// Folder of what may be lost: "Cache" in the profile, else `$XDG_CACHE_HOME/Velmora`.
[[nodiscard]] QString cacheFolder();
/// The settings file: `Velmora.conf` in the profile, else in `$XDG_CONFIG_HOME/Velmora`.
[[nodiscard]] QString settingsFile();

/// A file that is installed with the program, in `../share/velmora` as seen from the executable's
/// folder; the same in a build tree as under an installation's prefix.
[[nodiscard]] QString sharedFile(const QString& name);

} // namespace StandardFolders
} // namespace platform
