#include "codec/formats/AvifSequence.h"
#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"
#include "codec/pixels/Releaser.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <libheif/heif.h>

namespace codec::formats {

namespace {

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using Image = std::unique_ptr<heif_image, Releaser<heif_image_release>>;
using Options = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using Nclx = std::unique_ptr<heif_color_profile_nclx, Releaser<heif_nclx_color_profile_free>>;

QSize storedSize(const heif_image_handle* handle) {
    return {heif_image_handle_get_ispe_width(handle), heif_image_handle_get_ispe_height(handle)};
}

/// The part of the stored picture that is shown: all of it, unless the file crops. The library says
/// the size after the turn and the crop, so that a crop shows as another size in either direction.
QRect shownPart(const heif_image_handle* handle) {
    const QSize stored = storedSize(handle);
    const QSize shown(heif_image_handle_get_width(handle), heif_image_handle_get_height(handle));
    if (shown == stored || shown == stored.transposed() || shown.isEmpty()) {
        return {QPoint(0, 0), stored};
    }
    const bool isUpright = shown.width() <= stored.width() && shown.height() <= stored.height();
    const QSize size = (isUpright ? shown : shown.transposed()).boundedTo(stored);
    return {
        QPoint((stored.width() - size.width()) / 2, (stored.height() - size.height()) / 2), size};
}

ColourDescription coloursOf(const heif_image_handle* handle) {
    ColourDescription colours;
    const std::size_t length = heif_image_handle_get_raw_color_profile_size(handle);
    if (length > 0 && length < (64U << 20)) {
        colours.iccProfile.resize(static_cast<qsizetype>(length));
        if (heif_image_handle_get_raw_color_profile(handle, colours.iccProfile.data()).code !=
            heif_error_Ok) {
            colours.iccProfile.clear();
        }
    }
    heif_color_profile_nclx* found = nullptr;
    const heif_error error = heif_image_handle_get_nclx_color_profile(handle, &found);
    const Nclx nclx(found); // given on some errors as well
    if (error.code == heif_error_Ok && nclx) {
        colours.primaries = nclx->color_primaries;
        colours.transfer = nclx->transfer_characteristics;
    }
    return colours;
}

/// Spreads samples of fewer than 16 bits over all 16.
void widen(std::uint16_t* samples, std::size_t count, int bits) {
    if (bits >= 16 || bits <= 8) return;
    for (std::size_t index = 0; index < count; ++index) {
        const unsigned value = samples[index];
        samples[index] =
            static_cast<std::uint16_t>(value << (16 - bits) | value >> (2 * bits - 16));
    }
}

Frame readImage(const heif_image_handle* handle, QSize full, const DecodeRequest& request) {
    const QRect part = shownPart(handle);
    const QSize stored = storedSize(handle);
    const bool isDeep = heif_image_handle_get_luma_bits_per_pixel(handle) > 8;
    const bool hasAlpha = heif_image_handle_has_alpha_channel(handle) != 0;
    if (!withinLimits(stored, request.limits, isDeep ? 24 : 10)) return {};
    const Options options(heif_decoding_options_alloc());
    options->ignore_transformations = 1;
    options->convert_hdr_to_8bit = 0;
    heif_chroma chroma = hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    if (isDeep) {
        chroma = hasAlpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    }
    heif_image* decoded = nullptr;
    if (heif_decode_image(handle, &decoded, heif_colorspace_RGB, chroma, options.get()).code !=
            heif_error_Ok ||
        !decoded) {
        return {};
    }
    const Image image(decoded);
    int stride = 0;
    const std::uint8_t* pixels =
        heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
    const QSize size(
        heif_image_get_width(image.get(), heif_channel_interleaved),
        heif_image_get_height(image.get(), heif_channel_interleaved));
    const QRect area = part.intersected(QRect(QPoint(0, 0), size));
    if (!pixels || area.isEmpty() || request.stop.isSet()) return {};
    PixelLayout layout;
    layout.sample = isDeep ? SampleType::U16 : SampleType::U8;
    if (hasAlpha) {
        layout.alpha = heif_image_handle_is_premultiplied_alpha(handle) ? AlphaType::Premultiplied
                                                                        : AlphaType::Straight;
    }
    FrameWriter writer(request, full, area.size(), layout, coloursOf(handle));
    if (!writer.isUsable()) return {};
    const int bits = heif_image_get_bits_per_pixel_range(image.get(), heif_channel_interleaved);
    const std::size_t rowBytes = layout.bytesPerPixel() * static_cast<std::size_t>(area.width());
    const std::size_t left = layout.bytesPerPixel() * static_cast<std::size_t>(area.left());
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const auto offset = static_cast<std::size_t>(y) * static_cast<std::size_t>(stride) + left;
        std::memcpy(writer.row(), pixels + offset, rowBytes);
        if (isDeep) widen(reinterpret_cast<std::uint16_t*>(writer.row()), rowBytes / 2, bits);
        writer.rowDone();
    }
    return writer.finish();
}

class HeifDecoder final : public Decoder {
public:
    HeifDecoder(Source source, Context context)
        : _source(std::move(source)), _context(std::move(context)) {
        const int count = heif_context_get_number_of_top_level_images(_context.get());
        _identifiers.resize(static_cast<std::size_t>(std::clamp(count, 0, 10000)));
        heif_context_get_list_of_top_level_image_IDs(
            _context.get(), _identifiers.data(), static_cast<int>(_identifiers.size()));
        heif_item_id primary = 0;
        if (heif_context_get_primary_image_ID(_context.get(), &primary).code == heif_error_Ok) {
            std::stable_partition(
                _identifiers.begin(), _identifiers.end(),
                [primary](heif_item_id identifier) { return identifier == primary; });
        }
    }

    std::size_t frameCount() override { return _identifiers.size(); }

    Frame frame(const DecodeRequest& request) override {
        const Handle handle = handleOf(request.frame);
        if (!handle) return {};
        // 0: the tiles are decoded here, one after the other.
        heif_context_set_max_decoding_threads(
            _context.get(), request.threads > 1 ? request.threads : 0);
        const QSize full = shownPart(handle.get()).size();
        if (request.maxSize > 0) {
            if (const Handle small =
                    reduction(handle.get(), reducedSize(full, request.maxSize), full)) {
                Frame frame = readImage(small.get(), full, request);
                if (!frame.image.isNull() || request.stop.isSet()) return frame;
            }
        }
        return readImage(handle.get(), full, request);
    }

    Frame embedded(const DecodeRequest& request) override {
        const Handle handle = handleOf(request.frame);
        if (!handle) return {};
        heif_context_set_max_decoding_threads(_context.get(), 0);
        const QSize full = shownPart(handle.get()).size();
        const Handle small = reduction(handle.get(), QSize(1, 1), full);
        return small ? readImage(small.get(), full, request) : Frame();
    }

private:
    Handle handleOf(std::size_t frame) const {
        if (frame >= _identifiers.size()) return {};
        heif_image_handle* found = nullptr;
        const heif_error error =
            heif_context_get_image_handle(_context.get(), _identifiers[frame], &found);
        return Handle(error.code == heif_error_Ok ? found : nullptr);
    }

    /// The smallest embedded reduced picture that is large enough.
    static Handle reduction(const heif_image_handle* handle, QSize wanted, QSize full) {
        std::vector<heif_item_id> identifiers(static_cast<std::size_t>(
            std::clamp(heif_image_handle_get_number_of_thumbnails(handle), 0, 100)));
        heif_image_handle_get_list_of_thumbnail_IDs(
            handle, identifiers.data(), static_cast<int>(identifiers.size()));
        Handle best;
        for (const heif_item_id identifier : identifiers) {
            heif_image_handle* found = nullptr;
            if (heif_image_handle_get_thumbnail(handle, identifier, &found).code != heif_error_Ok) {
                continue;
            }
            Handle candidate(found);
            const QSize size = shownPart(candidate.get()).size();
            if (size.width() < wanted.width() || size.height() < wanted.height() ||
                !sameShape(size, full)) {
                continue;
            }
            if (!best || size.width() < storedSize(best.get()).width()) best = std::move(candidate);
        }
        return best;
    }

    Source _source;
    Context _context;
    std::vector<heif_item_id> _identifiers;
};

} // namespace

const Codec heif = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        if (!hasSignature(head, "ftyp", 4)) return {};
        for (const std::string_view brand : {"avif", "avis"}) {
            if (hasSignature(head, brand, 8)) return u"public.avif";
        }
        for (const std::string_view brand : {"heic", "heix", "heim", "heis", "hevc", "hevx"}) {
            if (hasSignature(head, brand, 8)) return u"public.heic";
        }
        for (const std::string_view brand : {"mif1", "msf1", "miaf", "mif2", "heif", "1pic"}) {
            if (hasSignature(head, brand, 8)) return u"public.heif";
        }
        return {};
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        if (hasSignature(source.bytes(), "avis", 8)) {
            if (auto sequence = openAvifSequence(source)) return sequence;
        }
        Context context(heif_context_alloc());
        if (!context) return nullptr;
        if (heif_context_read_from_memory_without_copy(
                context.get(), source.bytes().data(), source.size(), nullptr)
                .code != heif_error_Ok) {
            return nullptr;
        }
        auto decoder = std::make_unique<HeifDecoder>(source, std::move(context));
        if (decoder->frameCount() == 0) return nullptr;
        return decoder;
    }};

} // namespace codec::formats
