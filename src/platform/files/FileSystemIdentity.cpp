#include "platform/files/FileSystemIdentity.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace platform {

namespace {

using namespace std::string_view_literals;

std::string_view view(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

/// Different names under which one server's folder is mounted.
std::string_view family(const QByteArray& type) {
    const std::string_view name = view(type);
    if (name == "nfs4"sv) return "nfs"sv;
    if (name == "smb3"sv || name == "smbfs"sv) return "cifs"sv;
    if (name == "ext2"sv || name == "ext3"sv) return "ext4"sv;
    return name;
}

} // namespace

bool FileSystemIdentity::agreesWith(const FileSystemIdentity& other) const {
    const bool bothFsid = fsid != 0 && other.fsid != 0;
    if (!uuid.isEmpty() && !other.uuid.isEmpty()) {
        if (uuid != other.uuid) return false;
        // Subvolumes share the UUID and count their inodes apart; only the fsid tells them.
        return type != "btrfs" || !bothFsid || fsid == other.fsid;
    }
    if (bothFsid) return fsid == other.fsid;
    return family(type) == family(other.type) && source == other.source;
}

InodeStability FileSystemIdentity::inodeStability() const {
    static constexpr std::array unstable{
        "vfat"sv,  "msdos"sv,  "exfat"sv,  "iso9660"sv,  "udf"sv,  "cifs"sv,    "smb3"sv,
        "smbfs"sv, "9p"sv,     "vboxsf"sv, "virtiofs"sv, "fuse"sv, "fuseblk"sv, "autofs"sv,
        "ncpfs"sv, "prl_fs"sv, "davfs"sv,  "afs"sv,      ""sv};
    if (type == "overlay") return InodeStability::UntilCopied;
    if (type.startsWith("fuse.")) return InodeStability::None;
    return std::ranges::find(unstable, view(type)) == unstable.end() ? InodeStability::Stable
                                                                     : InodeStability::None;
}

QByteArray normalizedUuid(const QByteArray& text) {
    QByteArray digits;
    for (const char character : text.toLower()) {
        if ((character >= '0' && character <= '9') || (character >= 'a' && character <= 'f')) {
            digits.append(character);
        }
    }
    return digits;
}

bool hasLastingFsid(const QByteArray& type) {
    static constexpr std::array lasting{"ext2"sv, "ext3"sv,  "ext4"sv,    "btrfs"sv,
                                        "zfs"sv,  "tmpfs"sv, "squashfs"sv};
    return std::ranges::find(lasting, view(type)) != lasting.end();
}

} // namespace platform
