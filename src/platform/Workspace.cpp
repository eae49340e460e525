#include "platform/Workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

namespace platform::Workspace {

namespace {

void openHolder(const QString& path) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).path()));
}

} // namespace

void revealInFileManager(const QString& path) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return openHolder(path);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    const QUrl url = QUrl::fromLocalFile(path);
    call << QStringList{url.toString(QUrl::FullyEncoded)} << QString();
    // Goes by itself when the answer was seen, or with the connection's end.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, watcher,
        [path](QDBusPendingCallWatcher* finished) {
            if (finished->isError()) openHolder(path);
            finished->deleteLater();
        });
}

} // namespace platform::Workspace
