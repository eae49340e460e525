#include "platform/desktop/IdleInhibitor.h"

#include "support/Support.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QProcess>

namespace {

/// A desktop's services, which write down what they are asked.
struct ToldDesktop final : QDBusVirtualObject {
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const bool isPortal = message.interface().contains(u"portal"_s);
        calls.append((isPortal ? u"portal "_s : u"saver "_s) + message.member());
        if (message.member() == u"Inhibit"_s && isPortal)
            calls.last() += u' ' + message.arguments().at(1).toString();
        if (message.member() == u"Close"_s) calls.last() += u' ' + message.path();
        if (message.member() == u"UnInhibit"_s)
            calls.last() += u' ' + message.arguments().at(0).toString();
        if (isHolding) {
            message.setDelayedReply(true);
            held.append(message);
        } else {
            bus.send(reply(message));
        }
        return true;
    }
    QDBusMessage reply(const QDBusMessage& message) const {
        const bool isPortal = message.interface().contains(u"portal"_s);
        if (isPortal && !hasPortal)
            return message.createErrorReply(QDBusError::UnknownMethod, u"none"_s);
        if (message.member() != u"Inhibit"_s) return message.createReply();
        return isPortal ? message.createReply(QVariant::fromValue(QDBusObjectPath(u"/request/7"_s)))
                        : message.createReply(42U);
    }
    bool hasPortal = true;
    bool isHolding = false;
    QList<QDBusMessage> held;
    QStringList calls;
};

/// On a bus of its own.
struct IdleInhibitorTest : testing::Test {
    QProcess daemon;
    ToldDesktop desktop;
    QString address;

    void SetUp() override {
        daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        if (!daemon.waitForReadyRead(60'000)) GTEST_SKIP() << "there is no bus";
        address = QString::fromLatin1(daemon.readLine().trimmed());
        QDBusConnection service = QDBusConnection::connectToBus(address, u"desktop"_s);
        ASSERT_TRUE(service.registerVirtualObject(u"/"_s, &desktop, QDBusConnection::SubPath));
        ASSERT_TRUE(service.registerService(u"org.freedesktop.portal.Desktop"_s));
        ASSERT_TRUE(service.registerService(u"org.freedesktop.ScreenSaver"_s));
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus(u"desktop"_s);
        QDBusConnection::disconnectFromBus(u"program"_s);
        daemon.terminate();
        daemon.waitForFinished();
    }
    std::unique_ptr<platform::IdleInhibitor> make() {
        return platform::makeIdleInhibitor(QDBusConnection::connectToBus(address, u"program"_s));
    }
    /// Waits until the desktop was asked for so much.
    QString calls(qsizetype count) {
        EXPECT_TRUE(support::spinUntil([&] { return desktop.calls.size() >= count; }));
        return std::exchange(desktop.calls, {}).join(u", "_s);
    }
};

TEST_F(IdleInhibitorTest, thePortalIsAskedOnceAndReleasedByItsRequest) {
    const auto inhibitor = make();
    inhibitor->release();
    inhibitor->inhibit(u"a show"_s);
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    inhibitor->release();
    EXPECT_EQ(calls(1), u"portal Close /request/7"_s);
    inhibitor->release();
    inhibitor->inhibit(u"another"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
}

TEST_F(IdleInhibitorTest, withoutAPortalTheScreenSaverIsAskedAndItsCookieReleases) {
    desktop.hasPortal = false;
    const auto inhibitor = make();
    desktop.isHolding = true;
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    QDBusConnection service(u"desktop"_s);
    service.send(desktop.reply(desktop.held.takeFirst()));
    EXPECT_EQ(calls(1), u"saver Inhibit"_s);
    inhibitor->release(); // too early for its answer
    desktop.isHolding = false;
    service.send(desktop.reply(desktop.held.takeFirst()));
    EXPECT_EQ(calls(1), u"saver UnInhibit 42"_s);
}

TEST_F(IdleInhibitorTest, anAnswerThatComesTooLateIsUndone) {
    desktop.isHolding = true;
    const auto inhibitor = make();
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    inhibitor->release();
    desktop.isHolding = false;
    QDBusConnection(u"desktop"_s).send(desktop.reply(desktop.held.takeFirst()));
    EXPECT_EQ(calls(1), u"portal Close /request/7"_s);
}

} // namespace
