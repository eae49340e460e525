#include "ui/ColorScheme.h"

#include "platform/desktop/SessionBus.h"
#include "platform/tasks/MainThread.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString group = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");
constexpr int longestWait = 100; // milliseconds

} // namespace

ColorScheme::ColorScheme(QObject* parent) : QObject(parent) {
    QDBusConnection bus = platform::sessionBus();
    if (!bus.isConnected()) return;
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
    question << group << key;
    const QDBusMessage answer = bus.call(question, QDBus::Block, longestWait);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return;
    _preferred = schemeOf(answer.arguments().constFirst());
    bus.connect(
        service, path, interface, QStringLiteral("SettingChanged"), this,
        SLOT(settingChanged(QString, QString, QDBusVariant)));
}

void ColorScheme::settingChanged(
    const QString& changedGroup, const QString& changedKey, const QDBusVariant& value) {
    platform::assertMainThread();
    if (changedGroup != group || changedKey != key) return;
    _preferred = schemeOf(value.variant());
    Q_EMIT preferredChanged(_preferred);
}

PBThemes::Scheme ColorScheme::schemeOf(const QVariant& value) {
    QVariant plain = value;
    while (plain.canConvert<QDBusVariant>())
        plain = plain.value<QDBusVariant>().variant();
    // 1 is the portal's number for dark, 2 for light, 0 for no preference.
    return plain.toUInt() == 1 ? PBThemes::Scheme::Dark : PBThemes::Scheme::Light;
}
