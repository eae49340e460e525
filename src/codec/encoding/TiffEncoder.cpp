#include "codec/encoding/Encoders.h"
#include "codec/encoding/WrittenFile.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace codec::encoders {

namespace {

/// A file in memory, as the library wants one.
struct Memory : WrittenFile {
    static Memory& of(thandle_t handle) { return *static_cast<Memory*>(handle); }
    static tmsize_t read(thandle_t handle, void* target, tmsize_t length) {
        Memory& memory = of(handle);
        const qsizetype left = std::max<qsizetype>(memory.bytes.size() - memory.position, 0);
        const qsizetype count = std::min<qsizetype>(length, left);
        if (count == 0) return 0;
        std::memcpy(
            target, memory.bytes.constData() + memory.position, static_cast<std::size_t>(count));
        memory.position += count;
        return count;
    }
    static tmsize_t write(thandle_t handle, void* source, tmsize_t length) {
        return of(handle).WrittenFile::write(source, length) ? length : -1;
    }
    static toff_t seek(thandle_t handle, toff_t offset, int whence) {
        Memory& memory = of(handle);
        const qsizetype base = whence == SEEK_CUR   ? memory.position
                               : whence == SEEK_END ? memory.bytes.size()
                                                    : 0;
        memory.position = base + static_cast<qsizetype>(offset);
        return static_cast<toff_t>(memory.position);
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return static_cast<toff_t>(of(handle).bytes.size()); }
};

struct Closer {
    void operator()(TIFF* file) const { TIFFClose(file); }
};

/// Samples of a line in the file's order: red, green, blue and, where there is one, alpha.
template <typename Sample>
void packLine(const QImage& image, int y, bool hasAlpha, std::vector<std::uint8_t>& line) {
    auto* target = reinterpret_cast<Sample*>(line.data());
    for (int x = 0; x < image.width(); ++x) {
        if constexpr (sizeof(Sample) == 2) {
            const auto pixel = reinterpret_cast<const QRgba64*>(image.constScanLine(y))[x];
            *target++ = pixel.red();
            *target++ = pixel.green();
            *target++ = pixel.blue();
            if (hasAlpha) *target++ = pixel.alpha();
        } else {
            const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(y))[x];
            *target++ = static_cast<Sample>(qRed(pixel));
            *target++ = static_cast<Sample>(qGreen(pixel));
            *target++ = static_cast<Sample>(qBlue(pixel));
            if (hasAlpha) *target++ = static_cast<Sample>(qAlpha(pixel));
        }
    }
}

bool writeLines(
    TIFF* file, const QImage& image, bool isDeep, bool hasAlpha, const std::stop_token& stop) {
    std::vector<std::uint8_t> line(static_cast<std::size_t>(TIFFScanlineSize(file)));
    for (int y = 0; y < image.height(); ++y) {
        if (stop.stop_requested()) return false;
        if (isDeep) {
            packLine<std::uint16_t>(image, y, hasAlpha, line);
        } else {
            packLine<std::uint8_t>(image, y, hasAlpha, line);
        }
        if (TIFFWriteScanline(file, line.data(), static_cast<std::uint32_t>(y), 0) < 0)
            return false;
    }
    return true;
}

} // namespace

QByteArray tiff(const QImage& image, const QByteArray& profile, const EncodeSettings& settings) {
    Memory memory;
    std::unique_ptr<TIFF, Closer> opened(TIFFClientOpen(
        "export", "w", &memory, Memory::read, Memory::write, Memory::seek, Memory::close,
        Memory::size, nullptr, nullptr));
    if (!opened) return {};
    TIFF* file = opened.get();
    const bool isDeep = image.depth() == 64;
    const bool hasAlpha = image.hasAlphaChannel();
    const int compression = std::max(settings.tiffCompression, 1);
    constexpr double metersPerInch = 0.0254;
    bool isGood =
        TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) != 0 &&
        TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.width())) != 0 &&
        TIFFSetField(file, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(image.height())) != 0 &&
        TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, isDeep ? 16 : 8) != 0 &&
        TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, hasAlpha ? 4 : 3) != 0 &&
        TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB) != 0 &&
        TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != 0 &&
        TIFFSetField(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != 0 &&
        TIFFSetField(file, TIFFTAG_XRESOLUTION, image.dotsPerMeterX() * metersPerInch) != 0 &&
        TIFFSetField(file, TIFFTAG_YRESOLUTION, image.dotsPerMeterY() * metersPerInch) != 0 &&
        TIFFSetField(file, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) != 0 &&
        TIFFSetField(file, TIFFTAG_COMPRESSION, compression) != 0;
    if (isGood && hasAlpha) {
        const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        isGood = TIFFSetField(file, TIFFTAG_EXTRASAMPLES, 1, &kind) != 0;
    }
    if (isGood && (compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE))
        isGood = TIFFSetField(file, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) != 0;
    if (isGood && !profile.isEmpty()) {
        isGood = TIFFSetField(
                     file, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                     profile.constData()) != 0;
    }
    if (isGood) {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(file, 0));
        isGood = writeLines(file, image, isDeep, hasAlpha, settings.stop) && TIFFFlush(file) != 0;
    }
    opened.reset();
    return isGood ? memory.bytes : QByteArray();
}

} // namespace codec::encoders
