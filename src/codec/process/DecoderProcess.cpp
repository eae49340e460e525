#include "codec/process/DecoderProcess.h"

#include "codec/metadata/ImageProperties.h"
#include "codec/metadata/headers/ImageHeader.h"
#include "codec/pixels/Source.h"
#include "codec/process/Confinement.h"
#include "codec/process/PacketSocket.h"
#include "codec/process/Protocol.h"
#include "codec/process/SharedMemory.h"
#include "platform/values/CborValues.h"

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
        const std::size_t expected =
            request.kind == Kind::Properties
                ? request.pictures
                : 1 + (request.hasLargeResult ? 1U : 0U) + (request.hasProfile ? 1U : 0U);
        if (descriptors.empty() || descriptors.size() != expected) return reply;
        const int picture = descriptors.front().get();
        switch (request.kind) {
        case Kind::Decode:
            decode(request, descriptors, reply);
            break;
        case Kind::CountFrames:
            if (Decoder* decoder = open(picture, request)) {
                reply.count = decoder->frameCount();
                reply.status = reply.count > 0 ? Status::Done : Status::Failed;
            }
            break;
        case Kind::FrameDelay:
            if (Decoder* decoder = open(picture, request)) {
                reply.count = static_cast<std::uint64_t>(decoder->frameDelay(request.frame));
                reply.status = Status::Done;
            }
            break;
        case Kind::Properties:
            readProperties(descriptors, request, reply);
            break;
        case Kind::Grant:
        case Kind::Deny:
            break;
        }
        return reply;
    }

    /// Lets go of the picture: a volume can't be ejected while a file of it is mapped.
    void close() {
        _decoder.reset();
        _source.reset();
    }

private:
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

    void decode(const Request& request, const std::vector<Descriptor>& descriptors, Reply& reply) {
        Decoder* decoder = open(descriptors.front().get(), request);
        if (!decoder || !mayTakeMemory(request)) return;
        DecodeRequest wanted;
        wanted.frame = request.frame;
        wanted.maxSize = request.maxSize;
        wanted.onlyEmbedded = request.onlyEmbedded != 0;
        wanted.limits = {request.pixelLimit, request.byteLimit};
        wanted.stop = StopFlag(
            static_cast<const std::atomic<std::uint32_t>*>(_control.data()), request.number);
        if (request.hasProfile) {
            const auto profile =
                Mapping::of(descriptors.back().get(), request.profileBytes, Mapping::Access::Read);
            if (!profile) return;
            wanted.targetProfile = QByteArray(
                static_cast<const char*>(profile->data()), static_cast<qsizetype>(profile->size()));
        }
        std::optional<Mapping> large;
        const auto room = [&](std::size_t bytes) -> void* {
            if (!request.hasLargeResult) {
                return bytes <= _results.size() ? _results.data() : nullptr;
            }
            large = Mapping::of(descriptors[1].get(), bytes, Mapping::Access::ReadWrite);
            return large ? large->data() : nullptr;
        };
        wanted.allocate = [&](QSize size, QImage::Format format) {
            const std::size_t lineBytes = static_cast<std::size_t>(size.width()) * 4;
            void* pixels = room(lineBytes * static_cast<std::size_t>(size.height()));
            if (!pixels) return QImage();
            return QImage(
                static_cast<uchar*>(pixels), size.width(), size.height(),
                static_cast<qsizetype>(lineBytes), format);
        };
        const Frame frame = decoder->wanted(wanted);
        if (!frame.image.isNull()) deliver(frame, room, large, reply);
    }

    /// By the size that the file declares, before anything is decoded.
    [[nodiscard]] bool mayTakeMemory(const Request& request) const {
        // The picture itself, and as much for what its library keeps of it.
        constexpr std::uint64_t bytesPerPixel = 8;
        const Bytes file(_source->bytes());
        const auto header = readImageHeader(file, sniffContainer(file), request.frame);
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
    void deliver(
        const Frame& frame, const Room& room, const std::optional<Mapping>& large, Reply& reply) {
        const QImage& image = frame.image;
        const std::size_t lineBytes = static_cast<std::size_t>(image.width()) * 4;
        const void* shared = large ? large->data() : _results.data();
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
        reply.isOpaque = image.format() == QImage::Format_RGB32 ? 1 : 0;
        reply.isComplete = frame.isComplete ? 1 : 0;
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

    CodecTable _codecs;
    Mapping _control;
    Mapping _results;
    std::optional<Source> _source;
    std::unique_ptr<Decoder> _decoder;
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
        worker.close();
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
