#include "codec/formats/Formats.h"
#include "codec/formats/TiffPage.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include <tiffio.h>

namespace codec::formats {

namespace {

constexpr std::size_t maxDirectories = 10000;

/// The file as the library's callbacks see it.
struct Stream {
    Source source;
    toff_t position = 0;
};

tmsize_t readStream(thandle_t handle, void* destination, tmsize_t length) {
    auto* stream = static_cast<Stream*>(handle);
    const auto bytes = stream->source.bytes();
    const std::size_t begin = std::min<std::size_t>(stream->position, bytes.size());
    const std::size_t count = std::min(static_cast<std::size_t>(length), bytes.size() - begin);
    std::memcpy(destination, bytes.data() + begin, count);
    stream->position = begin + count;
    return static_cast<tmsize_t>(count);
}

toff_t seekStream(thandle_t handle, toff_t offset, int whence) {
    auto* stream = static_cast<Stream*>(handle);
    if (whence == SEEK_SET)
        stream->position = offset;
    else if (whence == SEEK_CUR)
        stream->position += offset;
    else
        stream->position = stream->source.size() + offset;
    return stream->position;
}

int mapStream(thandle_t handle, void** base, toff_t* size) {
    const auto bytes = static_cast<Stream*>(handle)->source.bytes();
    *base = const_cast<std::uint8_t*>(bytes.data());
    *size = bytes.size();
    return 1;
}

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

Tiff openTiff(Stream& stream) {
    static std::once_flag silenced;
    std::call_once(silenced, [] {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
    });
    return Tiff(TIFFClientOpen(
        "picture", "r", &stream, readStream,
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; }, seekStream,
        [](thandle_t) { return 0; },
        [](thandle_t handle) -> toff_t { return static_cast<Stream*>(handle)->source.size(); },
        mapStream, [](thandle_t, void*, toff_t) {}));
}

struct Directory {
    std::uint64_t offset = 0;
    QSize size;
    bool isReduced = false;
};

class TiffDecoder final : public Decoder {
public:
    explicit TiffDecoder(const Source& source) : _stream{source} { _tiff = openTiff(_stream); }

    [[nodiscard]] bool isOpen() const { return _tiff != nullptr; }

    std::size_t frameCount() override {
        scan();
        return std::max<std::size_t>(1, _pages.size());
    }

    Frame frame(const DecodeRequest& request) override {
        scan();
        if (request.frame >= _pages.size()) return {};
        const Directory& page = _directories[_pages[request.frame]];
        if (request.maxSize > 0) {
            const QSize wanted = reducedSize(page.size, request.maxSize);
            for (const Directory& reduced : reductions(_pages[request.frame])) {
                if (reduced.size.width() < wanted.width() ||
                    reduced.size.height() < wanted.height()) {
                    continue;
                }
                if (!TIFFSetSubDirectory(_tiff.get(), reduced.offset)) continue;
                Frame frame = readTiffPage(_tiff.get(), page.size, request);
                if (!frame.image.isNull() || request.stop.isSet()) return frame;
            }
        }
        if (!TIFFSetSubDirectory(_tiff.get(), page.offset)) return {};
        return readTiffPage(_tiff.get(), page.size, request);
    }

private:
    Directory current() {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t kind = 0;
        TIFFGetField(_tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(_tiff.get(), TIFFTAG_IMAGELENGTH, &height);
        TIFFGetField(_tiff.get(), TIFFTAG_SUBFILETYPE, &kind);
        const auto side = [](std::uint32_t value) {
            return static_cast<int>(std::min<std::uint32_t>(value, 0x7FFFFFFF));
        };
        return {
            TIFFCurrentDirOffset(_tiff.get()), QSize(side(width), side(height)),
            (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0};
    }

    void scan() {
        if (!_directories.empty()) return;
        do {
            _directories.push_back(current());
            if (!_directories.back().isReduced) _pages.push_back(_directories.size() - 1);
        } while (_directories.size() < maxDirectories && TIFFReadDirectory(_tiff.get()));
        if (_pages.empty()) _pages.push_back(0);
    }

    /// The page's smaller copies, smallest first: those that follow it and those below it.
    std::vector<Directory> reductions(std::size_t position) {
        const Directory page = _directories[position];
        std::vector<Directory> found;
        const auto consider = [&](const Directory& directory) {
            if (directory.isReduced && !directory.size.isEmpty() &&
                directory.size.width() < page.size.width() &&
                sameShape(directory.size, page.size)) {
                found.push_back(directory);
            }
        };
        for (std::size_t next = position + 1;
             next < _directories.size() && _directories[next].isReduced; ++next) {
            consider(_directories[next]);
        }
        std::uint16_t count = 0;
        std::uint64_t* offsets = nullptr;
        if (TIFFSetSubDirectory(_tiff.get(), page.offset) &&
            TIFFGetField(_tiff.get(), TIFFTAG_SUBIFD, &count, &offsets) && offsets) {
            const std::vector<std::uint64_t> copies(offsets, offsets + std::min<int>(count, 64));
            for (const std::uint64_t offset : copies) {
                if (TIFFSetSubDirectory(_tiff.get(), offset)) consider(current());
            }
        }
        std::ranges::sort(found, {}, [](const Directory& one) { return one.size.width(); });
        return found;
    }

    Stream _stream;
    Tiff _tiff;
    std::vector<Directory> _directories; // empty: not looked yet
    std::vector<std::size_t> _pages;     // positions of those that are frames
};

} // namespace

const Codec tiff = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        for (const std::string_view signature : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
            if (hasSignature(head, signature)) return u"public.tiff";
        }
        return {};
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        auto decoder = std::make_unique<TiffDecoder>(source);
        if (!decoder->isOpen()) return nullptr;
        return decoder;
    }};

} // namespace codec::formats
