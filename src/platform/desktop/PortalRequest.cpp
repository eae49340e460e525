#include "platform/desktop/PortalRequest.h"

#include "platform/tasks/MainThread.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>

#include <utility>

namespace platform {

namespace {

constexpr int longestWait = 5000; // for the portal to take the request
const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto requestInterface = QStringLiteral("org.freedesktop.portal.Request");

/// The kernel takes no more than 253 with one message, and ends the connection of who tries.
constexpr qsizetype mostFiles = 200;

} // namespace

std::optional<PortalFiles> openForPortal(const QStringList& paths) {
    PortalFiles files;
    if (paths.size() > mostFiles) return files;
    for (const QString& path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
        files.append(QDBusUnixFileDescriptor(file.handle())); // a duplicate
    }
    return files;
}

void PortalRequest::call(
    const QDBusConnection& bus, const QString& interface, const QString& method,
    const QVariantList& arguments, QVariantMap options, std::function<void(Answer)> answered) {
    assertMainThread();
    if (!bus.isConnected()) {
        answered(Answer::Nobody);
        return;
    }
    static int number = 0;
    const QString token = QStringLiteral("velmora%1").arg(++number);
    options.insert(QStringLiteral("handle_token"), token);
    auto* request = new PortalRequest(bus, std::move(answered));
    // The answer may come before that of the call: where it will be is known.
    QString sender = bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    request->listen(
        QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token));
    QDBusMessage message = QDBusMessage::createMethodCall(
        portal, QStringLiteral("/org/freedesktop/portal/desktop"), interface, method);
    message.setArguments(arguments);
    message << options;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message, longestWait), request);
    connect(watcher, &QDBusPendingCallWatcher::finished, request, [request, watcher] {
        const QDBusPendingReply<QDBusObjectPath> reply(*watcher);
        watcher->deleteLater();
        if (reply.isError()) {
            request->end(Answer::Nobody);
        } else if (reply.value().path() != request->_path) {
            request->listen(reply.value().path());
        }
    });
}

bool PortalRequest::listen(const QString& path) {
    _path = path;
    return _bus.connect(
        portal, path, requestInterface, QStringLiteral("Response"), this,
        SLOT(response(uint, QVariantMap)));
}

void PortalRequest::response(uint code, const QVariantMap& /*results*/) {
    end(code == 0 ? Answer::Done : code == 1 ? Answer::Cancelled : Answer::Failed);
}

void PortalRequest::end(Answer answer) {
    if (const auto answered = std::exchange(_answered, nullptr)) {
        deleteLater();
        answered(answer);
    }
}

} // namespace platform
