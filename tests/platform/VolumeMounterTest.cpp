#include "platform/VolumeMounter.h"

#include "support/Support.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QMap>

#include <gtest/gtest.h>

using platform::DiskServiceMounter;
using platform::FileSystemIdentity;
using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

namespace {

/// The desktop's disk service, with two disks, on a private connection.
class ToldDisks final : public QDBusVirtualObject {
public:
    ToldDisks() {
        qDBusRegisterMetaType<Interfaces>();
        qDBusRegisterMetaType<Objects>();
    }
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message.member() + u' ' + message.path());
        if (message.member() == QStringLiteral("GetManagedObjects")) {
            connection.send(
                isBroken ? message.createReply(QStringLiteral("nonsense"))
                         : message.createReply(QVariant::fromValue(disks())));
        } else if (refusal.isEmpty()) {
            connection.send(message.createReply(QStringLiteral("/media/user/Disk")));
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
        const QString block = QStringLiteral("org.freedesktop.UDisks2.Block");
        const auto withUuid = [&](const char* uuid) {
            return QVariantMap{{QStringLiteral("IdUUID"), QString::fromLatin1(uuid)}};
        };
        const QString fileSystem = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
        return {
            // A whole disk can carry the same mark as its partition, but can't be mounted.
            {QDBusObjectPath(QStringLiteral("/disks/a")), {{block, withUuid("ABCD-12ef")}}},
            {QDBusObjectPath(QStringLiteral("/disks/a1")),
             {{block, withUuid("ABCD-12ef")}, {fileSystem, {}}}},
            {QDBusObjectPath(QStringLiteral("/disks/b")),
             {{block, withUuid("")}, {fileSystem, {}}}},
        };
    }
};

class VolumeMounterTest : public testing::Test {
protected:
    VolumeMounterTest() {
        QObject::connect(
            &server, &QDBusServer::newConnection, &service, [this](QDBusConnection connection) {
                connection.registerVirtualObject(
                    QStringLiteral("/"), &service, QDBusConnection::SubPath);
            });
    }
    ~VolumeMounterTest() override { QDBusConnection::disconnectFromPeer(QStringLiteral("disks")); }

    /// What the user would be told; "mounted" for success.
    QString mount(const QByteArray& uuid) {
        QString outcome;
        mounter.mount({"vfat", uuid, "/dev/x", 0}, [&](const QString& error) {
            outcome = error.isEmpty() ? QStringLiteral("mounted") : error;
        });
        EXPECT_TRUE(outcome.isEmpty()) << "nothing waits";
        EXPECT_TRUE(support::spinUntil([&] { return !outcome.isEmpty(); }));
        return outcome;
    }

    ToldDisks service;
    QDBusServer server;
    std::function<QDBusConnection()> connect = [this] {
        return QDBusConnection::connectToPeer(server.address(), QStringLiteral("disks"));
    };
    DiskServiceMounter mounter{connect};
};

TEST_F(VolumeMounterTest, diskIsFoundByItsUuidAndMounted) {
    EXPECT_TRUE(mounter.canMount({"vfat", "abcd12ef", "/dev/x", 0}));
    EXPECT_FALSE(mounter.canMount({"nfs", "", "server:/x", 0}));
    EXPECT_EQ(mount("abcd12ef"), QStringLiteral("mounted"));
    EXPECT_EQ(service.calls.constLast(), QStringLiteral("Mount /disks/a1"));
}

TEST_F(VolumeMounterTest, failuresAreToldOnce) {
    EXPECT_NE(mount("0000"), QStringLiteral("mounted"));
    EXPECT_EQ(service.calls.size(), 1);
    service.refusal = QStringLiteral("not authorised");
    EXPECT_EQ(mount("abcd12ef"), service.refusal);
    service.isBroken = true;
    EXPECT_NE(mount("abcd12ef"), QStringLiteral("mounted"));
}

TEST_F(VolumeMounterTest, answerAfterTheEndIsDropped) {
    auto passing = std::make_unique<DiskServiceMounter>(connect);
    passing->mount({"vfat", "abcd12ef", "/dev/x", 0}, [](const QString&) { FAIL(); });
    passing.reset();
    EXPECT_EQ(mount("abcd12ef"), QStringLiteral("mounted"));
}

} // namespace
