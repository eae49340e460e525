#include "platform/VolumeMounter.h"

#include "support/Support.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QMap>

using platform::DiskServiceMounter;
using platform::FileSystemIdentity;
using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

namespace {

/// The desktop's disk service, with two disks, on a private connection.
struct ToldDisks final : QDBusVirtualObject {
    ToldDisks() {
        qDBusRegisterMetaType<Interfaces>();
        qDBusRegisterMetaType<Objects>();
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message.member() + u' ' + message.path());
        if (message.member() == u"GetManagedObjects"_s) {
            connection.send(
                isBroken ? message.createReply(u"nonsense"_s)
                         : message.createReply(QVariant::fromValue(disks())));
        } else if (refusal.isEmpty()) {
            connection.send(message.createReply(u"/media/user/Disk"_s));
        } else {
            connection.send(message.createErrorReply(QDBusError::AccessDenied, refusal));
        }
        return true;
    }

    bool isBroken = false;
    QString refusal;
    QStringList calls;

private:
    static Objects disks() {
        const QString block = u"org.freedesktop.UDisks2.Block"_s;
        const auto withUuid = [&](const char* uuid) {
            return QVariantMap{{u"IdUUID"_s, QString::fromLatin1(uuid)}};
        };
        const QString fileSystem = u"org.freedesktop.UDisks2.Filesystem"_s;
        return {
            // A whole disk can carry the same mark as its partition, but can't be mounted.
            {QDBusObjectPath(u"/disks/a"_s), {{block, withUuid("ABCD-12ef")}}},
            {QDBusObjectPath(u"/disks/a1"_s), {{block, withUuid("ABCD-12ef")}, {fileSystem, {}}}},
            {QDBusObjectPath(u"/disks/b"_s), {{block, withUuid("")}, {fileSystem, {}}}}};
    }
};

struct VolumeMounterTest : testing::Test {
    VolumeMounterTest() {
        QObject::connect(
            &server, &QDBusServer::newConnection, &service, [this](QDBusConnection connection) {
                connection.registerVirtualObject(u"/"_s, &service, QDBusConnection::SubPath);
            });
    }
    ~VolumeMounterTest() override { QDBusConnection::disconnectFromPeer(u"disks"_s); }

    /// What the user would be told; "mounted" for success.
    QString mount(const QByteArray& uuid) {
        QString outcome;
        mounter.mount({"vfat", uuid, "/dev/x", 0}, [&](const QString& error) {
            outcome = error.isEmpty() ? u"mounted"_s : error;
        });
        EXPECT_TRUE(outcome.isEmpty()) << "nothing waits";
        EXPECT_TRUE(support::spinUntil([&] { return !outcome.isEmpty(); }));
        return outcome;
    }

    ToldDisks service;
    QDBusServer server;
    std::function<QDBusConnection()> connect = [this] {
        return QDBusConnection::connectToPeer(server.address(), u"disks"_s);
    };
    DiskServiceMounter mounter{connect};
};

TEST_F(VolumeMounterTest, diskIsFoundByItsUuidAndMounted) {
    EXPECT_TRUE(mounter.canMount({"vfat", "abcd12ef", "/dev/x", 0}));
    EXPECT_FALSE(mounter.canMount({"nfs", "", "server:/x", 0}));
    EXPECT_EQ(mount("abcd12ef"), u"mounted"_s);
    EXPECT_EQ(service.calls.constLast(), u"Mount /disks/a1"_s);
}

TEST_F(VolumeMounterTest, failuresAreToldOnce) {
    EXPECT_NE(mount("0000"), u"mounted"_s);
    EXPECT_EQ(service.calls.size(), 1);
    service.refusal = u"not authorised"_s;
    EXPECT_EQ(mount("abcd12ef"), service.refusal);
    service.isBroken = true;
    EXPECT_NE(mount("abcd12ef"), u"mounted"_s);
}

TEST_F(VolumeMounterTest, answerAfterTheEndIsDropped) {
    auto passing = std::make_unique<DiskServiceMounter>(connect);
    passing->mount({"vfat", "abcd12ef", "/dev/x", 0}, [](const QString&) { FAIL(); });
    passing.reset();
    EXPECT_EQ(mount("abcd12ef"), u"mounted"_s);
}

} // namespace
