#pragma once

#include "support/Support.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QProcess>

namespace support {

/// A desktop's services on a bus of their own, which write down what they are asked: its portal
/// and its screen saver. The loop has to run for their answers.
class ToldDesktop final : public QDBusVirtualObject {
public:
    ToldDesktop() {
        _daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        if (!_daemon.waitForReadyRead(60'000)) return;
        _address = QString::fromLatin1(_daemon.readLine().trimmed());
        QDBusConnection bus = connection();
        _isRunning = bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath) &&
                     bus.registerService(u"org.freedesktop.portal.Desktop"_s) &&
                     bus.registerService(u"org.freedesktop.ScreenSaver"_s);
    }
    ~ToldDesktop() override {
        QDBusConnection::disconnectFromBus(u"desktop"_s);
        _daemon.terminate();
        _daemon.waitForFinished();
    }

    [[nodiscard]] bool isRunning() const { return _isRunning; }
    [[nodiscard]] const QString& address() const { return _address; }

    bool hasPortal = true;
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
        if (!member.contains(u"nhibit"_s) && member != u"Close"_s) return false;
        QString call = (isForPortal(message) ? u"portal "_s : u"saver "_s) + member;
        if (member == u"Inhibit"_s && isForPortal(message))
            call += u' ' + message.arguments().at(1).toString();
        if (member == u"Close"_s) call += u' ' + message.path();
        if (member == u"UnInhibit"_s) call += u' ' + message.arguments().at(0).toString();
        calls.append(call);
        message.setDelayedReply(true);
        _held.append(message);
        if (!isHolding) answer();
        return true;
    }

private:
    [[nodiscard]] QDBusConnection connection() const {
        return QDBusConnection::connectToBus(_address, u"desktop"_s);
    }
    [[nodiscard]] static bool isForPortal(const QDBusMessage& message) {
        return message.interface().contains(u"portal"_s);
    }
    [[nodiscard]] QDBusMessage reply(const QDBusMessage& message) const {
        if (isForPortal(message) && !hasPortal)
            return message.createErrorReply(QDBusError::UnknownMethod, u"none"_s);
        if (message.member() != u"Inhibit"_s) return message.createReply();
        return isForPortal(message)
                   ? message.createReply(QVariant::fromValue(QDBusObjectPath(u"/request/7"_s)))
                   : message.createReply(42U);
    }

    QProcess _daemon;
    QString _address;
    bool _isRunning = false;
    QList<QDBusMessage> _held;
};

} // namespace support
