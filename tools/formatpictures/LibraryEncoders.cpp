#include "formatpictures/Encoders.h"
#include "formatpictures/JpegWriter.h"
#include "formatpictures/Samples.h"

#include <QColorSpace>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstring>
#include <functional>

#include <jxl/encode.h>
#include <libheif/heif.h>
#include <openjpeg.h>
#include <png.h>
#include <tiffio.h>

namespace formatpictures {

namespace {

/// What an encoder writes that wants a path.
QByteArray throughFile(const std::function<void(const char*)>& encoder) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture"));
    encoder(QFile::encodeName(path).constData());
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QByteArray jpeg2000(const QImage& image, bool isBare) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_mct = 1;
    opj_image_cmptparm_t component{};
    component.dx = component.dy = 1;
    component.w = static_cast<OPJ_UINT32>(image.width());
    component.h = static_cast<OPJ_UINT32>(image.height());
    component.prec = 8;
    std::array<opj_image_cmptparm_t, 3> components{component, component, component};
    opj_image_t* planes = opj_image_create(3, components.data(), OPJ_CLRSPC_SRGB);
    planes->x1 = component.w;
    planes->y1 = component.h;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            const int index = y * image.width() + x;
            planes->comps[0].data[index] = qRed(pixel);
            planes->comps[1].data[index] = qGreen(pixel);
            planes->comps[2].data[index] = qBlue(pixel);
        }
    }
    const auto encode = [&](const char* path) {
        opj_stream_t* stream = opj_stream_create_default_file_stream(path, OPJ_FALSE);
        opj_codec_t* codec = opj_create_compress(isBare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2);
        opj_setup_encoder(codec, &parameters, planes);
        opj_start_compress(codec, planes, stream);
        opj_encode(codec, stream);
        opj_end_compress(codec, stream);
        opj_stream_destroy(stream);
        opj_destroy_codec(codec);
    };
    const QByteArray bytes = throughFile(encode);
    opj_image_destroy(planes);
    return bytes;
}

QByteArray jpegXl(const QImage& image, int bits, bool isLossless) {
    return jpegXlFrames({{image, 0}}, bits, isLossless);
}

QByteArray jpegXlFrames(const std::vector<JpegXlFrame>& frames, int bits, bool isLossless) {
    const QImage& image = frames.front().image;
    JxlEncoder* encoder = JxlEncoderCreate(nullptr);
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = static_cast<std::uint32_t>(image.width());
    info.ysize = static_cast<std::uint32_t>(image.height());
    info.bits_per_sample = static_cast<std::uint32_t>(bits);
    info.uses_original_profile = isLossless ? JXL_TRUE : JXL_FALSE;
    const bool hasAlpha = image.hasAlphaChannel();
    if (hasAlpha) {
        info.num_extra_channels = 1;
        info.alpha_bits = static_cast<std::uint32_t>(bits);
    }
    if (frames.size() > 1) {
        info.have_animation = JXL_TRUE;
        info.animation.tps_numerator = 1000;
        info.animation.tps_denominator = 1;
    }
    JxlEncoderSetBasicInfo(encoder, &info);
    JxlColorEncoding colours;
    JxlColorEncodingSetToSRGB(&colours, JXL_FALSE);
    JxlEncoderSetColorEncoding(encoder, &colours);
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    if (isLossless) JxlEncoderSetFrameLossless(settings, JXL_TRUE);
    const JxlPixelFormat format{
        hasAlpha ? 4U : 3U, bits == 8 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16, JXL_LITTLE_ENDIAN, 0};
    for (const JpegXlFrame& frame : frames) {
        JxlFrameHeader header;
        JxlEncoderInitFrameHeader(&header);
        header.duration = static_cast<std::uint32_t>(frame.delay);
        if (frames.size() > 1) JxlEncoderSetFrameHeader(settings, &header);
        QByteArray samples;
        for (int y = 0; y < image.height(); ++y)
            samples += rowOf(frame.image, y, bits, true);
        JxlEncoderAddImageFrame(
            settings, &format, samples.constData(), static_cast<std::size_t>(samples.size()));
    }
    JxlEncoderCloseInput(encoder);
    QByteArray bytes(1 << 20, '\0');
    auto* next = reinterpret_cast<std::uint8_t*>(bytes.data());
    std::size_t left = static_cast<std::size_t>(bytes.size());
    const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder, &next, &left);
    bytes.truncate(status == JXL_ENC_SUCCESS ? bytes.size() - static_cast<qsizetype>(left) : 0);
    JxlEncoderDestroy(encoder);
    return bytes;
}

QByteArray heif(const QImage& image, bool isAv1, int bits) {
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    QByteArray bytes;
    if (heif_context_get_encoder_for_format(
            context, isAv1 ? heif_compression_AV1 : heif_compression_HEVC, &encoder)
            .code == heif_error_Ok) {
        heif_encoder_set_lossy_quality(encoder, 90);
        heif_image* picture = nullptr;
        heif_image_create(
            image.width(), image.height(), heif_colorspace_RGB,
            bits == 8 ? heif_chroma_interleaved_RGB : heif_chroma_interleaved_RRGGBB_LE, &picture);
        heif_image_add_plane(
            picture, heif_channel_interleaved, image.width(), image.height(), bits);
        int stride = 0;
        std::uint8_t* plane = heif_image_get_plane(picture, heif_channel_interleaved, &stride);
        for (int y = 0; y < image.height(); ++y) {
            const QByteArray row = rowOf(image, y, bits, true);
            std::memcpy(
                plane + static_cast<std::ptrdiff_t>(y) * stride, row.constData(),
                static_cast<std::size_t>(row.size()));
        }
        heif_image_handle* handle = nullptr;
        const heif_error encoded =
            heif_context_encode_image(context, picture, encoder, nullptr, &handle);
        if (encoded.code == heif_error_Ok)
            bytes =
                throughFile([&](const char* path) { heif_context_write_to_file(context, path); });
        if (handle) heif_image_handle_release(handle);
        heif_image_release(picture);
        heif_encoder_release(encoder);
    }
    heif_context_free(context);
    return bytes;
}

namespace {

void writeTiff(const char* path, const QImage& image, const TiffShape& shape) {
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
                    unsigned value = modeSamples(pixel, mode, shape.bits)[channel];
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

} // namespace

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
    return writeJpeg({image.size(), JCS_CMYK, 98, isInverted}, [&](int y) {
        inks.clear();
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            for (const int value : {qRed(pixel), qGreen(pixel), qBlue(pixel), 255})
                inks += static_cast<char>(isInverted ? value : 255 - value);
        }
        return reinterpret_cast<const std::uint8_t*>(inks.constData());
    });
}

} // namespace formatpictures
