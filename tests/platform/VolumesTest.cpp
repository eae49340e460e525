#include "platform/Volumes.h"
#include "platform/VolumeWatcher.h"

#include "support/Support.h"

#include <sys/mount.h>

using namespace platform;

namespace {

/// A mount table and a sysfs made of files.
struct VolumesTest : testing::Test {
    VolumesTest() {
        sources.mountInfo = path(u"mountinfo");
        sources.sysfs = path(u"sys");
        sources.udevData = path(u"udev");
        sources.disksByUuid = path(u"by-uuid");
        QDir().mkpath(path(u"sys/dev/block"));
        addDisk(u"8:1", u"pci0/ata1/block/sda/sda1", true);
        addMount("20 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw");
    }

    QString path(QStringView below) const { return _folder.path() + u'/' + below.toString(); }

    void addDisk(QStringView number, QStringView device, bool isPartition = false) {
        const QString folder = path(u"sys/devices/") + device.toString();
        QDir().mkpath(folder);
        support::writeFile(folder + u"/dev"_s, number.toUtf8() + '\n');
        if (isPartition) support::writeFile(folder + u"/partition"_s, "1\n");
        QFile::link(folder, path(u"sys/dev/block/") + number.toString());
    }
    void addAttribute(QStringView device, QStringView name, const QByteArray& value) {
        support::writeFile(
            path(u"sys/devices/") + device.toString() + u'/' + name.toString(), value);
    }
    void addMount(const QByteArray& line) {
        _table += line + '\n';
        support::writeFile(sources.mountInfo, _table);
    }
    VolumeProperties propertiesAt(QStringView mountPoint) const {
        const Volumes volumes(sources);
        const MountTable table = volumes.mountTable();
        const Mount* mount = table.mountOfPath(mountPoint.toString());
        return mount ? volumes.properties(*mount, table) : VolumeProperties();
    }

    VolumeSources sources;

private:
    QTemporaryDir _folder;
    QByteArray _table;
};

constexpr VolumeProperties local{};

TEST_F(VolumesTest, mountTableIsReadWithItsEscapesAndJunk) {
    const MountTable table = MountTable::parse(
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:17 /sub /mnt/my\\040disk\\134x rw,nosuid shared:3 master:4 - xfs /dev/sdb1 rw\n"
        "junk\n1 2 3\n\n"
        "22 20 0:40 / /mnt/x rw - nfs4 host:/a\\040b rw,addr=1.2.3.4\n"
        "23 22 8:18 / /mnt/x rw - ext4 /dev/sdb2 rw");
    ASSERT_EQ(table.mounts().size(), 4u);
    const Mount* disk = table.mountOfPath(u"/mnt/my disk\\x/a/b"_s);
    ASSERT_TRUE(disk);
    EXPECT_EQ(disk->id, 21u);
    EXPECT_EQ(disk->minor, 17u);
    EXPECT_EQ(pathInFileSystem(*disk, u"/mnt/my disk\\x/a"_s), u"/sub/a"_s);
    EXPECT_EQ(pathBelowMount(*disk, u"/sub/a/b"_s), u"/mnt/my disk\\x/a/b"_s);
    EXPECT_TRUE(pathBelowMount(*disk, u"/subway"_s).isEmpty());
    EXPECT_EQ(table.mounts()[2].source, "host:/a b");
    // Mounted over the server's folder, so that is what the path shows.
    EXPECT_EQ(table.mountOfPath(u"/mnt/x/y"_s)->id, 23u);
    EXPECT_EQ(table.mountOfPath(u"/mnt/xy"_s)->id, 20u);
    EXPECT_FALSE(table.mountOfPath(u"relative"_s));
}

TEST_F(VolumesTest, kindOfVolumeFollowsBusMediumAndFileSystem) {
    const VolumeProperties network{
        .isLocal = false, .isEjectable = false, .isRemovable = false, .isInternal = false};
    addDisk(u"8:17", u"pci0/usb2/2-1/host3/block/sdb/sdb1", true);
    addMount("30 20 8:17 / /data/stick rw - ext4 /dev/sdb1 rw");
    addDisk(u"8:33", u"pci0/ata2/block/sdc/sdc1", true);
    addMount("31 20 8:33 / /data/disk rw - ext4 /dev/sdc1 rw");
    addMount("32 20 8:33 / /media/user/Disk rw - ext4 /dev/sdc1 rw");
    addDisk(u"179:1", u"pci0/mmc_host/mmc0/mmc0:1/block/mmcblk0/mmcblk0p1", true);
    addAttribute(u"pci0/mmc_host/mmc0/mmc0:1/block/mmcblk0/device", u"type", "SD\n");
    addMount("33 20 179:1 / /data/card rw - vfat /dev/mmcblk0p1 rw");
    addDisk(u"179:9", u"pci0/mmc_host/mmc1/mmc1:1/block/mmcblk1");
    addAttribute(u"pci0/mmc_host/mmc1/mmc1:1/block/mmcblk1/device", u"type", "MMC\n");
    addMount("34 20 179:9 / /data/soldered rw - ext4 /dev/mmcblk1 rw");
    addDisk(u"11:0", u"pci0/ata3/block/sr0");
    addAttribute(u"pci0/ata3/block/sr0", u"removable", "1\n");
    addMount("35 20 11:0 / /data/disc ro - udf /dev/sr0 ro");
    // An encrypted container on the stick: the mapped device tells nothing, what it is made of
    // does.
    addDisk(u"253:0", u"virtual/block/dm-0");
    QDir().mkpath(path(u"sys/devices/virtual/block/dm-0/slaves"));
    QFile::link(
        path(u"sys/devices/pci0/usb2/2-1/host3/block/sdb/sdb1"),
        path(u"sys/devices/virtual/block/dm-0/slaves/sdb1"));
    addMount("36 20 253:0 / /data/secret rw - ext4 /dev/mapper/secret rw");
    addMount("37 20 0:50 / /data/nfs rw - nfs4 host:/export rw");
    addMount("38 20 0:51 / /data/ssh rw - fuse.sshfs me@host:/ rw");
    addMount("39 20 0:52 / /data/dav rw - fuse https://host/dav rw");
    addMount("40 20 0:53 / /media/user/phone rw - fuse.jmtpfs jmtpfs rw");
    addMount("41 20 0:54 / /data/memory rw - tmpfs tmpfs rw");
    addMount("42 20 0:55 / /media/share rw - cifs //host/share rw");

    for (const auto* place : {u"/home", u"/data/disk", u"/data/soldered", u"/data/memory"})
        EXPECT_EQ(propertiesAt(place), local) << qPrintable(QStringView(place).toString());
    for (const auto* place : {u"/data/nfs", u"/data/ssh", u"/data/dav", u"/media/share"})
        EXPECT_EQ(propertiesAt(place), network) << qPrintable(QStringView(place).toString());
    EXPECT_FALSE(propertiesAt(u"/data/stick").isInternal);
    EXPECT_FALSE(propertiesAt(u"/data/secret").isInternal);
    EXPECT_TRUE(propertiesAt(u"/media/user/Disk").isEjectable);
    EXPECT_TRUE(propertiesAt(u"/data/card").isRemovable);
    EXPECT_TRUE(propertiesAt(u"/data/disc").isEjectable);
    EXPECT_TRUE(propertiesAt(u"/media/user/phone").isRemovable);
    EXPECT_TRUE(propertiesAt(u"/media/user/phone").isLocal);
    // A system that runs from a stick is at home there.
    addDisk(u"8:49", u"pci0/usb1/1-1/block/sdd/sdd1", true);
    addMount("50 1 8:49 / / rw - ext4 /dev/sdd1 rw");
    addMount("51 50 8:49 /home /home rw - ext4 /dev/sdd1 rw");
    EXPECT_EQ(propertiesAt(u"/home/user"), local);
}

TEST_F(VolumesTest, uuidComesFromUdevOrTheDiskLinks) {
    const Volumes volumes(sources);
    support::writeFile(path(u"udev/b8:1"), "S:x\nE:ID_FS_UUID=AB12-cd34\nE:ID_FS_TYPE=vfat\n");
    const MountTable table = volumes.mountTable();
    const QString nowhere = path(u"nowhere");
    EXPECT_EQ(volumes.identity(table.mounts()[0], nowhere).uuid, "ab12cd34");
    QFile::remove(path(u"udev/b8:1"));
    QDir().mkpath(path(u"by-uuid"));
    support::writeFile(path(u"dev/sda1"), "");
    QFile::link(u"../dev/sda1"_s, path(u"by-uuid/0011-2233"));
    EXPECT_EQ(volumes.identity(table.mounts()[0], nowhere).uuid, "00112233");
}

TEST_F(VolumesTest, fileSystemsAgreeByTheBestMarkBothKnow) {
    const FileSystemIdentity disk{"ext4", "aa", "/dev/sda1", 7};
    EXPECT_TRUE(disk.agreesWith({"ext4", "aa", "/dev/sdc9", 0}));
    EXPECT_FALSE(disk.agreesWith({"ext4", "bb", "/dev/sda1", 7}));
    EXPECT_TRUE(disk.agreesWith({"ext4", "", "/dev/root", 7}));
    EXPECT_FALSE(disk.agreesWith({"ext4", "", "/dev/sda1", 8}));
    EXPECT_TRUE(disk.agreesWith({"ext4", "", "/dev/sda1", 0}));
    EXPECT_TRUE((FileSystemIdentity{"nfs4", "", "h:/x", 0}).agreesWith({"nfs", "", "h:/x", 0}));
    const FileSystemIdentity subvolume{"btrfs", "aa", "/dev/sda1", 7};
    EXPECT_FALSE(subvolume.agreesWith({"btrfs", "aa", "/dev/sda1", 8}));
}

/// What a watcher tells, in order.
std::unique_ptr<VolumeWatcher> watcherOf(const QString& mountInfo, QStringList& told) {
    auto watcher = std::make_unique<VolumeWatcher>(mountInfo);
    const auto note = [&told](QChar sign) {
        return [&told, sign](const QString& place) { told.append(sign + place); };
    };
    QObject::connect(watcher.get(), &VolumeWatcher::volumeDidMount, watcher.get(), note(u'+'));
    QObject::connect(watcher.get(), &VolumeWatcher::volumeDidUnmount, watcher.get(), note(u'-'));
    return watcher;
}

TEST_F(VolumesTest, differencesOfTheMountTableAreToldOnce) {
    QStringList told;
    const auto watcher = watcherOf(sources.mountInfo, told);
    addMount("60 20 0:60 / /mnt/a rw - tmpfs a rw");
    addMount("61 20 0:61 / /proc rw - proc proc rw");
    watcher->check();
    watcher->check();
    support::writeFile(
        sources.mountInfo, "20 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                           "60 20 0:62 / /mnt/b rw - tmpfs a rw\n");
    watcher->check();
    EXPECT_EQ(told, (QStringList{u"+/mnt/a"_s, u"-/mnt/a"_s, u"+/mnt/b"_s}));
}

TEST(VolumeWatcherTest, kernelWakesTheWatcher) {
    const QTemporaryDir folder;
    const QByteArray place = QFile::encodeName(folder.path());
    QStringList told;
    const auto watcher = watcherOf(VolumeSources().mountInfo, told);
    if (::mount("none", place.constData(), "tmpfs", 0, nullptr) != 0)
        GTEST_SKIP() << "not allowed to mount";
    EXPECT_TRUE(support::spinUntil([&] { return told.contains(u'+' + folder.path()); }));
    ::umount(place.constData());
    EXPECT_TRUE(support::spinUntil([&] { return told.contains(u'-' + folder.path()); }));
}

} // namespace
