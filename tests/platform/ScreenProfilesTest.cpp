#include "platform/desktop/ScreenProfiles.h"

#include "support/ToldDesktop.h"

using platform::ScreenProfiles;
using support::spinUntil;

namespace {

const QString root = u"/org/freedesktop/ColorManager"_s;
const QString service = u"org.freedesktop.ColorManager"_s;

/// A daemon that knows one screen.
class ColourDaemon final : public QDBusVirtualObject {
public:
    explicit ColourDaemon(const QDBusConnection& connection) : _connection(connection) {
        _connection.registerVirtualObject(root, this, QDBusConnection::SubPath);
        _connection.registerService(service);
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
        const auto tell = [&](const auto& value) {
            return bus.send(
                call.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(value)))));
        };
        if (told == QVariantList{service + u".Device"_s, u"Profiles"_s}) {
            QList<QDBusObjectPath> profiles;
            for (const QString& name : {u"used"_s, u"other"_s})
                if (!file.isEmpty()) profiles += QDBusObjectPath(root + u"/profiles/"_s + name);
            return tell(profiles);
        }
        return told == QVariantList{service + u".Profile"_s, u"Filename"_s} &&
               call.path().endsWith(u"/used") && tell(file);
    }
    void tellChange() {
        _connection.send(
            QDBusMessage::createSignal(root, service, u"DeviceChanged"_s)
            << QVariant::fromValue(QDBusObjectPath(root + u"/devices/one"_s)));
    }

    QString file;
    int asked = 0;

private:
    QDBusConnection _connection;
};

} // namespace

TEST(ScreenProfilesTest, TheDaemonsProfileOfTheOutputComesLaterAndFollowsItsChanges) {
    const QTemporaryDir folder;
    support::PrivateBus bus;
    ColourDaemon daemon(bus.connection(u"daemon"_s));
    daemon.file = folder.filePath(u"screen.icc"_s);
    support::writeFile(daemon.file, "first profile");
    ScreenProfiles profiles(bus.connection(u"asker"_s));
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
