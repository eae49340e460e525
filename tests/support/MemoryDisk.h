#pragma once

#include "support/Support.h"

#include <sys/mount.h>

namespace support {

/// A file system of its own in memory, mounted at a place.
struct MemoryDisk {
    explicit MemoryDisk(const QString& place, const char* size = "size=8m")
        : _place(QFile::encodeName(place)) {
        QDir().mkpath(place);
        _isMounted = ::mount("tmpfs", _place.constData(), "tmpfs", 0, size) == 0;
    }
    ~MemoryDisk() { leave(); }
    MemoryDisk(const MemoryDisk&) = delete;
    MemoryDisk& operator=(const MemoryDisk&) = delete;

    [[nodiscard]] bool isMounted() const { return _isMounted; }
    /// All but so many bytes are taken.
    void fill(int left) const {
        QFile filler(fillerPath());
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(4096, 'f')) == 4096) {
        }
        ASSERT_TRUE(filler.resize(std::max<qint64>(filler.size() - left, 0)));
    }
    void free() const { QFile::remove(fillerPath()); }
    void setReadOnly(bool isReadOnly) const {
        const auto flags = isReadOnly ? MS_REMOUNT | MS_RDONLY : int{MS_REMOUNT};
        ASSERT_EQ(
            ::mount("tmpfs", _place.constData(), "tmpfs", static_cast<unsigned>(flags), nullptr),
            0);
    }
    /// As a disk does that is pulled out.
    void leave() {
        if (std::exchange(_isMounted, false)) ::umount2(_place.constData(), MNT_DETACH);
    }

private:
    [[nodiscard]] QString fillerPath() const { return QFile::decodeName(_place) + u"/filler"_s; }

    const QByteArray _place;
    bool _isMounted = false;
};

/// Runs the present test in a process that may mount: in name spaces of its own. Skips it where
/// that is not permitted either.
inline void rerunWhereDisksCanBeMounted() {
    if (qEnvironmentVariableIsSet("VELMORA_MAY_MOUNT") || std::system("unshare -Urm true") != 0)
        GTEST_SKIP() << "mounting a disk is not permitted here";
    const QString self = QFileInfo(u"/proc/self/exe"_s).symLinkTarget();
    const QString command =
        u"VELMORA_MAY_MOUNT=1 unshare -Urm '%1' --gtest_filter='%2' >&2"_s.arg(self, presentTest());
    EXPECT_EQ(std::system(QFile::encodeName(command).constData()), 0);
}

} // namespace support
