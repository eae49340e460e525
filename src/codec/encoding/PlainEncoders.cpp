#include "codec/encoding/Encoders.h"
#include "codec/encoding/WrittenFile.h"
#include "codec/pixels/Releaser.h"

#include <QtEndian>
#include <openjpeg.h>

#include <webp/encode.h>
#include <webp/mux.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace codec::encoders {

namespace {

/// As the library wants a file.
struct Written : WrittenFile {
    static Written& of(void* self) { return *static_cast<Written*>(self); }
    static OPJ_SIZE_T write(void* source, OPJ_SIZE_T length, void* self) {
        const bool isGood = of(self).WrittenFile::write(source, static_cast<qsizetype>(length));
        return isGood ? length : static_cast<OPJ_SIZE_T>(-1);
    }
    static OPJ_OFF_T skip(OPJ_OFF_T length, void* self) {
        of(self).position += length;
        return length;
    }
    static OPJ_BOOL seek(OPJ_OFF_T position, void* self) {
        of(self).position = position;
        return OPJ_TRUE;
    }
};

using Planes = std::unique_ptr<opj_image_t, Releaser<opj_image_destroy>>;

Planes planesOf(const QImage& image) {
    const bool isDeep = image.depth() == 64;
    opj_image_cmptparm_t parameters[3] = {};
    for (auto& parameter : parameters) {
        parameter.dx = parameter.dy = 1;
        parameter.w = static_cast<OPJ_UINT32>(image.width());
        parameter.h = static_cast<OPJ_UINT32>(image.height());
        parameter.prec = isDeep ? 16 : 8;
    }
    Planes planes(opj_image_create(3, parameters, OPJ_CLRSPC_SRGB));
    if (!planes) return {};
    planes->x1 = static_cast<OPJ_UINT32>(image.width());
    planes->y1 = static_cast<OPJ_UINT32>(image.height());
    std::size_t at = 0;
    const auto put = [&](int red, int green, int blue) {
        planes->comps[0].data[at] = red;
        planes->comps[1].data[at] = green;
        planes->comps[2].data[at++] = blue;
    };
    for (int y = 0; y < image.height(); ++y) {
        const uchar* line = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            if (isDeep) {
                const QRgba64 pixel = reinterpret_cast<const QRgba64*>(line)[x];
                put(pixel.red(), pixel.green(), pixel.blue());
            } else {
                const QRgb pixel = reinterpret_cast<const QRgb*>(line)[x];
                put(qRed(pixel), qGreen(pixel), qBlue(pixel));
            }
        }
    }
    return planes;
}

/// Without a profile and metadata.
QByteArray bareWebp(const QImage& image, double quality, const std::stop_token& stop) {
    WebPConfig config;
    WebPPicture made;
    if (!WebPConfigPreset(&config, WEBP_PRESET_DEFAULT, static_cast<float>(quality * 100)) ||
        !WebPPictureInit(&made))
        return {};
    const std::unique_ptr<WebPPicture, Releaser<WebPPictureFree>> picture(&made);
    WrittenFile written;
    picture->width = image.width();
    picture->height = image.height();
    picture->custom_ptr = &written;
    picture->writer = [](const std::uint8_t* data, std::size_t size, const WebPPicture* self) {
        auto& file = *static_cast<WrittenFile*>(self->custom_ptr);
        return file.write(data, static_cast<qsizetype>(size)) ? 1 : 0;
    };
    picture->user_data = const_cast<std::stop_token*>(&stop); // only asked
    picture->progress_hook = [](int, const WebPPicture* self) {
        return static_cast<const std::stop_token*>(self->user_data)->stop_requested() ? 0 : 1;
    };
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888);
    const bool isGood =
        WebPPictureImportRGBA(
            picture.get(), pixels.constBits(), static_cast<int>(pixels.bytesPerLine())) != 0 &&
        WebPEncode(&config, picture.get()) != 0;
    return isGood ? written.bytes : QByteArray();
}

} // namespace

QByteArray webp(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    const std::stop_token& stop) {
    const QByteArray file = bareWebp(image, quality, stop);
    if (file.isEmpty()) return {};
    const std::unique_ptr<WebPMux, Releaser<WebPMuxDelete>> chunks(WebPMuxNew());
    if (!chunks) return {};
    const auto dataOf = [](const QByteArray& content) {
        return WebPData{
            reinterpret_cast<const std::uint8_t*>(content.constData()),
            static_cast<std::size_t>(content.size())};
    };
    const WebPData picture = dataOf(file);
    bool isGood = WebPMuxSetImage(chunks.get(), &picture, 1) == WEBP_MUX_OK;
    const auto add = [&](const char* name, const QByteArray& content) {
        const WebPData data = dataOf(content);
        if (!content.isEmpty())
            isGood = isGood && WebPMuxSetChunk(chunks.get(), name, &data, 1) == WEBP_MUX_OK;
    };
    add("ICCP", profile);
    add("EXIF", metadata.exif);
    add("XMP ", metadata.xmp);
    WebPData whole{};
    if (!isGood || WebPMuxAssemble(chunks.get(), &whole) != WEBP_MUX_OK) return {};
    const QByteArray assembled(
        reinterpret_cast<const char*>(whole.bytes), static_cast<qsizetype>(whole.size));
    WebPDataClear(&whole);
    return assembled;
}

QByteArray pngWithProfile(const QByteArray& file, const QByteArray& profile) {
    constexpr qsizetype afterHeader = 8 + 25;
    constexpr qsizetype lengthOfCompressed = 4; // that the toolkit puts in front
    if (file.size() < afterHeader) return {};
    const QByteArray content =
        QByteArray("iCCPicc\0\0", 9) + qCompress(profile).mid(lengthOfCompressed);
    const auto number = [](std::uint32_t value) {
        const std::uint32_t big = qToBigEndian(value);
        return QByteArray(reinterpret_cast<const char*>(&big), sizeof(big));
    };
    const auto checksum = static_cast<std::uint32_t>(crc32(
        0, reinterpret_cast<const Bytef*>(content.constData()), static_cast<uInt>(content.size())));
    return file.first(afterHeader) + number(static_cast<std::uint32_t>(content.size() - 4)) +
           content + number(checksum) + file.mid(afterHeader);
}

QByteArray jpeg2000(const QImage& image, double quality, int threads) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_mct = 1;
    parameters.tcp_numlayers = 1;
    // A small picture can't be halved so often.
    parameters.numresolution = 1;
    for (int side = std::min(image.width(), image.height());
         side > 1 && parameters.numresolution < 6; side /= 2)
        ++parameters.numresolution;
    if (quality >= 1) {
        parameters.cp_disto_alloc = 1;
        parameters.tcp_rates[0] = 0; // without loss
    } else {
        parameters.irreversible = 1;
        parameters.cp_fixed_quality = 1;
        // Signal to noise in decibels: 25 is poor, 50 is not to be told from the source.
        parameters.tcp_distoratio[0] = static_cast<float>(25 + 25 * quality);
    }
    const Planes planes = planesOf(image);
    const std::unique_ptr<opj_codec_t, Releaser<opj_destroy_codec>> codec(
        static_cast<opj_codec_t*>(opj_create_compress(OPJ_CODEC_JP2)));
    const std::unique_ptr<opj_stream_t, Releaser<opj_stream_destroy>> stream(
        static_cast<opj_stream_t*>(opj_stream_default_create(OPJ_FALSE)));
    if (!planes || !codec || !stream) return {};
    Written written;
    opj_stream_set_user_data(stream.get(), &written, nullptr);
    opj_stream_set_write_function(stream.get(), Written::write);
    opj_stream_set_skip_function(stream.get(), Written::skip);
    opj_stream_set_seek_function(stream.get(), Written::seek);
    if (!opj_setup_encoder(codec.get(), &parameters, planes.get())) return {};
    static_cast<void>(opj_codec_set_threads(codec.get(), threads)); // else it does without
    const bool isGood = opj_start_compress(codec.get(), planes.get(), stream.get()) &&
                        opj_encode(codec.get(), stream.get()) &&
                        opj_end_compress(codec.get(), stream.get());
    return isGood ? written.bytes : QByteArray();
}

} // namespace codec::encoders
