#include "codec/formats/TiffPage.h"

#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <cstring>

#include <tiffio.h>

namespace codec::formats {

namespace {

/// After so many rows, or bytes of rows, without data there is no reason to expect better further
/// down.
constexpr std::uint32_t mostBadRows = 64;
constexpr std::uint64_t mostBadBytes = std::uint64_t{8} << 20;

/// What the directory says of its pixels.
struct Page {
    QSize size;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint16_t format = SAMPLEFORMAT_UINT;
    std::uint16_t compression = COMPRESSION_NONE;
    AlphaType alpha = AlphaType::None;
    std::uint16_t* palette[3] = {};
    ColourDescription colours;
};

Page describe(TIFF* file) {
    Page page;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
    if (width < 0x40000000 && height < 0x40000000) {
        page.size = QSize(static_cast<int>(width), static_cast<int>(height));
    }
    TIFFGetFieldDefaulted(file, TIFFTAG_BITSPERSAMPLE, &page.bits);
    TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &page.samples);
    TIFFGetFieldDefaulted(file, TIFFTAG_PLANARCONFIG, &page.planar);
    TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLEFORMAT, &page.format);
    TIFFGetField(file, TIFFTAG_COMPRESSION, &page.compression);
    if (!TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &page.photometric) && page.samples >= 3) {
        page.photometric = PHOTOMETRIC_RGB;
    }
    std::uint16_t extraCount = 0;
    std::uint16_t* extra = nullptr;
    if (TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &extraCount, &extra) && extraCount > 0) {
        if (extra[0] == EXTRASAMPLE_ASSOCALPHA) page.alpha = AlphaType::Premultiplied;
        if (extra[0] == EXTRASAMPLE_UNASSALPHA) page.alpha = AlphaType::Straight;
    }
    std::uint32_t length = 0;
    void* profile = nullptr;
    if (TIFFGetField(file, TIFFTAG_ICCPROFILE, &length, &profile) && profile) {
        page.colours.iccProfile =
            QByteArray(static_cast<const char*>(profile), static_cast<qsizetype>(length));
    }
    if (page.photometric == PHOTOMETRIC_PALETTE) {
        TIFFGetField(file, TIFFTAG_COLORMAP, &page.palette[0], &page.palette[1], &page.palette[2]);
    }
    if (page.photometric == PHOTOMETRIC_YCBCR && page.compression == COMPRESSION_JPEG) {
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        page.photometric = PHOTOMETRIC_RGB;
    }
    return page;
}

/// The layout of the rows that `Unpacker` makes, or nothing when the library's own reader of
/// unusual pictures has to do it.
std::optional<PixelLayout> directLayout(const Page& page) {
    PixelLayout layout;
    int colours = 1;
    switch (page.photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
        layout.model = ColourModel::Gray;
        break;
    case PHOTOMETRIC_RGB:
        colours = 3;
        break;
    case PHOTOMETRIC_PALETTE:
        if (!page.palette[0] || page.bits > 8 || page.format > SAMPLEFORMAT_UINT) return {};
        break;
    case PHOTOMETRIC_SEPARATED:
        layout.model = ColourModel::Cmyk, colours = 4;
        break;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
        if (page.bits != 8 && page.bits != 16) return {};
        layout.model = ColourModel::Lab, colours = 3;
        break;
    default:
        return {};
    }
    if (page.samples < colours) return {};
    if (page.format == SAMPLEFORMAT_IEEEFP) {
        if (page.bits != 32) return {};
        layout.sample = SampleType::Float;
    } else if (page.bits > 16 || (page.format != SAMPLEFORMAT_UINT && colours != 3)) {
        return {};
    } else if (page.bits > 8) {
        layout.sample = SampleType::U16;
    }
    if (page.samples > colours) layout.alpha = page.alpha;
    // CMYK with alpha is rare, and no colour engine carries it along: the inks are shown.
    if (layout.model == ColourModel::Cmyk) layout.alpha = AlphaType::None;
    return layout;
}

/// Turns rows as they lie in the file into rows of the layout.
class Unpacker {
public:
    Unpacker(const Page& page, const PixelLayout& layout) : _page(page), _layout(layout) {}

    /// `planes`: where the row of each plane begins; one when samples lie together.
    void unpack(const std::vector<const std::uint8_t*>& planes, std::uint8_t* target) const {
        const int channels = _page.photometric == PHOTOMETRIC_PALETTE ? 1 : _layout.channels();
        const bool together = planes.size() == 1;
        const std::size_t step = _page.planar == PLANARCONFIG_SEPARATE ? 1 : _page.samples;
        for (int channel = 0; channel < channels; ++channel) {
            const std::uint8_t* plane = planes[together ? 0 : static_cast<std::size_t>(channel)];
            const std::size_t first = together ? static_cast<std::size_t>(channel) : 0;
            for (std::size_t x = 0; x < static_cast<std::size_t>(_page.size.width()); ++x) {
                store(plane, first + x * step, channel, x, target);
            }
        }
    }

private:
    void store(
        const std::uint8_t* plane, std::size_t index, int channel, std::size_t x,
        std::uint8_t* target) const {
        const std::size_t place =
            x * static_cast<std::size_t>(_layout.channels()) + static_cast<std::size_t>(channel);
        if (_layout.sample == SampleType::Float) {
            std::memcpy(target + place * 4, plane + index * 4, 4);
            return;
        }
        const std::uint32_t value = sample(plane, index);
        if (_page.photometric == PHOTOMETRIC_PALETTE) {
            for (std::size_t colour = 0; colour < 3; ++colour) {
                target[x * 3 + colour] =
                    static_cast<std::uint8_t>(_page.palette[colour][value] >> 8);
            }
        } else if (_layout.sample == SampleType::U16) {
            const auto stored =
                static_cast<std::uint16_t>(adjusted(widened(value, 16), channel, 0x8000));
            std::memcpy(target + place * 2, &stored, 2);
        } else {
            target[place] = static_cast<std::uint8_t>(adjusted(widened(value, 8), channel, 0x80));
        }
    }

    [[nodiscard]] std::uint32_t sample(const std::uint8_t* plane, std::size_t index) const {
        if (_page.bits == 8) return plane[index];
        if (_page.bits == 16) {
            std::uint16_t value = 0;
            std::memcpy(&value, plane + index * 2, 2);
            return value;
        }
        std::uint32_t value = 0;
        for (std::size_t bit = index * _page.bits; bit < (index + 1) * _page.bits; ++bit) {
            value = value << 1 | (plane[bit / 8] >> (7 - bit % 8) & 1U);
        }
        return value;
    }

    [[nodiscard]] std::uint32_t widened(std::uint32_t value, unsigned bits) const {
        if (_page.bits == bits) return value;
        const std::uint32_t most = (1U << _page.bits) - 1;
        return value * ((1U << bits) - 1) / most;
    }

    /// White first, and the signed a and b of CIE L*a*b*.
    [[nodiscard]] std::uint32_t
    adjusted(std::uint32_t value, int channel, std::uint32_t sign) const {
        if (_page.photometric == PHOTOMETRIC_MINISWHITE && channel == 0)
            return sign * 2 - 1 - value;
        if (_page.photometric == PHOTOMETRIC_CIELAB && (channel == 1 || channel == 2)) {
            return value ^ sign;
        }
        return value;
    }

    const Page& _page;
    const PixelLayout& _layout;
};

/// One band of rows (a strip or a row of tiles), each plane after the other.
class BandReader {
public:
    /// Of samples that lie in planes of their own, only so many are read.
    BandReader(TIFF* file, const Page& page, int channels) : _file(file), _page(page) {
        if (page.planar == PLANARCONFIG_SEPARATE)
            _planes = std::min(page.samples, static_cast<std::uint16_t>(channels));
        _isTiled = TIFFIsTiled(file) != 0;
        if (_isTiled) {
            TIFFGetField(file, TIFFTAG_TILEWIDTH, &_tileWidth);
            TIFFGetField(file, TIFFTAG_TILELENGTH, &_bandRows);
            _rowBytes = static_cast<std::size_t>(TIFFTileRowSize(file));
            _tiles =
                _tileWidth == 0
                    ? 0
                    : (static_cast<std::uint32_t>(page.size.width()) + _tileWidth - 1) / _tileWidth;
            _stride = _rowBytes * _tiles;
        } else {
            TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &_bandRows);
            _stride = _rowBytes = static_cast<std::size_t>(TIFFScanlineSize(file));
        }
        _bandRows = std::min(_bandRows, static_cast<std::uint32_t>(page.size.height()));
    }

    [[nodiscard]] bool isUsable(const Limits& limits) const {
        if (_bandRows == 0 || _rowBytes == 0 || _stride == 0) return false;
        // A row has to hold the pixels that it is said to hold.
        const std::size_t samples = _page.planar == PLANARCONFIG_SEPARATE ? 1 : _page.samples;
        const std::size_t width =
            _isTiled ? _tileWidth : static_cast<std::size_t>(_page.size.width());
        if (_rowBytes < (width * samples * _page.bits + 7) / 8) return false;
        // A tile may be declared far longer than the picture.
        if (_isTiled && static_cast<std::uint64_t>(TIFFTileSize(_file)) > limits.bytes)
            return false;
        return readsLines() || _stride * _bandRows <= limits.bytes / _planes;
    }
    [[nodiscard]] std::uint32_t bandRows() const { return readsLines() ? 1 : _bandRows; }
    /// Of one band, unpacked.
    [[nodiscard]] std::uint64_t bandBytes() const {
        return std::uint64_t{_stride} * bandRows() * _planes;
    }

    struct Band {
        bool isGood = true;
        bool hasData = false; ///< some of it is good
    };
    Band read(std::uint32_t firstRow) {
        const std::size_t planeBytes = _stride * bandRows();
        _bytes.assign(planeBytes * _planes, 0);
        _hasData = false;
        if (readsLines()) {
            const bool isRead = TIFFReadScanline(_file, _bytes.data(), firstRow, 0) == 1;
            return {isRead, isRead};
        }
        bool isGood = true;
        for (std::uint16_t plane = 0; plane < _planes; ++plane) {
            std::uint8_t* target = _bytes.data() + planeBytes * plane;
            isGood = (_isTiled ? readTiles(firstRow, plane, target)
                               : readStrip(firstRow, plane, target, planeBytes)) &&
                     isGood;
        }
        return {isGood, _hasData};
    }

    /// The row of each plane within the band.
    void planes(std::uint32_t row, std::vector<const std::uint8_t*>& result) const {
        const std::size_t planeBytes = _stride * bandRows();
        result.clear();
        for (std::size_t plane = 0; plane < _planes; ++plane) {
            result.push_back(_bytes.data() + plane * planeBytes + row * _stride);
        }
    }

private:
    /// A strip of many rows is read line by line, so that it need not be in memory whole.
    [[nodiscard]] bool readsLines() const { return !_isTiled && _planes == 1; }

    bool readStrip(std::uint32_t row, std::uint16_t plane, std::uint8_t* target, std::size_t size) {
        const tstrip_t strip = TIFFComputeStrip(_file, row, plane);
        const bool isRead =
            TIFFReadEncodedStrip(_file, strip, target, static_cast<tmsize_t>(size)) >= 0;
        _hasData = _hasData || isRead;
        return isRead;
    }

    bool readTiles(std::uint32_t row, std::uint16_t plane, std::uint8_t* target) {
        std::vector<std::uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(_file)));
        if (tile.size() < _rowBytes * _bandRows) return false;
        bool isGood = true;
        // Samples narrower than a byte could only be joined bit by bit; tiles of whole bytes are
        // what the format demands (multiples of 16 pixels).
        for (std::uint32_t index = 0; index < _tiles; ++index) {
            const ttile_t number = TIFFComputeTile(_file, index * _tileWidth, row, 0, plane);
            if (TIFFReadEncodedTile(
                    _file, number, tile.data(), static_cast<tmsize_t>(tile.size())) < 0) {
                isGood = false;
                continue;
            }
            _hasData = true;
            for (std::uint32_t y = 0; y < _bandRows; ++y) {
                std::memcpy(
                    target + y * _stride + index * _rowBytes, tile.data() + y * _rowBytes,
                    _rowBytes);
            }
        }
        return isGood;
    }

    TIFF* _file;
    const Page& _page;
    std::uint16_t _planes = 1;
    bool _isTiled = false;
    std::uint32_t _tileWidth = 0;
    std::uint32_t _tiles = 0;
    std::uint32_t _bandRows = 0;
    std::size_t _rowBytes = 0; // of one strip or tile
    std::size_t _stride = 0;   // of the picture
    bool _hasData = false;     // of the last band
    std::vector<std::uint8_t> _bytes;
};

/// Everything else, through the library's own conversion to 8-bit RGB with alpha.
Frame readUnusual(TIFF* file, const Page& page, QSize full, const DecodeRequest& request) {
    char message[1024];
    TIFFRGBAImage image;
    if (!withinLimits(page.size, request.limits, 8) || !TIFFRGBAImageOK(file, message) ||
        !TIFFRGBAImageBegin(&image, file, 1, message)) { // ends at the first error
        return {};
    }
    image.req_orientation = image.orientation; // as stored
    const auto width = static_cast<std::size_t>(page.size.width());
    const auto height = static_cast<std::size_t>(page.size.height());
    std::vector<std::uint32_t> raster(width * height, 0);
    const bool isGood = TIFFRGBAImageGet(
        &image, raster.data(), static_cast<std::uint32_t>(width),
        static_cast<std::uint32_t>(height));
    PixelLayout layout;
    layout.alpha = image.alpha ? AlphaType::Premultiplied : AlphaType::None;
    TIFFRGBAImageEnd(&image);
    layout.isQRgb = true;
    FrameWriter writer(request, full, page.size, layout, page.colours);
    if (!isGood || !writer.isUsable()) return {};
    for (std::size_t y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<QRgb*>(writer.row());
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint32_t pixel = raster[y * width + x];
            row[x] = qRgba(
                static_cast<int>(TIFFGetR(pixel)), static_cast<int>(TIFFGetG(pixel)),
                static_cast<int>(TIFFGetB(pixel)), static_cast<int>(TIFFGetA(pixel)));
        }
        writer.rowDone();
    }
    return writer.finish();
}

} // namespace

Frame readTiffPage(TIFF* file, QSize full, const DecodeRequest& request) {
    const Page page = describe(file);
    if (!withinLimits(page.size, request.limits) || page.samples == 0 || page.bits == 0) return {};
    const auto layout = directLayout(page);
    if (!layout) return readUnusual(file, page, full, request);
    const int channels = page.photometric == PHOTOMETRIC_PALETTE ? 1 : layout->channels();
    BandReader bands(file, page, channels);
    if (!bands.isUsable(request.limits)) return {};
    const auto height = static_cast<std::uint32_t>(page.size.height());
    // A small file may unpack into hundreds of samples a pixel, only to be skipped.
    const std::uint64_t unpacked = bands.bandBytes() * (height / bands.bandRows());
    if (page.samples > channels + 1 && unpacked > request.limits.bytes) return {};
    FrameWriter writer(request, full, page.size, *layout, page.colours);
    if (!writer.isUsable()) return {};
    const Unpacker unpacker(page, *layout);
    std::vector<const std::uint8_t*> planes;
    bool isGood = true;
    bool hasData = false;
    std::uint32_t badRows = 0; // one after the other
    for (std::uint32_t band = 0; band < height; band += bands.bandRows()) {
        if (writer.isStopped()) return {};
        const BandReader::Band read = bands.read(band);
        isGood = isGood && read.isGood;
        hasData = hasData || read.hasData;
        // Where the data end, the rows that are left are filler, and there may be very many.
        badRows = read.hasData ? 0 : badRows + bands.bandRows();
        const std::uint64_t badBytes = badRows / bands.bandRows() * bands.bandBytes();
        if (badRows > mostBadRows || badBytes > mostBadBytes) break;
        for (std::uint32_t row = 0; row < std::min(bands.bandRows(), height - band); ++row) {
            bands.planes(row, planes);
            unpacker.unpack(planes, writer.row());
            writer.rowDone();
        }
    }
    if (!hasData) return {};
    Frame frame = writer.finish();
    frame.isComplete = frame.isComplete && isGood;
    return frame;
}

} // namespace codec::formats
