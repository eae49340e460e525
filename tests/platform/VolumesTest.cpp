#include "platform/volumes/Volumes.h"
#include "platform/volumes/VolumeWatcher.h"

#include "support/FolderTest.h"

using namespace platform;

namespace {

/// A mount table and a sysfs made of files.
struct VolumesTest : support::FolderTest {
    VolumesTest() {
        sources.mountInfo = path(u"mountinfo");
        sources.sysfs = path(u"sys");
        sources.udevData = path(u"udev");
        sources.disksByUuid = path(u"by-uuid");
        make(u"sys/dev/block");
        addDisk("8:1", u"pci0/ata1/block/sda/sda1"_s, "/");
    }

    /// A device is a partition if it stands below a disk whose name its own begins with.
    void addDisk(const QByteArray& number, const QString& device, const QByteArray& place) {
        const QString folder = path(u"sys/devices/") + device;
        const QStringList names = device.split(u'/').last(2);
        support::writeFile(folder + u"/dev"_s, number + '\n');
        if (names[1].startsWith(names[0])) support::writeFile(folder + u"/partition"_s, "1\n");
        QFile::link(folder, path(u"sys/dev/block/") + QString::fromLatin1(number));
        addMount("20 1 " + number + " / " + place + " rw shared:1 - ext4 /dev/sda1 rw");
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
    QByteArray _table;
};

constexpr VolumeProperties local{};

TEST_F(VolumesTest, mountTableIsReadWithItsEscapesAndJunk) {
    const MountTable table = MountTable::parse(
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:17 /sub /mnt/my\\040disk\\134x rw,nosuid shared:3 master:4 - xfs /dev/sdb1 rw\n"
        "junk\n1 2 3\n\n"
        "24 20 8:19 / /mnt/x/y rw - ext4\n24 20 819 / /mnt/x/y rw - ext4 /dev/sdb3 rw\n"
        "x 20 8:19 / /mnt/x/y rw - ext4 /dev/sdb3 rw\n24 20 8:19 / y rw - ext4 /dev/sdb3 rw\n"
        "22 20 0:40 / /mnt/x rw - nfs4 host:/a\\040b rw,addr=1.2.3.4\n"
        "23 22 8:18 / /mnt/x rw - ext4 /dev/sdb2 rw");
    ASSERT_EQ(table.mounts().size(), 4u);
    const Mount* disk = table.mountOfPath(u"/mnt/my disk\\x/a/b"_s);
    ASSERT_TRUE(disk && disk->id == 21 && disk->minor == 17);
    EXPECT_EQ(pathInFileSystem(*disk, u"/mnt/my disk\\x/a"_s), u"/sub/a"_s);
    EXPECT_EQ(pathBelowMount(*disk, u"/sub/a/b"_s), u"/mnt/my disk\\x/a/b"_s);
    EXPECT_TRUE(pathBelowMount(*disk, u"/subway"_s).isEmpty());
    EXPECT_EQ(table.mounts()[2].source, "host:/a b");
    // Mounted over the server's folder, so that is what the path shows.
    EXPECT_EQ(table.mountOfPath(u"/mnt/x/y"_s)->id, 23u);
    EXPECT_EQ(table.mountOfPath(u"/mnt/xy"_s)->id, 20u);
    EXPECT_EQ(table.mountWithId(22)->mountPoint, u"/mnt/x"_s);
    EXPECT_FALSE(table.mountWithId(24) || table.mountOfPath(u"relative"_s));
    EXPECT_EQ(pathInFileSystem(table.mounts()[0], u"/a"_s), u"/a"_s);
    EXPECT_TRUE(pathInFileSystem(*disk, u"/mnt/my disk\\xy"_s).isEmpty());
}

TEST_F(VolumesTest, kindOfVolumeFollowsBusMediumAndFileSystem) {
    const QString devices = path(u"sys/devices/");
    const QString stick = u"pci0/usb2/2-1/host3/block/sdb/sdb1"_s;
    addDisk("8:17", stick, "/data/stick");
    addDisk("8:33", u"pci0/ata2/block/sdc/sdc1"_s, "/data/disk");
    addMount("32 20 8:33 / /media/user/Disk rw - ext4 /dev/sdc1 rw");
    addDisk("179:1", u"mmc_host/mmc0/mmc0:1/block/mmcblk0/mmcblk0p1"_s, "/data/card");
    support::writeFile(devices + u"mmc_host/mmc0/mmc0:1/block/mmcblk0/device/type"_s, "SD\n");
    addDisk("179:9", u"mmc_host/mmc1/mmc1:1/block/mmcblk1"_s, "/data/soldered");
    support::writeFile(devices + u"mmc_host/mmc1/mmc1:1/block/mmcblk1/device/type"_s, "MMC\n");
    addDisk("11:0", u"pci0/ata3/block/sr0"_s, "/data/disc");
    support::writeFile(devices + u"pci0/ata3/block/sr0/removable"_s, "1\n");
    // An encrypted container on the stick: the mapped device tells nothing, what it is made of
    // does.
    addDisk("253:0", u"virtual/block/dm-0"_s, "/data/secret");
    QDir().mkpath(devices + u"virtual/block/dm-0/slaves"_s);
    QFile::link(devices + stick, devices + u"virtual/block/dm-0/slaves/sdb1"_s);
    addMount("37 20 0:50 / /data/nfs rw - nfs4 host:/export rw");
    addMount("38 20 0:51 / /data/ssh rw - fuse.sshfs me@host:/ rw");
    addMount("39 20 0:52 / /data/dav rw - fuse https://host/dav rw");
    addMount("40 20 0:53 / /media/user/phone rw - fuse.jmtpfs jmtpfs rw");
    addMount("41 20 0:54 / /data/memory rw - tmpfs tmpfs rw");
    addMount("35 20 0:56 / /data/image ro - udf /dev/loop0 ro");
    addMount("42 20 0:55 / /media/share rw - cifs //host/share rw");

    const std::pair<VolumeProperties, const char*> kinds[] = {
        {local, "/home /data/disk /data/soldered /data/memory"},
        {{.isLocal = false, .isInternal = false}, "/data/nfs /data/ssh /data/dav /media/share"},
        {{.isInternal = false}, "/data/stick /data/secret"},
        {{.isEjectable = true}, "/media/user/Disk /data/image"},
        {{.isRemovable = true, .isInternal = false}, "/data/card"},
        {{.isEjectable = true, .isRemovable = true, .isInternal = false},
         "/data/disc /media/user/phone"}};
    for (const auto& [properties, places] : kinds)
        for (const QString& place : QString::fromLatin1(places).split(u' '))
            EXPECT_EQ(propertiesAt(place), properties) << place.toStdString();
    sources.mediaFolders = {u"/"_s};
    EXPECT_EQ(propertiesAt(u"/data/disk"), (VolumeProperties{.isEjectable = true}));
    // A system that runs from a stick is at home there.
    addDisk("8:49", u"pci0/usb1/1-1/block/sdd/sdd1"_s, "/");
    addMount("51 50 8:49 /home /home rw - ext4 /dev/sdd1 rw");
    EXPECT_EQ(propertiesAt(u"/home/user"), local);
}

TEST_F(VolumesTest, uuidComesFromUdevOrTheDiskLinks) {
    const Volumes volumes(sources);
    write(u"udev/b8:1", "S:x\nE:ID_FS_UUID=AB12-cd34\nE:ID_FS_TYPE=vfat\n");
    const MountTable table = volumes.mountTable();
    const QString nowhere = path(u"nowhere");
    EXPECT_EQ(volumes.identity(table.mounts()[0], nowhere).uuid, "ab12cd34");
    QFile::remove(path(u"udev/b8:1"));
    make(u"by-uuid");
    write(u"dev/sda1");
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
    EXPECT_TRUE(subvolume.agreesWith({"btrfs", "aa", "/dev/sda1", 0}));
    EXPECT_FALSE((FileSystemIdentity{"nfs4", "", "h:/x", 0}).agreesWith({"nfs", "", "h:/y", 0}));
    const std::pair<const char*, InodeStability> kinds[] = {
        {"ext4", InodeStability::Stable},     {"overlay", InodeStability::UntilCopied},
        {"fuse.sshfs", InodeStability::None}, {"vfat", InodeStability::None},
        {"", InodeStability::None},           {"nfs4", InodeStability::Stable}};
    for (const auto& [type, stability] : kinds)
        EXPECT_EQ((FileSystemIdentity{type, "", "", 0}).inodeStability(), stability) << type;
}

TEST_F(VolumesTest, differencesOfTheMountTableAreToldOnce) {
    QStringList told;
    const QByteArray before = support::readFile(sources.mountInfo);
    VolumeWatcher watcher(sources.mountInfo);
    const auto note = [&told](QChar sign) {
        return [&told, sign](const QString& place) { told.append(sign + place); };
    };
    QObject::connect(&watcher, &VolumeWatcher::volumeDidMount, &watcher, note(u'+'));
    QObject::connect(&watcher, &VolumeWatcher::volumeDidUnmount, &watcher, note(u'-'));
    addMount("60 20 0:60 / /mnt/a rw - tmpfs a rw");
    addMount("61 20 0:61 / /proc rw - proc proc rw");
    watcher.check();
    watcher.check();
    support::writeFile(sources.mountInfo, before + "60 20 0:62 / /mnt/b rw - tmpfs a rw\n");
    watcher.check();
    EXPECT_EQ(told, (QStringList{u"+/mnt/a"_s, u"-/mnt/a"_s, u"+/mnt/b"_s}));
}

} // namespace
