#include "image/codec/MadePictures.h"

#include "image/codec/Bitmaps.h"
#include "image/codec/metadata/Pictures.h"
#include "support/JpegWriter.h"

#include <QColorSpace>

#include <lcms2.h>
#include <png.h>
#include <tiffio.h>

namespace made {

using pictures::ByteWriter;

namespace {

void put(ByteWriter& writer, unsigned sample, int bits) {
    bits == 8 ? writer.u8(sample) : writer.u16(sample);
}

} // namespace

QImage gradient(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 255 / size.width(), y * 255 / size.height(), 60));
    return image;
}

QByteArray rowOf(const QImage& image, int y, int bits, bool isLittleEndian) {
    ByteWriter row(isLittleEndian);
    for (int x = 0; x < image.width(); ++x) {
        const QRgb pixel = image.pixel(x, y);
        const std::array samples{qRed(pixel), qGreen(pixel), qBlue(pixel), qAlpha(pixel)};
        for (const int value : std::span(samples).first(image.hasAlphaChannel() ? 4 : 3))
            put(row, static_cast<unsigned>(value * ((1 << bits) - 1) / 255), bits);
    }
    return row.bytes();
}

QByteArray throughFile(const std::function<void(const char*)>& encoder) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"made"_s);
    encoder(QFile::encodeName(path).constData());
    return support::readFile(path);
}

QByteArray icon(const std::vector<IconEntry>& entries) {
    ByteWriter head(true);
    head.u16(0).u16(1).u16(static_cast<unsigned>(entries.size()));
    QByteArray contents;
    for (const auto& [image, bits] : entries) {
        const int width = image.width();
        const int height = image.height();
        ByteWriter content(true);
        if (bits == 0) {
            content.text(PBUtilities::cgImageRefToPngData(image));
        } else {
            content.u32(40)
                .u32(unsigned(width))
                .u32(unsigned(height * 2))
                .u16(1)
                .u16(unsigned(bits));
            content.text(QByteArray(24, '\0'));
            // The palette of 8 bits: three of red and green, two of blue.
            for (unsigned index = 0; bits == 8 && index < 256; ++index) {
                content.u8((index & 3) * 85).u8((index >> 2 & 7) * 255 / 7);
                content.u8((index >> 5) * 255 / 7).u8(0);
            }
            for (int y = height - 1; y >= 0; --y) {
                for (int x = 0; x < width; ++x) {
                    const QRgb pixel = image.pixel(x, y);
                    if (bits == 32)
                        content.u32(pixel);
                    else
                        content.u8(static_cast<unsigned>(
                            qRed(pixel) >> 5 << 5 | qGreen(pixel) >> 5 << 2 | qBlue(pixel) >> 6));
                }
                for (int x = width; bits == 8 && x % 4 != 0; ++x)
                    content.u8(0);
            }
            // The mask hides the leftmost eight columns of 8-bit entries.
            for (int y = 0; y < height; ++y)
                for (int byte = 0; byte < (width + 31) / 32 * 4; ++byte)
                    content.u8(bits == 8 && byte == 0 ? 0xFF : 0);
        }
        head.u8(static_cast<unsigned>(width % 256)).u8(static_cast<unsigned>(height % 256));
        head.u16(0).u16(1).u16(static_cast<unsigned>(bits == 0 ? 32 : bits));
        head.u32(static_cast<quint64>(content.bytes().size()));
        head.u32(6 + 16 * entries.size() + static_cast<quint64>(contents.size()));
        contents += content.bytes();
    }
    return head.bytes() + contents;
}

QByteArray tga(const QImage& image, int bits, bool hasRuns, bool isTopDown, bool isRightToLeft) {
    const auto width = static_cast<unsigned>(image.width());
    const auto height = static_cast<unsigned>(image.height());
    ByteWriter file(true);
    file.u8(3).u8(0).u8(hasRuns ? 10 : 2).u16(0).u16(0).u8(0).u16(0).u16(0);
    file.u16(width).u16(height).u8(static_cast<unsigned>(bits));
    file.u8((bits == 32 ? 8U : 0U) | (isRightToLeft ? 16U : 0U) | (isTopDown ? 32U : 0U));
    file.text("id.");
    const auto pixelAt = [&](unsigned index) {
        const auto column = static_cast<int>(index % width);
        const auto row = static_cast<int>(index / width);
        return image.pixel(
            isRightToLeft ? image.width() - 1 - column : column,
            isTopDown ? row : image.height() - 1 - row);
    };
    const auto put = [&](QRgb pixel) {
        for (int shift = 0; shift < bits; shift += 8)
            file.u8(pixel >> shift & 0xFF);
    };
    for (unsigned index = 0; index < width * height;) {
        if (!hasRuns) {
            put(pixelAt(index++));
            continue;
        }
        // Packets go on from row to row, as old encoders let them.
        unsigned run = 1;
        while (run < 128 && index + run < width * height && pixelAt(index + run) == pixelAt(index))
            ++run;
        if (run > 1) {
            file.u8(127 + run);
            put(pixelAt(index));
            index += run;
        } else {
            const unsigned count = std::min(7U, width * height - index);
            file.u8(count - 1);
            for (unsigned step = 0; step < count; ++step)
                put(pixelAt(index++));
        }
    }
    return file.bytes();
}

namespace {

struct LabTransform {
    cmsHPROFILE from = cmsCreate_sRGBProfile();
    cmsHPROFILE to = cmsCreateLab2Profile(nullptr);
    cmsHTRANSFORM handle = cmsCreateTransform(
        from, TYPE_BGRA_8, to, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);

    LabTransform() = default;
    LabTransform(const LabTransform&) = delete;
    LabTransform& operator=(const LabTransform&) = delete;
    ~LabTransform() {
        cmsDeleteTransform(handle);
        cmsCloseProfile(to);
        cmsCloseProfile(from);
    }
};

/// The samples of one pixel as the mode stores them.
std::array<unsigned, 4> psdSamples(QRgb pixel, PsdMode mode, int depth) {
    const unsigned scale = depth == 8 ? 1 : 257;
    const unsigned red = static_cast<unsigned>(qRed(pixel)) * scale;
    const unsigned green = static_cast<unsigned>(qGreen(pixel)) * scale;
    const unsigned blue = static_cast<unsigned>(qBlue(pixel)) * scale;
    if (mode == PsdMode::Cmyk) return {red, green, blue, 255 * scale}; // the most: no ink
    if (mode != PsdMode::Lab) return {red, green, blue, 0};
    static const LabTransform transform;
    cmsCIELab lab;
    cmsDoTransform(transform.handle, &pixel, &lab, 1);
    const double unit = depth == 8 ? 1 : 256;
    return {
        static_cast<unsigned>(lab.L / 100 * 255 * scale + 0.5),
        static_cast<unsigned>((lab.a + 128) * unit + 0.5),
        static_cast<unsigned>((lab.b + 128) * unit + 0.5), 0};
}

/// Runs where three bytes are the same, literals else.
QByteArray packed(const QByteArray& row) {
    QByteArray result;
    for (qsizetype at = 0; at < row.size();) {
        qsizetype run = 1;
        while (run < 128 && at + run < row.size() && row[at + run] == row[at])
            ++run;
        if (run >= 2) {
            result += static_cast<char>(1 - run);
            result += row[at];
            at += run;
        } else {
            const qsizetype count = std::min<qsizetype>(5, row.size() - at);
            result += static_cast<char>(count - 1);
            result += row.mid(at, count);
            at += count;
        }
    }
    return result;
}

} // namespace

QByteArray psd(const QImage& image, PsdMode mode, int depth, bool hasRuns) {
    const unsigned channels = mode == PsdMode::Gray ? 1 : mode == PsdMode::Cmyk ? 4 : 3;
    ByteWriter file(false);
    file.text("8BPS").u16(1).u16(0).u32(0).u16(channels);
    file.u32(static_cast<quint64>(image.height())).u32(static_cast<quint64>(image.width()));
    file.u16(static_cast<unsigned>(depth)).u16(static_cast<unsigned>(mode));
    // No palette; one resource with a name and content of odd length; no layers.
    file.u32(0).u32(16).text("8BIM").u16(1005).u8(1).text("x").u32(3).text("abc\0").u8(0);
    file.u32(0).u16(hasRuns ? 1 : 0);
    QByteArray pixels;
    for (unsigned channel = 0; channel < channels; ++channel) {
        for (int y = 0; y < image.height(); ++y) {
            ByteWriter row(false);
            for (int x = 0; x < image.width(); ++x)
                put(row, psdSamples(image.pixel(x, y), mode, depth)[channel], depth);
            const QByteArray bytes = hasRuns ? packed(row.bytes()) : row.bytes();
            if (hasRuns) file.u16(static_cast<unsigned>(bytes.size()));
            pixels += bytes;
        }
    }
    return file.text(pixels).bytes();
}

static void writeTiff(const char* path, const QImage& image, const TiffShape& shape) {
    const auto width = static_cast<std::uint32_t>(image.width());
    const auto height = static_cast<std::uint32_t>(image.height());
    const unsigned samples = shape.isCmyk ? 4 : 3;
    const unsigned planes = shape.isPlanar ? samples : 1;
    const unsigned together = shape.isPlanar ? 1 : samples;
    TIFF* file = TIFFOpen(path, shape.isBig ? "w8" : "w");
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, shape.bits);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, samples);
    const int photometric = shape.isLab    ? PHOTOMETRIC_CIELAB
                            : shape.isCmyk ? PHOTOMETRIC_SEPARATED
                                           : PHOTOMETRIC_RGB;
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(
        file, TIFFTAG_PLANARCONFIG, shape.isPlanar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(file, TIFFTAG_COMPRESSION, shape.compression);
    // Neither tiles nor strips divide the picture evenly.
    const std::uint32_t blockWidth = shape.isTiled ? 64 : width;
    const std::uint32_t blockHeight = shape.isTiled ? 64 : 20;
    if (shape.isTiled) {
        TIFFSetField(file, TIFFTAG_TILEWIDTH, blockWidth);
        TIFFSetField(file, TIFFTAG_TILELENGTH, blockHeight);
    } else {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, blockHeight);
    }
    std::uint32_t block = 0;
    for (unsigned plane = 0; plane < planes; ++plane) {
        for (std::uint32_t top = 0; top < height; top += blockHeight) {
            for (std::uint32_t left = 0; left < width; left += blockWidth) {
                const std::uint32_t rows =
                    shape.isTiled ? blockHeight : std::min(blockHeight, height - top);
                ByteWriter bytes(true);
                for (std::uint32_t index = 0; index < rows * blockWidth * together; ++index) {
                    const unsigned channel = shape.isPlanar ? plane : index % samples;
                    const std::uint32_t x = left + index / together % blockWidth;
                    const std::uint32_t y = top + index / together / blockWidth;
                    const QRgb pixel = x < width && y < height
                                           ? image.pixel(static_cast<int>(x), static_cast<int>(y))
                                           : 0;
                    const PsdMode mode = shape.isLab ? PsdMode::Lab : PsdMode::Cmyk;
                    unsigned value = psdSamples(pixel, mode, shape.bits)[channel];
                    const unsigned most = (1U << shape.bits) - 1;
                    if (shape.isCmyk) value = most - value;
                    if (shape.isLab && channel > 0) value ^= most / 2 + 1; // signed here
                    put(bytes, value, shape.bits);
                }
                QByteArray data = bytes.bytes();
                if (shape.isTiled)
                    TIFFWriteEncodedTile(file, block++, data.data(), data.size());
                else
                    TIFFWriteEncodedStrip(file, block++, data.data(), data.size());
            }
        }
    }
    TIFFClose(file);
}

QByteArray tiff(const QImage& image, const TiffShape& shape) {
    return throughFile([&](const char* path) { writeTiff(path, image, shape); });
}

QByteArray png(const QImage& image, int bits, bool isInterlaced, const QByteArray& profile) {
    QByteArray bytes;
    png_structp file = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(file);
    const auto append = [](png_structp to, png_bytep data, std::size_t length) {
        static_cast<QByteArray*>(png_get_io_ptr(to))
            ->append(reinterpret_cast<const char*>(data), qsizetype(length));
    };
    png_set_write_fn(file, &bytes, append, nullptr);
    const auto width = static_cast<std::uint32_t>(image.width());
    png_set_IHDR(
        file, info, width, static_cast<std::uint32_t>(image.height()), bits, PNG_COLOR_TYPE_RGB,
        isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
        PNG_FILTER_TYPE_BASE);
    if (!profile.isEmpty()) {
        png_set_iCCP(
            file, info, "made", PNG_COMPRESSION_TYPE_BASE,
            reinterpret_cast<png_const_bytep>(profile.constData()),
            static_cast<std::uint32_t>(profile.size()));
    }
    png_write_info(file, info);
    std::vector<QByteArray> rows;
    std::vector<png_bytep> pointers;
    for (int y = 0; y < image.height(); ++y)
        rows.push_back(rowOf(image, y, bits, false));
    for (QByteArray& row : rows)
        pointers.push_back(reinterpret_cast<png_bytep>(row.data()));
    png_write_image(file, pointers.data());
    png_write_end(file, info);
    png_destroy_write_struct(&file, &info);
    return bytes;
}

QByteArray swappedProfile() {
    return QColorSpace(
               {0.3127, 0.3290}, {0.15, 0.06}, {0.30, 0.60}, {0.64, 0.33},
               QColorSpace::TransferFunction::SRgb)
        .iccProfile();
}

QByteArray cmykJpeg(const QImage& image, bool isInverted) {
    QByteArray inks;
    return support::writeJpeg({image.size(), JCS_CMYK, 98, isInverted}, [&](int y) {
        inks.clear();
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            for (const int value : {qRed(pixel), qGreen(pixel), qBlue(pixel), 255})
                inks += static_cast<char>(isInverted ? value : 255 - value);
        }
        return reinterpret_cast<const std::uint8_t*>(inks.constData());
    });
}

} // namespace made
