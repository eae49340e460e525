#include "platform/desktop/MailProgram.h"

#include "platform/tasks/MainThread.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QProcess>
#include <QStandardPaths>

namespace platform::MailProgram {

namespace {

QString mailTool() {
    return QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
}

bool composeByTool(const QStringList& paths) {
    QStringList arguments;
    for (const QString& path : paths)
        arguments << QStringLiteral("--attach") << path;
    const QString tool = mailTool();
    return !tool.isEmpty() && QProcess::startDetached(tool, arguments);
}

} // namespace

bool isThere(const QDBusConnection& bus) {
    if (!mailTool().isEmpty()) return true;
    if (!bus.isConnected()) return false;
    // One that is not there yet is started when it is asked.
    const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
    const QDBusConnectionInterface& names = *bus.interface();
    return names.registeredServiceNames().value().contains(portal) ||
           names.activatableServiceNames().value().contains(portal);
}

void compose(
    const QDBusConnection& bus, const QStringList& paths, const PortalFiles& files,
    std::function<void(bool isTaken)> taken) {
    assertMainThread();
    if (files.isEmpty()) {
        taken(composeByTool(paths));
        return;
    }
    qDBusRegisterMetaType<PortalFiles>();
    PortalRequest::call(
        bus, QStringLiteral("org.freedesktop.portal.Email"), QStringLiteral("ComposeEmail"),
        {QString()}, {{QStringLiteral("attachment_fds"), QVariant::fromValue(files)}},
        [paths, taken = std::move(taken)](PortalRequest::Answer answer) {
            const bool isTaken =
                answer == PortalRequest::Answer::Done || answer == PortalRequest::Answer::Cancelled;
            taken(isTaken || composeByTool(paths));
        });
}

} // namespace platform::MailProgram
