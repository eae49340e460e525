#pragma once

#include "platform/desktop/PortalRequest.h"

#include <QDBusConnection>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

/// The picture of the desktop. Main thread; nothing here waits.
namespace platform::Wallpaper {

enum class Result {
    Done,
    Cancelled,
    Nobody, ///< neither a portal nor a desktop that we know
    Failed,
};

/// Asks the portal, which gets the file opened, or else sets it as the desktop of that name in
/// XDG_CURRENT_DESKTOP wants it. The file stays where it is.
void set(
    const QDBusConnection& bus, const QString& desktop, const QString& path,
    const QDBusUnixFileDescriptor& file, std::function<void(Result)> answered);

/// The command lines that a desktop of that name wants for it; all are to
/// be run. Empty for one that we don't know. That of Xfce only names the settings to be changed.
[[nodiscard]] std::vector<QStringList> commandLines(const QString& desktop, const QString& path);

} // namespace platform::Wallpaper
