#pragma once

#include <QDBusConnection>
#include <QStringList>

#include <functional>

/// New e-mails in the user's mail program. Main thread; nothing here waits.
namespace platform::MailProgram {

/// Whether a portal or `xdg-email` is there to ask. Looks for a program, and asks the bus.
[[nodiscard]] bool isThere(const QDBusConnection& bus);
/// A new message with these files attached, through the portal or else `xdg-email`; calls back
/// with whether somebody took it, a cancel by the user counting as such.
void compose(
    const QDBusConnection& bus, const QStringList& paths, std::function<void(bool isTaken)> taken);

} // namespace platform::MailProgram
