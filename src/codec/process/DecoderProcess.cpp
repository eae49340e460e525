#include "codec/process/DecoderProcess.h"

#include "codec/formats/HeifStop.h"
#include "codec/metadata/CarriedMetadata.h"
#include "codec/metadata/ImageProperties.h"
#include "codec/metadata/MetadataBlocks.h"
#include "codec/metadata/headers/ImageHeader.h"
#include "codec/pixels/Source.h"
#include "codec/process/Confinement.h"
#include "codec/process/EmbedExchange.h"
#include "codec/process/EncodeExchange.h"
#include "codec/process/FrameReader.h"
#include "codec/process/PacketSocket.h"
#include "codec/process/Protocol.h"
#include "codec/process/SharedMemory.h"
#include "platform/values/CborValues.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace codec::process {

namespace {

class Worker {
public:
    Worker(CodecTable codecs, Mapping control, Mapping results)
        : _codecs(codecs), _control(std::move(control)), _results(std::move(results)) {}

    [[nodiscard]] Reply answer(const Request& request, std::vector<Descriptor>& descriptors) {
        Reply reply;
        reply.number = request.number;
        if (descriptors.size() != descriptorsOf(request)) return reply;
        switch (request.kind) {
        case Kind::Decode:
            if (Decoder* decoder = openWithMemory(request, descriptors)) {
                if (auto wanted = wantedBy(request, descriptors))
                    decode(*decoder, *wanted, request, descriptors, reply);
            }
            break;
        case Kind::OpenSequence:
            if (Decoder* decoder = openWithMemory(request, descriptors)) {
                _sequence = wantedBy(request, descriptors);
                reply.count = framesToPlay(*decoder);
                reply.status = _sequence ? Status::Done : Status::Failed;
            }
            break;
        case Kind::NextFrame:
            if (_decoder && _sequence) {
                _sequence->frame = request.frame;
                decode(*_decoder, *_sequence, request, descriptors, reply);
                const int delay = _decoder->frameDelay(request.frame);
                reply.count = static_cast<std::uint64_t>(shownDelay(delay));
            }
            break;
        case Kind::CountFrames:
            if (Decoder* decoder = open(descriptors.front().get(), request)) {
                reply.count = decoder->frameCount();
                reply.status = reply.count > 0 ? Status::Done : Status::Failed;
            }
            break;
        case Kind::FrameDelay:
            if (Decoder* decoder = open(descriptors.front().get(), request)) {
                reply.count = static_cast<std::uint64_t>(decoder->frameDelay(request.frame));
                reply.status = Status::Done;
            }
            break;
        case Kind::Properties:
            readProperties(descriptors, request, reply);
            break;
        case Kind::MetadataBlocks:
            readMetadata(descriptors.front().get(), request, reply);
            break;
        case Kind::EmbedMetadata:
            answerEmbed(descriptors.front().get(), descriptors.back().get(), reply);
            break;
        case Kind::Encode:
            answerEncode(
                typeHint(request), descriptors.front().get(), descriptors.back().get(), reply);
            break;
        case Kind::CloseSequence:
        case Kind::Grant:
        case Kind::Deny:
            break;
        }
        return reply;
    }

    /// Lets go of the picture: a volume can't be ejected while a file of it is mapped. That of a
    /// sequence stays until there is another request.
    void close(const Request& request) {
        _large.reset();
        const bool isSequence =
            request.kind == Kind::OpenSequence || request.kind == Kind::NextFrame;
        if (isSequence && _sequence) return;
        _sequence.reset();
        _decoder.reset();
        _source.reset();
    }

private:
    [[nodiscard]] static std::size_t descriptorsOf(const Request& request) {
        const std::size_t more =
            (request.hasLargeResult ? 1U : 0U) + (request.hasProfile ? 1U : 0U);
        switch (request.kind) {
        case Kind::NextFrame:
            return more;
        case Kind::Properties:
            return std::max(request.pictures, 1U);
        case Kind::CloseSequence:
            return 0;
        default:
            return 1 + more;
        }
    }

    [[nodiscard]] static QString typeHint(const Request& request) {
        return QString::fromLatin1(
            request.typeHint.data(),
            static_cast<qsizetype>(::strnlen(request.typeHint.data(), request.typeHint.size())));
    }

    [[nodiscard]] Decoder* open(int picture, const Request& request) {
        _source = Source::fromDescriptor(picture);
        if (!_source) return nullptr;
        _decoder = openDecoder(*_source, typeHint(request), _codecs);
        return _decoder.get();
    }

    [[nodiscard]] Decoder*
    openWithMemory(const Request& request, const std::vector<Descriptor>& descriptors) {
        Decoder* decoder = open(descriptors.front().get(), request);
        return decoder && mayTakeMemory(request) ? decoder : nullptr;
    }

    /// Nothing when the profile that it names can't be read.
    [[nodiscard]] static std::optional<DecodeRequest>
    wantedBy(const Request& request, const std::vector<Descriptor>& descriptors) {
        DecodeRequest wanted;
        wanted.frame = request.frame;
        wanted.maxSize = request.maxSize;
        wanted.onlyEmbedded = request.onlyEmbedded != 0;
        wanted.depth = request.isAsInSource ? Depth::Source : Depth::Screen;
        wanted.reduction = request.isFiltered ? Reduction::Filtered : Reduction::Mean;
        wanted.threads = static_cast<int>(std::clamp(request.threads, 1U, 64U));
        wanted.limits = {request.pixelLimit, request.byteLimit};
        if (!request.hasProfile) return wanted;
        const auto profile =
            Mapping::of(descriptors.back().get(), request.profileBytes, Mapping::Access::Read);
        if (!profile) return std::nullopt;
        wanted.targetProfile = QByteArray(
            static_cast<const char*>(profile->data()), static_cast<qsizetype>(profile->size()));
        return wanted;
    }

    void decode(
        Decoder& decoder, DecodeRequest& wanted, const Request& request,
        const std::vector<Descriptor>& descriptors, Reply& reply) {
        wanted.stop = StopFlag(
            static_cast<const std::atomic<std::uint32_t>*>(_control.data()), request.number);
        const std::size_t largePlace = request.kind == Kind::NextFrame ? 0 : 1;
        const auto room = [&](std::size_t bytes) -> void* {
            if (!request.hasLargeResult) {
                return bytes <= _results.size() ? _results.data() : nullptr;
            }
            _large = Mapping::of(descriptors[largePlace].get(), bytes, Mapping::Access::ReadWrite);
            return _large ? _large->data() : nullptr;
        };
        wanted.allocate = [&](QSize size, QImage::Format format) {
            const qsizetype lineBytes = lineBytesOf(size, format);
            void* pixels = room(static_cast<std::size_t>(lineBytes * size.height()));
            if (!pixels) return QImage();
            return QImage(
                static_cast<uchar*>(pixels), size.width(), size.height(), lineBytes, format);
        };
        const formats::HeifStop stop(wanted.stop);
        const Frame frame = decoder.wanted(wanted);
        wanted.allocate = {};
        if (frame.image.isNull() || wanted.stop.isSet()) return;
        deliver(frame, wanted, room, reply);
    }

    [[nodiscard]] static qsizetype lineBytesOf(QSize size, QImage::Format format) {
        return qsizetype{size.width()} * QImage::toPixelFormat(format).bitsPerPixel() / 8;
    }

    /// By the size that the file declares, before anything is decoded.
    [[nodiscard]] bool mayTakeMemory(const Request& request) const {
        // The picture itself, and as much for what its library keeps of it.
        const Bytes file(_source->bytes());
        const auto header = readImageHeader(file, sniffContainer(file), request.frame);
        const bool isDeep = request.isAsInSource && (!header || header->depth != 8);
        const std::uint64_t bytesPerPixel = isDeep ? 16 : 8;
        const std::uint64_t bytes =
            header ? std::uint64_t{header->width} * header->height * bytesPerPixel
                   : _source->size() * bytesPerPixel;
        if (bytes < memoryWithoutAsking) return true;
        Reply question;
        question.number = request.number;
        question.status = Status::NeedsMemory;
        question.count = bytes;
        Request answer;
        std::vector<Descriptor> none;
        return sendPacket(socketDescriptor, std::as_bytes(std::span(&question, 1))) &&
               receivePacket(
                   socketDescriptor, std::as_writable_bytes(std::span(&answer, 1)), none) &&
               answer.kind == Kind::Grant;
    }

    template <typename Room>
    void deliver(const Frame& frame, const DecodeRequest& wanted, const Room& room, Reply& reply) {
        const QImage& image = frame.image;
        const bool isOpaque =
            image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_RGBX64;
        const auto lineBytes = static_cast<std::size_t>(lineBytesOf(image.size(), image.format()));
        const void* shared = _large ? _large->data() : _results.data();
        if (image.constBits() != shared ||
            static_cast<std::size_t>(image.bytesPerLine()) != lineBytes) {
            auto* pixels =
                static_cast<uchar*>(room(lineBytes * static_cast<std::size_t>(image.height())));
            if (!pixels) return;
            for (int y = 0; y < image.height(); ++y) {
                std::memmove(
                    pixels + static_cast<std::size_t>(y) * lineBytes, image.constScanLine(y),
                    lineBytes);
            }
        }
        reply.status = Status::Done;
        reply.width = image.width();
        reply.height = image.height();
        reply.isOpaque = isOpaque ? 1 : 0;
        reply.isDeep = image.depth() == 64 ? 1 : 0;
        reply.isComplete = frame.isComplete ? 1 : 0;
        deliverProfile(frame, wanted, reply);
    }

    void deliverProfile(const Frame& frame, const DecodeRequest& wanted, Reply& reply) {
        if (frame.profile.isEmpty()) return;
        if (wanted.depth == Depth::Screen) {
            reply.profile = ResultProfile::Wanted;
            return;
        }
        // Pixels as in their source never lie in this memory.
        const auto bytes = static_cast<std::size_t>(frame.profile.size());
        if (bytes > _results.size()) {
            reply.status = Status::Failed;
            return;
        }
        std::memcpy(_results.data(), frame.profile.constData(), bytes);
        reply.profile = ResultProfile::Own;
        reply.profileBytes = static_cast<std::uint32_t>(bytes);
    }

    void
    readProperties(const std::vector<Descriptor>& pictures, const Request& request, Reply& reply) {
        std::array<std::uint64_t, mostPictures> lengths{};
        const std::size_t tableBytes = pictures.size() * sizeof(std::uint64_t);
        auto* result = static_cast<char*>(_results.data());
        std::size_t filled = tableBytes;
        const QString type = typeHint(request);
        for (std::size_t index = 0; index < pictures.size(); ++index) {
            lengths[index] = noProperties;
            const auto properties = readImageProperties(pictures[index].get(), type, request.frame);
            if (!properties) continue;
            const QByteArray bytes = platform::encodeDictionary(*properties);
            const auto length = static_cast<std::size_t>(bytes.size());
            lengths[index] = noRoom;
            if (length > _results.size() - filled) continue;
            std::memcpy(result + filled, bytes.constData(), length);
            filled += length;
            lengths[index] = length;
        }
        std::memcpy(result, lengths.data(), tableBytes);
        reply.count = filled;
        reply.status = Status::Done;
    }

    void readMetadata(int picture, const Request& request, Reply& reply) {
        const auto stored = readMetadataBlocks(picture);
        if (!stored) return;
        const MetadataBlocks blocks = carriedMetadata(
            *stored, {.size = QSize(request.newWidth, request.newHeight),
                      .isSrgb = request.isNewSrgb != 0,
                      .hasIptc = request.hasNewIptc != 0,
                      .hasLocation = request.hasNewLocation != 0});
        MetadataLengths lengths;
        lengths.isComplete = blocks.isComplete ? 1 : 0;
        auto* result = static_cast<char*>(_results.data());
        std::size_t filled = sizeof lengths;
        static_assert(sizeof lengths + 3 * largestMetadataBlock <= smallResultBytes);
        const auto add = [&](const QByteArray& block) {
            const auto length = static_cast<std::size_t>(block.size());
            std::memcpy(result + filled, block.constData(), length);
            filled += length;
            return std::uint64_t{length};
        };
        lengths.exif = add(blocks.exif);
        lengths.iptc = add(blocks.iptc);
        lengths.xmp = add(blocks.xmp);
        std::memcpy(result, &lengths, sizeof lengths);
        reply.count = filled;
        reply.status = Status::Done;
    }

    CodecTable _codecs;
    Mapping _control;
    Mapping _results;
    /// Let go of behind the reply: for a large picture that takes long.
    std::optional<Mapping> _large;
    std::optional<Source> _source;
    std::unique_ptr<Decoder> _decoder;
    std::optional<DecodeRequest> _sequence; ///< what its frames are to be, while one is open
};

/// Out of memory is an answer like any other; nothing else should come here.
[[nodiscard]] Reply
answerSafely(Worker& worker, const Request& request, std::vector<Descriptor>& descriptors) {
    try {
        return worker.answer(request, descriptors);
    } catch (const std::exception&) {
        Reply reply;
        reply.number = request.number;
        return reply;
    }
}

[[nodiscard]] bool send(const Reply& reply) {
    return sendPacket(socketDescriptor, std::as_bytes(std::span(&reply, 1)));
}

} // namespace

namespace {

int runDecoderProcess(std::uint64_t addressSpaceBytes, CodecTable codecs) {
    auto control = Mapping::of(controlDescriptor, sizeof(std::uint32_t), Mapping::Access::Read);
    auto results = Mapping::of(resultDescriptor, smallResultBytes, Mapping::Access::ReadWrite);
    if (!control || !results) return 1;
    prepareImageProperties();
    Reply greeting;
    greeting.status = Status::Done;
    greeting.count = confine(addressSpaceBytes);
    if (!send(greeting)) return 0;

    Worker worker(codecs, std::move(*control), std::move(*results));
    while (true) {
        Request request;
        std::vector<Descriptor> descriptors;
        if (!receivePacket(
                socketDescriptor, std::as_writable_bytes(std::span(&request, 1)), descriptors)) {
            return 0;
        }
        if (!send(answerSafely(worker, request, descriptors))) return 0;
        // The program has closed its own by then, where nobody wants the result any more.
        worker.close(request);
    }
}

} // namespace

std::optional<int> runIfDecoderProcess(std::span<char*> arguments, CodecTable codecs) {
    if (arguments.size() != 3 || std::strcmp(arguments[1], decoderArgument) != 0) {
        return std::nullopt;
    }
    return runDecoderProcess(std::strtoull(arguments[2], nullptr, 10), codecs);
}

} // namespace codec::process
