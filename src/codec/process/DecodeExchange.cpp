#include "codec/process/DecodeExchange.h"

#include "codec/process/SharedMemory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace codec::process {

namespace {

/// A result in memory of its own: the picture keeps the mapping for as long as it lives.
QImage adopt(Mapping mapping, QSize size, qsizetype lineBytes, QImage::Format format) {
    auto kept = std::make_unique<Mapping>(std::move(mapping));
    auto* pixels = static_cast<uchar*>(kept->data());
    QImage image(
        pixels, size.width(), size.height(), lineBytes, format,
        [](void* held) { delete static_cast<Mapping*>(held); }, kept.get());
    if (!image.isNull()) static_cast<void>(kept.release());
    return image;
}

QImage::Format formatOf(const Reply& reply, Depth depth) {
    if (depth == Depth::Source && reply.isDeep)
        return reply.isOpaque ? QImage::Format_RGBX64 : QImage::Format_RGBA64_Premultiplied;
    return reply.isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied;
}

} // namespace

Request makeRequest(Kind kind, QStringView typeHint, std::size_t frame) {
    Request request;
    request.kind = kind;
    request.frame = frame;
    const QByteArray hint = typeHint.toLatin1();
    std::copy_n(
        hint.constData(),
        std::min(static_cast<std::size_t>(hint.size()), request.typeHint.size() - 1),
        request.typeHint.begin());
    return request;
}

DecodeExchange::DecodeExchange(
    Kind kind, QStringView typeHint, const DecodeRequest& wanted, int picture)
    : _wanted(wanted), _request(makeRequest(kind, typeHint, wanted.frame)) {
    _request.maxSize = wanted.maxSize;
    _request.onlyEmbedded = wanted.onlyEmbedded ? 1 : 0;
    _request.pixelLimit = wanted.limits.pixels;
    _request.byteLimit = wanted.limits.bytes;
    _request.threads = static_cast<std::uint32_t>(wanted.threads);
    _request.isAsInSource = wanted.depth == Depth::Source ? 1 : 0;
    _request.isFiltered = wanted.reduction == Reduction::Filtered ? 1 : 0;
    if (picture >= 0) _descriptors.push_back(picture);
    // An opened sequence has said the rest, and gets its memory with each frame.
    if (kind != Kind::OpenSequence) addLargeResult();
    if (kind != Kind::NextFrame) addProfile();
}

void DecodeExchange::addLargeResult() {
    const bool isSmall =
        _wanted.maxSize > 0 && _wanted.maxSize <= smallResultSide && _wanted.depth == Depth::Screen;
    if (isSmall) return;
    _pixels = makeSharedMemory(_wanted.limits.bytes);
    _isUsable = _isUsable && _pixels.isOpen();
    _descriptors.push_back(_pixels.get());
    _request.hasLargeResult = 1;
}

void DecodeExchange::addProfile() {
    if (_wanted.targetProfile.isEmpty()) return;
    const auto size = static_cast<std::size_t>(_wanted.targetProfile.size());
    _profile = makeSharedMemory(size);
    const auto room = Mapping::of(_profile.get(), size, Mapping::Access::ReadWrite);
    _isUsable = _isUsable && room;
    if (!room) return;
    std::memcpy(room->data(), _wanted.targetProfile.constData(), size);
    _descriptors.push_back(_profile.get());
    _request.hasProfile = 1;
    _request.profileBytes = static_cast<std::uint32_t>(size);
}

Frame DecodeExchange::accept(const Reply& reply, std::span<const char> smallResult) {
    // The other side may have been taken over by its picture: nothing it says is believed.
    const QSize size(reply.width, reply.height);
    const int longest = _wanted.maxSize > 0 ? _wanted.maxSize : 1 << 20;
    if (size.isEmpty() || size.width() > longest || size.height() > longest) return {};
    const auto format = formatOf(reply, _wanted.depth);
    const qsizetype lineBytes =
        qsizetype{size.width()} * QImage::toPixelFormat(format).bitsPerPixel() / 8;
    const std::uint64_t bytes = std::uint64_t(lineBytes) * std::uint64_t(size.height());
    Frame frame;
    frame.isComplete = reply.isComplete != 0;
    if (!_request.hasLargeResult) {
        if (bytes > smallResult.size()) return {};
        const auto* shared = reinterpret_cast<const uchar*>(smallResult.data());
        frame.image = QImage(shared, size.width(), size.height(), lineBytes, format).copy();
    } else if (bytes <= _wanted.limits.bytes) {
        auto mapping = Mapping::of(_pixels.get(), bytes, Mapping::Access::ReadWrite);
        if (mapping) frame.image = adopt(std::move(*mapping), size, lineBytes, format);
    }
    if (_wanted.depth == Depth::Screen) {
        if (reply.profile == ResultProfile::Wanted) frame.profile = _wanted.targetProfile;
    } else if (reply.profile == ResultProfile::Own) {
        // Beside the pixels, which lie in memory of their own.
        if (reply.profileBytes > smallResult.size()) return {};
        frame.profile = QByteArray(smallResult.data(), static_cast<qsizetype>(reply.profileBytes));
    }
    return frame;
}

} // namespace codec::process
