#include "platform/desktop/MailProgram.h"

#include "platform/desktop/PortalRequest.h"
#include "platform/tasks/MainThread.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QFile>
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
    return bus.isConnected() &&
           bus.interface()
               ->isServiceRegistered(QStringLiteral("org.freedesktop.portal.Desktop"))
               .value();
}

void compose(
    const QDBusConnection& bus, const QStringList& paths, std::function<void(bool isTaken)> taken) {
    assertMainThread();
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    QList<QDBusUnixFileDescriptor> files;
    for (const QString& path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            taken(false);
            return;
        }
        files.append(QDBusUnixFileDescriptor(file.handle())); // a duplicate
    }
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
