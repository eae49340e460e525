#pragma once

#include "support/Support.h"

#include <sys/mount.h>

namespace support {

/// A disk with a file system of its own in a file, mounted at a place, which keeps what is on it
/// while it is away. Takes root.
class ImageDisk {
public:
    ImageDisk(const QString& place, const QString& image) : _place(place), _image(image) {
        QDir().mkpath(place);
        const QString make = u"truncate -s 8M '%1' && mkfs.ext4 -q -F '%1' 2>&1"_s.arg(image);
        _isMade = ::geteuid() == 0 && std::system(qPrintable(make)) == 0;
        comeBack();
    }
    ~ImageDisk() { leave(); }
    ImageDisk(const ImageDisk&) = delete;
    ImageDisk& operator=(const ImageDisk&) = delete;

    [[nodiscard]] bool isMounted() const { return _isMounted; }
    void comeBack() {
        if (!_isMade || _isMounted) return;
        const QString mount = u"mount -o loop '%1' '%2' 2>&1"_s.arg(_image, _place);
        _isMounted = _isMade = std::system(qPrintable(mount)) == 0;
    }
    void leave() {
        if (std::exchange(_isMounted, false)) ::umount2(qPrintable(_place), MNT_DETACH);
    }

private:
    const QString _place;
    const QString _image;
    bool _isMade = false;
    bool _isMounted = false;
};

} // namespace support
