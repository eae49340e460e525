#include "codec/metadata/MetadataBlocks.h"

#include "codec/metadata/MetadataReader.h"
#include "codec/pixels/Source.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <iterator>
#include <string>

namespace codec {

namespace {

/// Texts beyond this are pictures and films in disguise.
constexpr std::size_t longestText = std::size_t{1} << 16;

/// Tags of the first directory that speak of the former file's pixels (TIFF 6.0, its supplements,
/// Exif 2.32) or where on a map they lie (GeoTIFF 1.1), or hold other metadata once more; those of
/// DNG describe raw samples (DNG 1.4, tags from 50706 on).
bool isOfFormerFile(const Exiv2::Exifdatum& datum) {
    if (datum.groupName() != "Image") return false;
    constexpr std::uint16_t tags[] = {
        0x00fe, // NewSubfileType
        0x00ff, // SubfileType
        0x0100, // ImageWidth
        0x0101, // ImageLength
        0x0102, // BitsPerSample
        0x0103, // Compression
        0x0106, // PhotometricInterpretation
        0x0107, // Thresholding
        0x010a, // FillOrder
        0x0111, // StripOffsets
        0x0115, // SamplesPerPixel
        0x0116, // RowsPerStrip
        0x0117, // StripByteCounts
        0x0118, // MinSampleValue
        0x0119, // MaxSampleValue
        0x011c, // PlanarConfiguration
        0x0120, // FreeOffsets
        0x0121, // FreeByteCounts
        0x012d, // TransferFunction
        0x013d, // Predictor
        0x013e, // WhitePoint
        0x013f, // PrimaryChromaticities
        0x0140, // ColorMap
        0x0142, // TileWidth
        0x0143, // TileLength
        0x0144, // TileOffsets
        0x0145, // TileByteCounts
        0x014a, // SubIFDs
        0x014c, // InkSet
        0x014d, // InkNames
        0x014e, // NumberOfInks
        0x0150, // DotRange
        0x0152, // ExtraSamples
        0x0153, // SampleFormat
        0x0154, // SMinSampleValue
        0x0155, // SMaxSampleValue
        0x015b, // JPEGTables
        0x0200, // JPEGProc
        0x0201, // JPEGInterchangeFormat
        0x0202, // JPEGInterchangeFormatLength
        0x0203, // JPEGRestartInterval
        0x0205, // JPEGLosslessPredictors
        0x0206, // JPEGPointTransforms
        0x0207, // JPEGQTables
        0x0208, // JPEGDCTables
        0x0209, // JPEGACTables
        0x0211, // YCbCrCoefficients
        0x0212, // YCbCrSubSampling
        0x0214, // ReferenceBlackWhite
        0x02bc, // XMLPacket
        0x828d, // CFARepeatPatternDim
        0x828e, // CFAPattern
        0x830e, // ModelPixelScale
        0x83bb, // IPTCNAA
        0x8482, // ModelTiepoint
        0x85d8, // ModelTransformation
        0x8649, // ImageResources
        0x8773, // InterColorProfile
        0x87af, // GeoKeyDirectory
        0x87b0, // GeoDoubleParams
        0x87b1, // GeoAsciiParams
        0xa480, // GDALMetadata
    };
    static_assert(std::ranges::is_sorted(tags));
    const std::uint16_t tag = datum.tag();
    return (tag >= 50706 && tag <= 52600) || std::ranges::binary_search(tags, tag);
}

/// One maker's raw files name the camera in a directory that goes nowhere else.
void nameCamera(Exiv2::ExifData& exif) {
    for (const char* tag : {"Make", "Model"}) {
        const auto found = exif.findKey(Exiv2::ExifKey(std::string("Exif.PanasonicRaw.") + tag));
        const std::string key = std::string("Exif.Image.") + tag;
        if (found != exif.end() && exif.findKey(Exiv2::ExifKey(key)) == exif.end())
            exif[key] = found->toString();
    }
}

QByteArray exifBlock(Exiv2::ExifData& exif, Exiv2::ByteOrder order) {
    nameCamera(exif);
    Exiv2::ExifThumb(exif).erase();
    for (auto datum = exif.begin(); datum != exif.end();)
        datum = isOfFormerFile(*datum) ? exif.erase(datum) : std::next(datum);
    if (exif.empty()) return {};
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, order, exif);
    return {reinterpret_cast<const char*>(blob.data()), static_cast<qsizetype>(blob.size())};
}

QByteArray iptcBlock(const Exiv2::IptcData& iptc) {
    if (iptc.empty()) return {};
    const Exiv2::DataBuf buffer = Exiv2::IptcParser::encode(iptc);
    return {reinterpret_cast<const char*>(buffer.pData_), static_cast<qsizetype>(buffer.size_)};
}

QByteArray xmpBlock(Exiv2::XmpData& xmp, bool& isComplete) {
    for (auto datum = xmp.begin(); datum != xmp.end();) {
        const bool isPicture = datum->key().starts_with("Xmp.xmp.Thumbnails");
        const bool isHuge = static_cast<std::size_t>(datum->size()) > longestText;
        isComplete = isComplete && (isPicture || !isHuge);
        datum = isPicture || isHuge ? xmp.erase(datum) : std::next(datum);
    }
    std::string packet;
    if (!xmp.empty() &&
        Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0)
        isComplete = false;
    return QByteArray::fromStdString(packet);
}

/// A block that is damaged costs only itself.
template <typename Make>
QByteArray block(bool& isComplete, const Make& make) {
    QByteArray made;
    try {
        made = make();
    } catch (...) {
        isComplete = false;
    }
    if (made.size() <= largestMetadataBlock) return made;
    isComplete = false;
    return {};
}

} // namespace

std::optional<MetadataBlocks> readMetadataBlocks(int descriptor) {
    try {
        const auto source = Source::fromDescriptor(descriptor);
        if (!source) return std::nullopt;
        const Bytes file(source->bytes());
        const platform::Lock lock(metadataLibrary);
        Metadata metadata = readMetadata(file, sniffContainer(file));
        MetadataBlocks blocks;
        bool& isComplete = blocks.isComplete;
        blocks.exif =
            block(isComplete, [&] { return exifBlock(metadata.exif(), metadata.byteOrder); });
        blocks.iptc = block(isComplete, [&] { return iptcBlock(metadata.iptc()); });
        blocks.xmp = block(isComplete, [&] { return xmpBlock(metadata.xmp(), isComplete); });
        return blocks;
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace codec
