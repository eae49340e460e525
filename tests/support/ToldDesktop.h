#pragma once

#include "support/Support.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QProcess>

namespace support {

/// A message bus of its own, while it lives.
class PrivateBus {
public:
    explicit PrivateBus(
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
        _daemon.setProcessEnvironment(environment);
        _daemon.setStandardErrorFile(QProcess::nullDevice());
        _daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        if (_daemon.waitForReadyRead(60'000))
            _address = QString::fromLatin1(_daemon.readLine().trimmed());
    }
    ~PrivateBus() {
        for (const QString& name : std::as_const(_names))
            QDBusConnection::disconnectFromBus(name);
        _daemon.terminate();
        _daemon.waitForFinished();
    }
    [[nodiscard]] const QString& address() const { return _address; }
    /// The one of that name.
    [[nodiscard]] QDBusConnection connection(const QString& name) {
        _names.insert(name);
        return QDBusConnection::connectToBus(_address, name);
    }

private:
    QProcess _daemon;
    QString _address;
    QSet<QString> _names;
};

/// A desktop's services on a bus of their own, which write down what they are asked: its portal,
/// its file manager and its screen saver. The loop has to run for their answers.
class ToldDesktop final : public QDBusVirtualObject {
public:
    ToldDesktop() {
        QDBusConnection bus = connection();
        _isRunning = bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath) &&
                     bus.registerService(u"org.freedesktop.portal.Desktop"_s) &&
                     bus.registerService(u"org.freedesktop.FileManager1"_s) &&
                     bus.registerService(u"org.freedesktop.ScreenSaver"_s);
    }

    [[nodiscard]] bool isRunning() const { return _isRunning; }
    [[nodiscard]] const QString& address() const { return _bus.address(); }
    /// Of the program that asks.
    [[nodiscard]] QDBusConnection programsBus() { return _bus.connection(u"program"_s); }

    bool hasPortal = true;
    /// What becomes of requests to the portal: 0 done, 1 cancelled, 2 failed.
    uint response = 0;
    /// Answers wait for `answer`.
    bool isHolding = false;
    void answer() { connection().send(reply(_held.takeFirst())); }
    QStringList calls;

    /// What it was asked since the last call of this, once that is so much.
    [[nodiscard]] QString toldCalls(qsizetype count) {
        EXPECT_TRUE(spinUntil([&] { return calls.size() >= count; }));
        return std::exchange(calls, {}).join(u", "_s);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QString member = message.member();
        // The toolkit asks the portal for colours on its own.
        if (member == u"ShowItems"_s) {
            calls.append(member + u' ' + message.arguments().at(0).toStringList().join(u' '));
            return connection().send(message.createReply());
        }
        if (!member.contains(u"nhibit"_s) && member != u"Close"_s && !isRequest(message))
            return false;
        QString call = (isForPortal(message) ? u"portal "_s : u"saver "_s) + member;
        if (member == u"Inhibit"_s && isForPortal(message))
            call += u' ' + message.arguments().at(1).toString();
        if (member == u"Close"_s) call += u' ' + message.path();
        if (member == u"UnInhibit"_s) call += u' ' + message.arguments().at(0).toString();
        if (member == u"SetWallpaperFile"_s)
            call += u' ' + contentOf(message.arguments().at(1).value<QDBusUnixFileDescriptor>());
        if (member == u"ComposeEmail"_s) call += u' ' + attachmentsOf(message);
        calls.append(call);
        message.setDelayedReply(true);
        _held.append(message);
        if (!isHolding) answer();
        if (isRequest(message) && hasPortal) {
            QDBusMessage signal = QDBusMessage::createSignal(
                requestOf(message), u"org.freedesktop.portal.Request"_s, u"Response"_s);
            signal << response << QVariantMap();
            connection().send(signal);
        }
        return true;
    }

private:
    [[nodiscard]] QDBusConnection connection() { return _bus.connection(u"desktop"_s); }
    [[nodiscard]] static bool isForPortal(const QDBusMessage& message) {
        return message.interface().contains(u"portal"_s);
    }
    [[nodiscard]] static bool isRequest(const QDBusMessage& message) {
        return message.member() == u"SetWallpaperFile"_s || message.member() == u"ComposeEmail"_s;
    }
    [[nodiscard]] static QVariantMap optionsOf(const QDBusMessage& message) {
        return qdbus_cast<QVariantMap>(message.arguments().last());
    }
    [[nodiscard]] static QString requestOf(const QDBusMessage& message) {
        QString sender = message.service().mid(1);
        sender.replace(u'.', u'_');
        return u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
            sender, optionsOf(message).value(u"handle_token"_s).toString());
    }
    [[nodiscard]] static QString contentOf(const QDBusUnixFileDescriptor& descriptor) {
        QFile file;
        if (!file.open(descriptor.fileDescriptor(), QIODevice::ReadOnly)) return u"none"_s;
        file.seek(0);
        return QString::fromUtf8(file.readAll());
    }
    [[nodiscard]] static QString attachmentsOf(const QDBusMessage& message) {
        QStringList contents;
        for (const auto& each : qdbus_cast<QList<QDBusUnixFileDescriptor>>(
                 optionsOf(message).value(u"attachment_fds"_s)))
            contents += contentOf(each);
        return contents.join(u'+');
    }
    [[nodiscard]] QDBusMessage reply(const QDBusMessage& message) const {
        if (isForPortal(message) && !hasPortal)
            return message.createErrorReply(QDBusError::UnknownMethod, u"none"_s);
        if (isRequest(message))
            return message.createReply(QVariant::fromValue(QDBusObjectPath(requestOf(message))));
        if (message.member() != u"Inhibit"_s) return message.createReply();
        return isForPortal(message)
                   ? message.createReply(QVariant::fromValue(QDBusObjectPath(u"/request/7"_s)))
                   : message.createReply(42U);
    }

    PrivateBus _bus;
    bool _isRunning = false;
    QList<QDBusMessage> _held;
};

/// With such a desktop, where there can be one.
struct DesktopTest : testing::Test {
    void SetUp() override {
        if (!desktop.isRunning()) GTEST_SKIP() << "there is no bus";
    }
    ToldDesktop desktop;
};

} // namespace support
