#include "app/DesktopService.h"

#include "app/OpenedPaths.h"
#include "core/Application.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainThread.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QEventLoop>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {

QDBusMessage toBus(const QString& method) {
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), method);
}

platform::Activation activationOf(const QVariantMap& platformData) {
    return {
        platformData.value(QStringLiteral("desktop-startup-id")).toString().toUtf8(),
        platformData.value(QStringLiteral("activation-token")).toString().toUtf8()};
}

/// What of them can be opened; waits for their disks.
SingleInstance::Request requestOf(const QStringList& uris, SingleInstance::Request request) {
    const auto tell = [&request](const UnopenedPath& unopened) {
        platform::complain(sentenceOf(unopened));
        request.faults.push_back(unopened);
    };
    QStringList paths;
    for (const QString& uri : uris) {
        const QUrl url(uri);
        if (url.isLocalFile()) {
            paths += QDir::cleanPath(url.toLocalFile());
        } else {
            tell({UnopenedPath::Fault::NotOfThisComputer, uri, 0});
        }
    }
    request.paths = openablePaths(paths, tell);
    return request;
}

/// Longer than any disk takes that is awake.
constexpr std::chrono::milliseconds longestWaitForDisks{100};

} // namespace

DesktopService::DesktopService(const QDBusConnection& bus)
    : _bus(bus), _path(u'/' + PBUtilities::applicationId().replace(u'.', u'/')) {
    if (!_bus.isConnected()) return;
    _bus.registerObject(_path, this, QDBusConnection::ExportScriptableSlots);
}

DesktopService::~DesktopService() {
    if (!_bus.isConnected()) return;
    _bus.unregisterObject(_path);
    // Whoever waits for the name has it at once.
    _bus.send(toBus(QStringLiteral("ReleaseName")) << PBUtilities::applicationId());
}

void DesktopService::takeName() {
    platform::assertMainThread();
    if (!_bus.isConnected()) return;
    constexpr uint waitInLine = 0; // no flags of the bus's
    _bus.asyncCall(
        toBus(QStringLiteral("RequestName")) << PBUtilities::applicationId() << waitInLine);
}

std::optional<SingleInstance::Request>
DesktopService::firstCall(std::chrono::milliseconds longestWait) {
    std::optional<SingleInstance::Request> first;
    QEventLoop loop;
    connect(this, &DesktopService::requested, &loop, [&](const SingleInstance::Request& request) {
        // A second may come before the loop has ended.
        if (first) {
            first->paths += request.paths;
            first->faults.insert(first->faults.end(), request.faults.begin(), request.faults.end());
            first->isFullScreen |= request.isFullScreen;
            first->isSlideshow |= request.isSlideshow;
        } else {
            first = request;
        }
        loop.quit();
    });
    QTimer::singleShot(longestWait, &loop, &QEventLoop::quit);
    takeName();
    loop.exec();
    return first;
}

void DesktopService::Activate(const QVariantMap& platformData) {
    Q_EMIT requested({.paths = {}, .add = {}, .activation = activationOf(platformData)});
}

void DesktopService::Open(const QStringList& uris, const QVariantMap& platformData) {
    platform::assertMainThread();
    const SingleInstance::Request request{
        .paths = {}, .add = {}, .activation = activationOf(platformData)};
    const auto tell = [this](const SingleInstance::Request& looked) { Q_EMIT requested(looked); };
    // One call after the other: the last one shows what it opens.
    const auto looked = _looks.call<SingleInstance::Request>(
        QStringLiteral("open"), QString::number(++_opened), longestWaitForDisks,
        [request, uris] { return requestOf(uris, request); }, tell);
    if (looked) tell(*looked);
}

void DesktopService::ActivateAction(
    const QString& action, const QVariantList& /*parameter*/, const QVariantMap& platformData) {
    SingleInstance::Request request{
        .paths = {}, .add = {}, .activation = activationOf(platformData)};
    request.isFullScreen = action == u"fullscreen";
    request.isSlideshow = action == u"slideshow";
    if (request.isFullScreen || request.isSlideshow) Q_EMIT requested(request);
}
