#include "codec/formats/Bitmap.h"
#include "codec/formats/Formats.h"

#include <algorithm>

namespace codec::formats {

namespace {

struct Entry {
    int width = 0;
    int bits = 0;
    std::uint32_t length = 0;
    std::uint32_t offset = 0;
};

/// Icons and cursors: the same picture in several sizes, the largest one first.
class IcoDecoder final : public Decoder {
public:
    IcoDecoder(Source source, std::vector<Entry> entries)
        : _source(std::move(source)), _entries(std::move(entries)) {}

    std::size_t frameCount() override { return _entries.size(); }

    Frame frame(const DecodeRequest& request) override {
        if (request.frame >= _entries.size()) return {};
        const Entry& entry = _entries[request.frame];
        const Source content = _source.part(entry.offset, entry.length);
        if (!png.sniff(content.bytes(), {}).isEmpty()) {
            DecodeRequest inner = request;
            inner.frame = 0;
            return png.open(content)->frame(inner);
        }
        return readBitmap(content, 0, 0, true, request);
    }

private:
    Source _source;
    std::vector<Entry> _entries;
};

} // namespace

const Codec ico = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        if (head.size() < 22 || head[9] != 0 || head[5] != 0 || head[4] == 0) return {};
        if (hasSignature(head, "\0\0\1\0"sv)) return u"com.microsoft.ico";
        if (hasSignature(head, "\0\0\2\0"sv)) return u"com.microsoft.cur";
        return {};
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        ByteReader reader(source.bytes(), 4);
        const int count = reader.u16le();
        std::vector<Entry> entries;
        for (int index = 0; index < count && !reader.failed(); ++index) {
            Entry entry;
            entry.width = reader.u8();
            if (entry.width == 0) entry.width = 256;
            reader.skip(5);
            entry.bits = reader.u16le();
            entry.length = reader.u32le();
            entry.offset = reader.u32le();
            if (!reader.failed() && entry.offset < source.size()) entries.push_back(entry);
        }
        if (entries.empty()) return nullptr;
        std::ranges::stable_sort(entries, [](const Entry& one, const Entry& other) {
            return std::pair(one.width, one.bits) > std::pair(other.width, other.bits);
        });
        return std::make_unique<IcoDecoder>(source, std::move(entries));
    }};

} // namespace codec::formats
