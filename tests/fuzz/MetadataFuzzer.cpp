// Any bytes as a picture file, through the reading of its properties and the mapping to columns.

#include "catalogue/MetadataKeys.h"
#include "codec/metadata/ImageProperties.h"

#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

/// What the catalogue takes without a check has to be sound.
void checkColumns(const PBDictionary& columns) {
    for (const auto& [column, value] : columns) {
        const bool text = value.isText() && value.toText().isValidUtf16() &&
                          !value.toText().contains(QChar(u'\0'));
        const bool number = value.isNumber() && std::isfinite(value.toDouble());
        if (!text && !number) std::abort();
    }
}

PBDictionary nested(const PBDictionary& properties, QStringView key) {
    const PBDictionary* dictionary = valueForKey(properties, key.toString()).dictionary();
    return dictionary ? *dictionary : PBDictionary();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int descriptor = memfd_create("input", MFD_CLOEXEC);
    if (write(descriptor, data, size) == static_cast<ssize_t>(size)) {
        for (const char16_t* type : {u"", u"com.nikon.raw-image"}) {
            const auto properties =
                codec::readImageProperties(descriptor, QString::fromUtf16(type), 0);
            if (!properties) continue;
            using namespace PBUtilities;
            checkColumns(databaseDictFromExifPropDict(nested(*properties, u"{Exif}")));
            checkColumns(databaseDictFromExifAuxPropDict(nested(*properties, u"{ExifAux}")));
            checkColumns(databaseDictFromTiffPropDict(nested(*properties, u"{TIFF}")));
            checkColumns(databaseDictFromIPTCPropDict(nested(*properties, u"{IPTC}")));
            checkColumns(databaseDictFromGPSPropDict(nested(*properties, u"{GPS}")));
        }
    }
    close(descriptor);
    return 0;
}
