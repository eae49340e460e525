#include "platform/volumes/VolumeWatcher.h"

#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QSocketNotifier>

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

/// Mounts of which no folder root can be part; programs that run in containers of their own make
/// and drop such all the time.
bool isOfInterest(const Mount& mount) {
    static const QList<QByteArray> machinery{
        "proc",      "sysfs",   "cgroup",      "cgroup2",    "devpts",     "mqueue",   "nsfs",
        "bpf",       "tracefs", "debugfs",     "securityfs", "pstore",     "configfs", "fusectl",
        "hugetlbfs", "ramfs",   "binfmt_misc", "efivarfs",   "rpc_pipefs", "devtmpfs", "selinuxfs"};
    return !machinery.contains(mount.fileSystemType);
}

std::vector<Mount> interestingMounts(const QString& mountInfo) {
    std::vector<Mount> mounts = MountTable::load(mountInfo).mounts();
    std::erase_if(mounts, [](const Mount& mount) { return !isOfInterest(mount); });
    return mounts;
}

QStringList missingFrom(const std::vector<Mount>& mounts, const std::vector<Mount>& others) {
    QStringList places;
    for (const Mount& mount : mounts) {
        if (std::ranges::find(others, mount) == others.end()) places.append(mount.mountPoint);
    }
    places.removeDuplicates();
    return places;
}

} // namespace

VolumeWatcher::VolumeWatcher(QString mountInfo, QObject* parent)
    : QObject(parent), _mountInfo(std::move(mountInfo)), _known(interestingMounts(_mountInfo)) {
    assertMainThread();
    _descriptor = ::open(QFile::encodeName(_mountInfo).constData(), O_RDONLY | O_CLOEXEC);
    // A plain file always has an exceptional condition or none; only the kernel's table wakes us.
    if (_descriptor < 0 || !_mountInfo.startsWith(QStringLiteral("/proc/"))) return;
    _notifier = std::make_unique<QSocketNotifier>(_descriptor, QSocketNotifier::Exception);
    connect(_notifier.get(), &QSocketNotifier::activated, this, &VolumeWatcher::check);
}

VolumeWatcher::~VolumeWatcher() {
    _notifier.reset();
    if (_descriptor >= 0) ::close(_descriptor);
}

void VolumeWatcher::check() {
    assertMainThread();
    std::vector<Mount> now = interestingMounts(_mountInfo);
    const QStringList gone = missingFrom(_known, now);
    const QStringList come = missingFrom(now, _known);
    _known = std::move(now);
    for (const QString& place : gone)
        Q_EMIT volumeDidUnmount(place);
    for (const QString& place : come)
        Q_EMIT volumeDidMount(place);
}

} // namespace platform
