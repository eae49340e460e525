#include "platform/desktop/Workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace platform::Workspace {

namespace {

void openHolder(const QString& path, const std::function<void()>& failed) {
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).path()))) failed();
}

} // namespace

void revealInFileManager(const QStringList& paths, std::function<void()> failed) {
    if (paths.isEmpty()) return;
    const QString& first = paths.constFirst();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return openHolder(first, failed);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    QStringList urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    call << urls << QString();
    // Goes by itself when the answer was seen, or with the connection's end.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, watcher,
        [first, failed = std::move(failed)](QDBusPendingCallWatcher* finished) {
            if (finished->isError()) openHolder(first, failed);
            finished->deleteLater();
        });
}

} // namespace platform::Workspace
