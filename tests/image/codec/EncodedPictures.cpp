#include "image/codec/MadePictures.h"

#include "image/codec/Bitmaps.h"
#include "image/codec/metadata/Pictures.h"

#include <cstring>

#include <gif_lib.h>
#include <jxl/encode.h>
#include <libheif/heif.h>
#include <openjpeg.h>
#include <tiff.h>
#include <webp/encode.h>
#include <webp/mux.h>

namespace made {

namespace {

void appendTo(void* bytes, const void* data, std::size_t length) {
    static_cast<QByteArray*>(bytes)->append(
        static_cast<const char*>(data), static_cast<qsizetype>(length));
}

struct GifPart {
    QRect area;
    int colour;
    int delay; // hundredths of a second
    int disposal;
};

void putGifPart(GifFileType* file, const GifPart& part, bool isInterlaced) {
    GraphicsControlBlock control{};
    control.DisposalMode = part.disposal;
    control.DelayTime = part.delay;
    control.TransparentColor = 3;
    std::array<GifByteType, 4> extension{};
    EGifGCBToExtension(&control, extension.data());
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension.data());
    const int width = part.area.width();
    const int height = part.area.height();
    EGifPutImageDesc(file, part.area.left(), part.area.top(), width, height, isInterlaced, nullptr);
    const auto putRow = [&](int y) {
        // Only the small parts have a transparent row, their first.
        const int index = y == 0 && height < 20 ? 3 : part.colour;
        std::vector<GifPixelType> row(
            static_cast<std::size_t>(width), static_cast<GifPixelType>(index));
        EGifPutLine(file, row.data(), width);
    };
    static constexpr int starts[] = {0, 4, 2, 1};
    static constexpr int steps[] = {8, 8, 4, 2};
    for (int pass = 0; pass < (isInterlaced ? 4 : 1); ++pass)
        for (int y = isInterlaced ? starts[pass] : 0; y < height;
             y += isInterlaced ? steps[pass] : 1)
            putRow(y);
}

} // namespace

QByteArray gif(int disposal, bool isInterlaced) {
    QByteArray bytes;
    GifFileType* file = EGifOpen(
        &bytes,
        [](GifFileType* gif_, const GifByteType* data, int length) {
            appendTo(gif_->UserData, data, static_cast<std::size_t>(length));
            return length;
        },
        nullptr);
    const std::array<GifColorType, 4> colours{{{255, 0, 0}, {0, 0, 255}, {0, 255, 0}, {9, 9, 9}}};
    ColorMapObject* map = GifMakeMapObject(4, colours.data());
    EGifSetGifVersion(file, true);
    EGifPutScreenDesc(file, 40, 30, 8, 0, map);
    putGifPart(file, {{0, 0, 40, 30}, 0, 5, DISPOSE_DO_NOT}, isInterlaced);
    putGifPart(file, {{5, 5, 10, 10}, 1, 12, disposal}, isInterlaced);
    putGifPart(file, {{25, 15, 10, 10}, 2, 1, DISPOSE_DO_NOT}, isInterlaced);
    EGifCloseFile(file, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

namespace {

QByteArray webp(const QImage& image) {
    std::uint8_t* output = nullptr;
    const std::size_t length = WebPEncodeLosslessBGRA(
        image.constBits(), image.width(), image.height(), static_cast<int>(image.bytesPerLine()),
        &output);
    QByteArray bytes(reinterpret_cast<const char*>(output), static_cast<qsizetype>(length));
    WebPFree(output);
    return bytes;
}

} // namespace

QByteArray animatedWebp() {
    WebPAnimEncoderOptions options;
    WebPAnimEncoderOptionsInit(&options);
    WebPAnimEncoder* encoder = WebPAnimEncoderNew(40, 30, &options);
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = 1;
    int time = 0;
    for (const auto& [colour, delay] : {std::pair(0xFFFF0000U, 50), std::pair(0x800000FFU, 120)}) {
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = 40;
        picture.height = 30;
        WebPPictureAlloc(&picture);
        std::fill_n(picture.argb, picture.argb_stride * 30, colour);
        WebPAnimEncoderAdd(encoder, &picture, time, &config);
        WebPPictureFree(&picture);
        time += delay;
    }
    WebPAnimEncoderAdd(encoder, nullptr, time, nullptr);
    WebPData data;
    WebPDataInit(&data);
    WebPAnimEncoderAssemble(encoder, &data);
    QByteArray bytes(reinterpret_cast<const char*>(data.bytes), static_cast<qsizetype>(data.size));
    WebPDataClear(&data);
    WebPAnimEncoderDelete(encoder);
    return bytes;
}

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
    JxlEncoderSetBasicInfo(encoder, &info);
    JxlColorEncoding colours;
    JxlColorEncodingSetToSRGB(&colours, JXL_FALSE);
    JxlEncoderSetColorEncoding(encoder, &colours);
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    if (isLossless) JxlEncoderSetFrameLossless(settings, JXL_TRUE);
    QByteArray samples;
    for (int y = 0; y < image.height(); ++y)
        samples += rowOf(image, y, bits, true);
    const JxlPixelFormat format{
        hasAlpha ? 4U : 3U, bits == 8 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16, JXL_LITTLE_ENDIAN, 0};
    JxlEncoderAddImageFrame(
        settings, &format, samples.constData(), static_cast<std::size_t>(samples.size()));
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

std::vector<Picture> gradients() {
    const QImage image = gradient({160, 96});
    const QString targa = u"com.truevision.tga-image"_s;
    std::vector<Picture> all{
        {"ico 32", icon({{image, 32}})},
        {"ico png", icon({{image, 0}})},
        {"tga 24", tga(image, 24, false, false), targa},
        {"tga 24 top", tga(image, 24, false, true), targa},
        {"tga 32 runs", tga(image, 32, true, false), targa},
        {"tga 24 runs top, from the right", tga(image, 24, true, true, true), targa},
        {"psd gray", psd(image, PsdMode::Gray, 8, true), {}, 3, true},
        {"psd gray 16", psd(image, PsdMode::Gray, 16, false), {}, 3, true},
        {"psd rgb", psd(image, PsdMode::Rgb, 8, false)},
        {"psd rgb 16 runs", psd(image, PsdMode::Rgb, 16, true)},
        {"psd cmyk", psd(image, PsdMode::Cmyk, 8, true)},
        {"psd cmyk 16", psd(image, PsdMode::Cmyk, 16, false)},
        // Small differences of Lab are large ones of the darkest colours.
        {"psd lab", psd(image, PsdMode::Lab, 8, false), {}, 18},
        {"psd lab 16", psd(image, PsdMode::Lab, 16, true), {}, 18},
        {"jp2", jpeg2000(image, false)},
        {"j2k", jpeg2000(image, true)},
        {"jxl 8", jpegXl(image, 8, true)},
        {"jxl 16", jpegXl(image, 16, true)},
        {"jxl lossy", jpegXl(image, 8, false), {}, 16},
        {"bigtiff", tiff(image, {.isBig = true})},
        {"tiff tiles, planar, 16", tiff(image, {.isTiled = true, .isPlanar = true, .bits = 16})},
        {"tiff strips, planar", tiff(image, {.isPlanar = true})},
        {"tiff tiles, cmyk, deflate",
         tiff(image, {.isTiled = true, .compression = COMPRESSION_ADOBE_DEFLATE, .isCmyk = true})},
        {"tiff lzw, cmyk 16",
         tiff(image, {.bits = 16, .compression = COMPRESSION_LZW, .isCmyk = true})},
        {"tiff tiles, lab", tiff(image, {.isTiled = true, .isLab = true}), {}, 18},
        {"tiff strips, lab 16", tiff(image, {.bits = 16, .isLab = true}), {}, 18},
        {"jpeg", PBUtilities::cgImageRefToJpegData(image), {}, 16},
        {"png", PBUtilities::cgImageRefToPngData(image)},
        {"bmp", pictures::saved(image, "BMP")},
        {"ppm", pictures::saved(image, "PPM")},
        {"webp", webp(image)},
        {"png 16", png(image, 16, false)},
        {"png interlaced", png(image, 8, true)},
        {"png 16 interlaced", png(image, 16, true)},
        {"jpeg cmyk", cmykJpeg(image, false), {}, 12},
        {"jpeg cmyk, inverted", cmykJpeg(image, true), {}, 12}};
    // The library's own AV1 encoder gives up on deep RGB.
    all.push_back({"heic", heif(image, false), {}, 16});
    all.push_back({"heic 10", heif(image, false, 10), {}, 16});
    all.push_back({"avif", heif(image, true), {}, 16});
    std::erase_if(all, [](const Picture& picture) { return picture.bytes.isEmpty(); });
    return all;
}

} // namespace made
