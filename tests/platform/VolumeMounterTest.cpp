#include "platform/volumes/VolumeMounter.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/volumes/DesktopShare.h"
#include "platform/volumes/TableMounter.h"

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
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message.member() + u' ' + message.path());
        const bool isAskedForDisks = message.member() == u"GetManagedObjects"_s;
        connection.send(
            isAskedForDisks && !isBroken ? message.createReply(QVariant::fromValue(disks()))
            : refusal.isEmpty()          ? message.createReply(u"/media/user/Disk"_s)
                                : message.createErrorReply(QDBusError::AccessDenied, refusal));
        return true;
    }
    static Objects disks() {
        const QString block = u"org.freedesktop.UDisks2.Block"_s;
        const QString fileSystem = u"org.freedesktop.UDisks2.Filesystem"_s;
        const QVariantMap marked{{u"IdUUID"_s, u"ABCD-12ef"_s}};
        return {
            // A whole disk can carry the same mark as its partition, but can't be mounted.
            {QDBusObjectPath(u"/disks/a"_s), {{block, marked}}},
            {QDBusObjectPath(u"/disks/a1"_s), {{block, marked}, {fileSystem, {}}}},
            {QDBusObjectPath(u"/disks/b"_s), {{block, {{u"IdUUID"_s, u""_s}}}, {fileSystem, {}}}}};
    }

    bool isBroken = false;
    QString refusal;
    QStringList calls;
};

/// What the user would be told; "mounted" for success.
QString outcomeOf(platform::VolumeMounter& mounter, const FileSystemIdentity& identity) {
    QString outcome;
    mounter.mount(
        identity, [&](const QString& error) { outcome = error.isEmpty() ? u"mounted"_s : error; });
    EXPECT_TRUE(outcome.isEmpty()) << "nothing waits";
    EXPECT_TRUE(support::spinUntil([&] { return !outcome.isEmpty(); }));
    return outcome;
}

struct VolumeMounterTest : testing::Test {
    VolumeMounterTest() {
        qDBusRegisterMetaType<Interfaces>();
        qDBusRegisterMetaType<Objects>();
        QObject::connect(
            &server, &QDBusServer::newConnection, &service, [this](QDBusConnection connection) {
                connection.registerVirtualObject(u"/"_s, &service, QDBusConnection::SubPath);
            });
    }
    ~VolumeMounterTest() override { QDBusConnection::disconnectFromPeer(u"disks"_s); }

    QString mount(const QByteArray& uuid) {
        return outcomeOf(mounter, {"vfat", uuid, "/dev/x", 0});
    }

    ToldDisks service;
    QDBusServer server;
    DiskServiceMounter mounter{
        [this] { return QDBusConnection::connectToPeer(server.address(), u"disks"_s); }};
};

TEST_F(VolumeMounterTest, diskIsFoundByItsUuidAndMountedOrItIsToldWhyNot) {
    EXPECT_TRUE(mounter.canMount({"vfat", "abcd12ef", "/dev/x", 0}));
    EXPECT_FALSE(mounter.canMount({"nfs", "", "server:/x", 0}));
    const DiskServiceMounter lonely([] { return QDBusConnection(u"none"_s); });
    EXPECT_FALSE(lonely.canMount({"vfat", "abcd12ef", "/dev/x", 0}));
    EXPECT_EQ(mount("abcd12ef"), u"mounted"_s);
    EXPECT_EQ(service.calls.takeLast(), u"Mount /disks/a1"_s);
    EXPECT_EQ(mount("0000"), platform::localizedString(u"VolumeNotConnected"));
    EXPECT_EQ(service.calls.filter(u"Mount"_s), QStringList());
    service.refusal = u"not authorised"_s;
    EXPECT_EQ(mount("abcd12ef"), service.refusal);
    service.refusal.clear();
    service.isBroken = true;
    EXPECT_NE(mount("abcd12ef"), u"mounted"_s);
}

} // namespace

TEST(TableMounterTest, whatTheSystemLetsUsersMountIsMountedAndWhatHinderedItIsTold) {
    const QTemporaryDir folder;
    support::writeFile(
        folder.filePath(u"table"_s), "# servers\n"
                                     "nas:/photos /mnt/photos nfs noauto,user 0 0\n"
                                     "nas:/auto /mnt/auto nfs x-systemd.automount 0 0\n"
                                     "nas:/root /mnt/root nfs noauto 0 0\n");
    const auto system = [&](const char* mount) {
        const QString program = folder.filePath(u"mount"_s);
        support::writeFile(program, QByteArray("#!/bin/sh\n") + mount);
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner);
        return platform::TableMounter::System{
            folder.filePath(u"table"_s), program, folder.filePath(u"none"_s)};
    };
    const auto server = [](const char* source) { return FileSystemIdentity{{}, {}, source, 0}; };
    platform::TableMounter able(system("echo \"no $1\" >&2; exit 32"));
    platform::AnyMounter any({&able});
    for (const auto& [source, can] :
         {std::pair("nas:/photos", true), {"nas:/auto", true}, {"nas:/root", false}, {"", false}})
        EXPECT_EQ(any.canMount(server(source)), can) << source;
    EXPECT_EQ(outcomeOf(any, server("nas:/photos")), u"no /mnt/photos"_s);
    EXPECT_NE(outcomeOf(any, server("nas:/auto")), u"mounted"_s) << "nothing could look at it";
    static_cast<void>(system("exit 0"));
    EXPECT_EQ(outcomeOf(any, server("nas:/photos")), u"mounted"_s);
    // What the desktop shows as folders, by its own program.
    platform::ShareMounter desktop(system("echo \"$@\" >&2; exit 2").mount);
    EXPECT_EQ(
        outcomeOf(desktop, {"fuse.gvfsd-fuse", "", "smb-share:server=nas,share=a", 0}),
        u"mount smb://nas/a"_s);
}

TEST(ShareMounterTest, theDesktopIsAskedByTheAddressThatItsFolderNames) {
    const platform::ShareMounter mounter;
    for (const auto& [share, address] :
         {std::pair("smb-share:server=nas,share=my%20photos,user=ann", "smb://ann@nas/my%20photos"),
          {"sftp:host=box,port=2222", "sftp://box:2222/"},
          {"dav:host=cloud.example,ssl=true,prefix=%2Fdav%2Fann", "davs://cloud.example/dav/ann"},
          {"dav:host=cloud.example,ssl=false", "dav://cloud.example/"},
          {"mtp:host=Maker_Phone_12", "mtp://Maker_Phone_12/"},
          {"smb-share:share=a", ""},
          {"../x:host=a", ""},
          {"daemon", ""}}) {
        EXPECT_EQ(platform::addressOfDesktopShare(share), QLatin1StringView(address)) << share;
        EXPECT_EQ(mounter.canMount({"fuse.gvfsd-fuse", "", share, 0}), *address != 0) << share;
    }
    EXPECT_FALSE(mounter.canMount({"fuse.sshfs", "", "sftp:host=box", 0}));
}
