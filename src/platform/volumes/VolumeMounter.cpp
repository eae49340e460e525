#include "platform/volumes/VolumeMounter.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QMap>
#include <QObject>
#include <QVariantMap>

#include <optional>
#include <utility>

using ManagedInterfaces = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, ManagedInterfaces>;
Q_DECLARE_METATYPE(ManagedInterfaces)
Q_DECLARE_METATYPE(ManagedObjects)

namespace platform {

namespace {

/// The user may be asked for a password.
constexpr int mountTimeout = 5 * 60 * 1000;

QDBusMessage methodCall(const QString& path, const QString& interface, const QString& method) {
    return QDBusMessage::createMethodCall(
        QString::fromLatin1(DiskServiceMounter::serviceName), path, interface, method);
}

QDBusObjectPath deviceWithUuid(const ManagedObjects& objects, const QByteArray& uuid) {
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        const ManagedInterfaces& interfaces = object.value();
        if (!interfaces.contains(QStringLiteral("org.freedesktop.UDisks2.Filesystem"))) continue;
        const QVariantMap block = interfaces.value(QStringLiteral("org.freedesktop.UDisks2.Block"));
        const QString id = block.value(QStringLiteral("IdUUID")).toString();
        if (!id.isEmpty() && normalizedUuid(id.toLatin1()) == uuid) return object.key();
    }
    return {};
}

} // namespace

class DiskServiceMounter::Private final : public QObject {
public:
    explicit Private(std::function<QDBusConnection()> connect) : _connect(std::move(connect)) {
        qDBusRegisterMetaType<ManagedInterfaces>();
        qDBusRegisterMetaType<ManagedObjects>();
    }

    /// Calls the function with the finished call on the main thread, unless this object is gone.
    template <typename Function>
    void whenFinished(const QDBusPendingCall& call, Function function) {
        auto* watcher = new QDBusPendingCallWatcher(call, this);
        connect(
            watcher, &QDBusPendingCallWatcher::finished, this,
            [function = std::move(function)](QDBusPendingCallWatcher* finished) mutable {
                finished->deleteLater();
                function(*finished);
            });
    }

    void mountDevice(const QDBusObjectPath& device, Completion completion) {
        QDBusMessage message = methodCall(
            device.path(), QStringLiteral("org.freedesktop.UDisks2.Filesystem"),
            QStringLiteral("Mount"));
        message << QVariantMap();
        whenFinished(
            bus().asyncCall(message, mountTimeout),
            [completion = std::move(completion)](const QDBusPendingCallWatcher& finished) {
                const QDBusPendingReply<QString> reply = finished;
                completion(reply.isError() ? reply.error().message() : QString());
            });
    }

    [[nodiscard]] const QDBusConnection& bus() {
        if (!_bus) _bus.emplace(_connect());
        return *_bus;
    }

private:
    const std::function<QDBusConnection()> _connect;
    std::optional<QDBusConnection> _bus;
};

DiskServiceMounter::DiskServiceMounter(std::function<QDBusConnection()> bus)
    : _private(std::make_unique<Private>(std::move(bus))) {}

DiskServiceMounter::~DiskServiceMounter() = default;

bool DiskServiceMounter::canMount(const FileSystemIdentity& fileSystem) const {
    assertMainThread();
    return !fileSystem.uuid.isEmpty() && _private->bus().isConnected();
}

void DiskServiceMounter::mount(const FileSystemIdentity& fileSystem, Completion completion) {
    assertMainThread();
    const QDBusMessage message = methodCall(
        QStringLiteral("/org/freedesktop/UDisks2"),
        QStringLiteral("org.freedesktop.DBus.ObjectManager"), QStringLiteral("GetManagedObjects"));
    _private->whenFinished(
        _private->bus().asyncCall(message),
        [this, uuid = fileSystem.uuid,
         completion = std::move(completion)](const QDBusPendingCallWatcher& finished) mutable {
            const QDBusPendingReply<ManagedObjects> reply = finished;
            if (reply.isError()) return completion(reply.error().message());
            const QDBusObjectPath device = deviceWithUuid(reply.value(), uuid);
            if (device.path().isEmpty()) return completion(localizedString(u"VolumeNotConnected"));
            _private->mountDevice(device, std::move(completion));
        });
}

} // namespace platform
