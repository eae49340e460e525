#include "platform/desktop/ScreenProfiles.h"

#include "platform/tasks/MainThread.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <array>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace platform {

namespace {

const QString service = QStringLiteral("org.freedesktop.ColorManager");
const QString managerPath = QStringLiteral("/org/freedesktop/ColorManager");
const QString deviceInterface = QStringLiteral("org.freedesktop.ColorManager.Device");
const QString profileInterface = QStringLiteral("org.freedesktop.ColorManager.Profile");
/// Of a profile; those with large tables take some megabytes.
constexpr qint64 mostBytes = qint64{16} << 20;

QVariant valueOf(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return {};
    QVariant value = answer.arguments().constFirst();
    if (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

QByteArray readProfile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > mostBytes) return {};
    return file.read(mostBytes);
}

/// The answers of the C library's kind.
template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

} // namespace

QByteArray profileOfRootWindow() {
    const auto* server = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!server || !server->connection()) return {};
    xcb_connection_t* connection = server->connection();
    constexpr std::string_view name = "_ICC_PROFILE";
    const Reply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(
            connection,
            xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) return {};
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const Reply<xcb_get_property_reply_t> property(
        xcb_get_property_reply(
            connection,
            xcb_get_property(
                connection, 0, root, atom->atom, XCB_ATOM_CARDINAL, 0,
                static_cast<std::uint32_t>(mostBytes / 4)),
            nullptr),
        &std::free);
    if (!property || property->format != 8 || property->bytes_after != 0) return {};
    return {
        static_cast<const char*>(xcb_get_property_value(property.get())),
        xcb_get_property_value_length(property.get())};
}

QDBusConnection ScreenProfiles::systemBus() {
    // Asking for a bus that is not there takes time.
    const bool isThere = qEnvironmentVariableIsSet("DBUS_SYSTEM_BUS_ADDRESS") ||
                         QFileInfo::exists(QStringLiteral("/run/dbus/system_bus_socket"));
    return isThere ? QDBusConnection::systemBus() : QDBusConnection(QString());
}

ScreenProfiles::ScreenProfiles(const QDBusConnection& bus, QObject* parent)
    : QObject(parent), _bus(bus) {
    if (!_bus.isConnected()) return;
    for (const char* signal : {"DeviceAdded", "DeviceChanged"})
        _bus.connect(
            service, managerPath, service, QString::fromLatin1(signal), this,
            SLOT(devicesChanged()));
}

QByteArray ScreenProfiles::profileOf(const QString& screenName) {
    assertMainThread();
    if (!_profiles.contains(screenName)) {
        _profiles.insert(screenName, {});
        ask(screenName);
    }
    return _profiles.value(screenName);
}

void ScreenProfiles::devicesChanged() {
    for (const QString& name : _profiles.keys())
        ask(name);
}

void ScreenProfiles::ask(const QString& screenName) {
    if (!_bus.isConnected()) return;
    QDBusMessage question = QDBusMessage::createMethodCall(
        service, managerPath, service, QStringLiteral("FindDeviceByProperty"));
    question << QStringLiteral("XRANDR_name") << screenName;
    call(question, [this, screenName](const QDBusMessage& found) {
        const auto device = valueOf(found).value<QDBusObjectPath>();
        if (device.path().isEmpty()) return setProfile(screenName, {});
        askForProperty(
            device.path(), deviceInterface, QStringLiteral("Profiles"),
            [this, screenName](const QDBusMessage& told) {
                const auto profiles =
                    qdbus_cast<QList<QDBusObjectPath>>(valueOf(told)); // the first is in use
                if (profiles.isEmpty()) return setProfile(screenName, {});
                askForProperty(
                    profiles.constFirst().path(), profileInterface, QStringLiteral("Filename"),
                    [this, screenName](const QDBusMessage& named) {
                        setProfile(screenName, readProfile(valueOf(named).toString()));
                    });
            });
    });
}

void ScreenProfiles::askForProperty(
    const QString& object, const QString& interface, const QString& name, Answer answer) {
    QDBusMessage question = QDBusMessage::createMethodCall(
        service, object, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << interface << name;
    call(question, std::move(answer));
}

void ScreenProfiles::call(const QDBusMessage& question, Answer answer) {
    QDBusMessage quiet = question;
    quiet.setAutoStartService(false); // a daemon that nobody uses has no profiles
    auto* watcher = new QDBusPendingCallWatcher(_bus.asyncCall(quiet), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this,
        [answer = std::move(answer)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            answer(finished->reply());
        });
}

void ScreenProfiles::setProfile(const QString& screenName, const QByteArray& profile) {
    QByteArray& known = _profiles[screenName];
    if (known == profile) return;
    known = profile;
    Q_EMIT profileChanged(screenName);
}

} // namespace platform
