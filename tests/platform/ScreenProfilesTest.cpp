#include "platform/desktop/ScreenProfiles.h"

#include "support/Support.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QProcess>

using platform::ScreenProfiles;
using support::spinUntil;

namespace {

const QString root = u"/org/freedesktop/ColorManager"_s;
const QString service = u"org.freedesktop.ColorManager"_s;

/// A bus of its own, with a daemon that knows one screen.
class ColourDaemon final : public QDBusVirtualObject {
public:
    ColourDaemon() {
        _process.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        if (!_process.waitForStarted() || !_process.waitForReadyRead()) return;
        _address = QString::fromUtf8(_process.readLine()).trimmed();
        QDBusConnection bus = connection(u"daemon"_s);
        bus.registerVirtualObject(root, this, QDBusConnection::SubPath);
        bus.registerService(service);
    }
    ~ColourDaemon() override {
        for (const QString& name : _names)
            QDBusConnection::disconnectFromBus(name);
        _process.kill();
        _process.waitForFinished();
    }
    QDBusConnection connection(const QString& name) {
        _names += name;
        return QDBusConnection::connectToBus(_address, name);
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        const QVariantList told = call.arguments();
        if (call.member() == u"FindDeviceByProperty") {
            ++asked;
            const bool isKnown = told == QVariantList{u"XRANDR_name"_s, u"DP-1"_s};
            return bus.send(
                isKnown ? call.createReply(
                              QVariant::fromValue(QDBusObjectPath(root + u"/devices/one"_s)))
                        : call.createErrorReply(u"org.example.None"_s, u"none"_s));
        }
        if (told == QVariantList{service + u".Device"_s, u"Profiles"_s}) {
            QList<QDBusObjectPath> profiles;
            if (!file.isEmpty()) profiles += QDBusObjectPath(root + u"/profiles/used"_s);
            if (!file.isEmpty()) profiles += QDBusObjectPath(root + u"/profiles/other"_s);
            return bus.send(
                call.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(profiles)))));
        }
        if (told != QVariantList{service + u".Profile"_s, u"Filename"_s} ||
            !call.path().endsWith(u"/used"))
            return false;
        return bus.send(call.createReply(QVariant::fromValue(QDBusVariant(file))));
    }
    void tellChange() {
        QDBusConnection(u"daemon"_s)
            .send(
                QDBusMessage::createSignal(root, service, u"DeviceChanged"_s)
                << QVariant::fromValue(QDBusObjectPath(root + u"/devices/one"_s)));
    }

    QString file;
    int asked = 0;

private:
    QProcess _process;
    QString _address;
    QStringList _names;
};

} // namespace

TEST(ScreenProfilesTest, TheDaemonsProfileOfTheOutputComesLaterAndFollowsItsChanges) {
    const QTemporaryDir folder;
    ColourDaemon daemon;
    daemon.file = folder.filePath(u"screen.icc"_s);
    support::writeFile(daemon.file, "first profile");
    ScreenProfiles profiles(daemon.connection(u"asker"_s));
    QStringList changed;
    QObject::connect(
        &profiles, &ScreenProfiles::profileChanged, &profiles,
        [&](const QString& screen) { changed += screen; });
    EXPECT_EQ(profiles.profileOf(u"DP-1"_s), QByteArray());
    EXPECT_EQ(profiles.profileOf(u"DP-2"_s), QByteArray());
    ASSERT_TRUE(spinUntil([&] { return !changed.isEmpty() && daemon.asked == 2; }));
    EXPECT_EQ(profiles.profileOf(u"DP-1"_s), "first profile");
    EXPECT_EQ(profiles.profileOf(u"DP-2"_s), QByteArray());
    EXPECT_EQ(daemon.asked, 2); // not for each question

    daemon.file.clear(); // the user takes the profile away
    daemon.tellChange();
    ASSERT_TRUE(spinUntil([&] { return changed.size() == 2; }));
    EXPECT_EQ(profiles.profileOf(u"DP-1"_s), QByteArray());
    EXPECT_EQ(changed, (QStringList{u"DP-1"_s, u"DP-1"_s}));
}

TEST(ScreenProfilesTest, WithoutABusThereIsNoProfile) {
    ScreenProfiles profiles{QDBusConnection(QString())};
    EXPECT_EQ(profiles.profileOf(u"DP-1"_s), QByteArray());
}
