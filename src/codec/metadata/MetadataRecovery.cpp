#include "codec/metadata/MetadataRecovery.h"

#include <jxl/decode.h>
#include <libheif/heif.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace codec {

using namespace std::string_view_literals;

namespace {

/// No camera writes as much; a damaged or hostile file may claim any size.
constexpr std::size_t largestBlock = std::size_t(16) << 20;

void addExif(Bytes tiff, Metadata& metadata) {
    metadata.exif().clear();
    try {
        const Exiv2::ByteOrder order = Exiv2::ExifParser::decode(
            metadata.exif(), tiff.data(), static_cast<std::uint32_t>(tiff.size()));
        if (order != Exiv2::invalidByteOrder) metadata.byteOrder = order;
    } catch (const std::exception&) {
        metadata.exif().clear();
    }
}

/// Four bytes tell how far behind them the TIFF header stands; some writers put "Exif" there.
void addExifBlock(Bytes block, Metadata& metadata) {
    Bytes tiff = block.from(std::size_t(4) + std::min<std::uint32_t>(block.be32(0), 64));
    if (tiff.matches(0, "Exif\0\0"sv)) tiff = tiff.from(6);
    addExif(tiff, metadata);
}

void addXmp(Bytes packet, Metadata& metadata) {
    try {
        const std::string text(reinterpret_cast<const char*>(packet.data()), packet.size());
        if (Exiv2::XmpParser::decode(metadata.xmp(), text) != 0) metadata.xmp().clear();
    } catch (const std::exception&) {
        metadata.xmp().clear();
    }
}

/// The library takes the first mark of a TIFF header anywhere in the block for its start; the notes
/// of one maker end with such a mark.
void recoverWebP(Bytes file, Metadata& metadata) {
    constexpr int mostChunks = 10'000;
    std::size_t offset = 12;
    for (int count = 0; count < mostChunks && file.has(offset, 8); ++count) {
        const std::size_t length = file.le32(offset + 4);
        if (file.matches(offset, "EXIF"sv)) {
            const Bytes block = file.part(offset + 8, std::min(length, largestBlock));
            return addExif(block.from(block.matches(0, "Exif\0\0"sv) ? 6 : 0), metadata);
        }
        offset += 8 + length + (length & 1);
    }
}

struct Release {
    void operator()(heif_context* context) const { heif_context_free(context); }
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
    void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
};

void recoverHeif(Bytes file, Metadata& metadata) {
    const std::unique_ptr<heif_context, Release> context(heif_context_alloc());
    const heif_error opened = heif_context_read_from_memory_without_copy(
        context.get(), file.data(), file.size(), nullptr);
    if (opened.code != heif_error_Ok) return;
    heif_image_handle* primary = nullptr;
    if (heif_context_get_primary_image_handle(context.get(), &primary).code != heif_error_Ok)
        return;
    const std::unique_ptr<heif_image_handle, Release> handle(primary);

    std::vector<heif_item_id> blocks(16);
    const int count = heif_image_handle_get_list_of_metadata_block_IDs(
        handle.get(), nullptr, blocks.data(), static_cast<int>(blocks.size()));
    blocks.resize(static_cast<std::size_t>(std::max(count, 0)));
    for (const heif_item_id block : blocks) {
        const std::size_t size = heif_image_handle_get_metadata_size(handle.get(), block);
        if (size == 0 || size > largestBlock) continue;
        std::vector<std::uint8_t> content(size);
        if (heif_image_handle_get_metadata(handle.get(), block, content.data()).code !=
            heif_error_Ok) {
            continue;
        }
        const std::string_view type = heif_image_handle_get_metadata_type(handle.get(), block);
        const std::string_view mime =
            heif_image_handle_get_metadata_content_type(handle.get(), block);
        if (type == "Exif" && metadata.exif().empty()) addExifBlock(Bytes(content), metadata);
        if (mime == "application/rdf+xml" && metadata.xmp().empty())
            addXmp(Bytes(content), metadata);
    }
}

/// Collects the boxes for metadata of a JPEG XL file, unpacked where they are packed.
class JpegXlBoxes {
public:
    explicit JpegXlBoxes(Bytes file) : _decoder(JxlDecoderCreate(nullptr)) {
        JxlDecoderSubscribeEvents(_decoder.get(), JXL_DEC_BOX);
        JxlDecoderSetDecompressBoxes(_decoder.get(), JXL_TRUE);
        JxlDecoderSetInput(_decoder.get(), file.data(), file.size());
        JxlDecoderCloseInput(_decoder.get());
    }

    void addTo(Metadata& metadata) {
        bool going = true;
        while (going) {
            const JxlDecoderStatus status = JxlDecoderProcessInput(_decoder.get());
            if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT && _content.size() < largestBlock) {
                release();
                _content.resize(_content.size() * 2);
                JxlDecoderSetBoxBuffer(
                    _decoder.get(), _content.data() + _filled, _content.size() - _filled);
                continue;
            }
            finish(metadata);
            going = status == JXL_DEC_BOX;
            if (going) begin();
        }
    }

private:
    void begin() {
        JxlBoxType type = {};
        if (JxlDecoderGetBoxType(_decoder.get(), type, JXL_TRUE) != JXL_DEC_SUCCESS) return;
        _type.assign(type, sizeof type);
        if (_type != "Exif" && _type != "xml ") return;
        _content.assign(65536, 0);
        _filled = 0;
        JxlDecoderSetBoxBuffer(_decoder.get(), _content.data(), _content.size());
    }
    void release() { _filled = _content.size() - JxlDecoderReleaseBoxBuffer(_decoder.get()); }
    void finish(Metadata& metadata) {
        if (_content.empty()) return;
        release();
        const Bytes block = Bytes(_content).part(0, _filled);
        if (_type == "Exif" && metadata.exif().empty()) addExifBlock(block, metadata);
        if (_type == "xml " && metadata.xmp().empty()) addXmp(block, metadata);
        _content.clear();
    }

    std::unique_ptr<JxlDecoder, Release> _decoder;
    std::string _type;
    std::vector<std::uint8_t> _content;
    std::size_t _filled = 0;
};

} // namespace

void recoverMetadata(Bytes file, Container container, Metadata& metadata) {
    try {
        if (container == Container::Heif) {
            recoverHeif(file, metadata);
        } else if (container == Container::JpegXl) {
            JpegXlBoxes(file).addTo(metadata);
        } else if (container == Container::WebP) {
            recoverWebP(file, metadata);
        }
    } catch (const std::exception&) {
        return; // no memory: what was found so far stays
    }
}

} // namespace codec
