#include "platform/desktop/SessionBus.h"

#include <QFileInfo>

namespace platform {

QDBusConnection sessionBus() {
    const bool isThere =
        qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
        QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
    return isThere ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

} // namespace platform
