#pragma once

#include "platform/desktop/PortalRequest.h"

#include <QDBusConnection>
#include <QStringList>

#include <functional>

/// New e-mails in the user's mail program.
namespace platform::MailProgram {

/// Whether a portal or `xdg-email` is there to ask. Any thread; waits for the bus.
[[nodiscard]] bool isThere(const QDBusConnection& bus);

/// A new message with these files attached, through the portal or else `xdg-email`; calls back
/// with whether somebody took it, a cancel by the user counting as such. `files` are the paths
/// opened, none for the tool alone. Main thread; nothing waits.
void compose(
    const QDBusConnection& bus, const QStringList& paths, const PortalFiles& files,
    std::function<void(bool isTaken)> taken);

} // namespace platform::MailProgram
