#include "codec/process/DecoderPool.h"

#include "codec/process/DecoderHelper.h"
#include "codec/process/Protocol.h"
#include "codec/process/SharedMemory.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/Cores.h"
#include "platform/values/CborValues.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <future>
#include <numeric>

namespace codec {

using process::DecoderHelper;
using process::Kind;
using process::Mapping;
using process::Reply;
using process::Request;

namespace {

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

/// A result in memory of its own: the picture keeps the mapping for as long as it lives.
QImage adopt(Mapping mapping, QSize size, QImage::Format format) {
    auto kept = std::make_unique<Mapping>(std::move(mapping));
    auto* pixels = static_cast<uchar*>(kept->data());
    QImage image(
        pixels, size.width(), size.height(), qsizetype{size.width()} * 4, format,
        [](void* held) { delete static_cast<Mapping*>(held); }, kept.get());
    if (!image.isNull()) static_cast<void>(kept.release());
    return image;
}

} // namespace

/// A helper for the time of one operation.
class DecoderPool::Lease {
public:
    Lease(DecoderPool& pool, Length length, const std::stop_token& stop = {})
        : _pool(pool), _helper(pool.take(stop, length)) {}
    ~Lease() {
        if (_helper) _pool.giveBack(std::move(*_helper));
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    /// Whether there is a living process; a lost one is replaced here.
    [[nodiscard]] bool isUsable() {
        if (!_helper) return false;
        if (!*_helper || !(*_helper)->isAlive()) *_helper = _pool.startHelper();
        return *_helper != nullptr;
    }
    [[nodiscard]] DecoderHelper& helper() { return **_helper; }

private:
    DecoderPool& _pool;
    std::optional<Helper> _helper;
};

DecoderPool::DecoderPool(Settings settings) : _settings(std::move(settings)) {
    const int count = _settings.processes > 0 ? _settings.processes : platform::usableCores();
    _idle.resize(static_cast<std::size_t>(count));
}

DecoderPool::~DecoderPool() = default;

void DecoderPool::start() {
    _starter.addOperation([this] {
        while (isAnyMissing()) {
            Helper helper = DecoderHelper::start(_settings.executable, _settings.addressSpaceBytes);
            if (!helper) return;
            const platform::Lock lock(_mutex);
            // It may have been started otherwise meanwhile; one too many ends with this.
            const auto missing = std::ranges::find(_idle, Helper());
            if (missing != _idle.end()) *missing = std::move(helper);
        }
    });
}

bool DecoderPool::isAnyMissing() {
    const platform::Lock lock(_mutex);
    return std::ranges::find(_idle, Helper()) != _idle.end();
}

DecoderPool::Helper DecoderPool::startHelper() {
    std::promise<Helper> started;
    _starter.addOperation([&] {
        started.set_value(DecoderHelper::start(_settings.executable, _settings.addressSpaceBytes));
    });
    return started.get_future().get();
}

std::optional<DecoderPool::Helper> DecoderPool::take(const std::stop_token& stop, Length length) {
    const bool isShort = length == Length::Short;
    platform::Lock lock(_mutex);
    if (isShort) ++_waitingShort;
    const bool isTaken = _returned.waitUnlessStopped(lock, stop, [&] {
        _mutex.assertHeld();
        return !_idle.empty() && (isShort || _waitingShort == 0);
    });
    if (isShort) --_waitingShort;
    // Those that stood back for this one, where it is the last of its kind.
    if (isShort && _waitingShort == 0) _returned.notifyAll();
    if (!isTaken) return std::nullopt;
    Helper helper = std::move(_idle.back());
    _idle.pop_back();
    return helper;
}

void DecoderPool::giveBack(Helper helper) {
    // Replaced right away, so that the next picture does not wait for the start.
    if (!helper || !helper->isAlive()) helper = startHelper();
    const platform::Lock lock(_mutex);
    if (helper) tellRefusals(*helper);
    _idle.push_back(std::move(helper));
    _returned.notifyAll();
}

void DecoderPool::tellRefusals(const DecoderHelper& helper) {
    const std::uint64_t refusals = helper.refusals().value_or(0);
    if (refusals == 0 || std::exchange(_toldRefusals, true)) return;
    QStringList parts;
    if (refusals & process::RefusedPrivileges) parts.append(QStringLiteral("privileges"));
    if (refusals & process::RefusedFilter) parts.append(QStringLiteral("system calls"));
    if (refusals & process::RefusedMemoryLimit) parts.append(QStringLiteral("memory"));
    platform::complain(QStringLiteral("this system does not let decoders be confined in their %1; "
                                      "pictures are still read in processes of their own")
                           .arg(parts.join(QStringLiteral(" and "))));
}

DecoderPool::Answer DecoderPool::ask(
    Lease& lease, const Request& request, std::span<const int> descriptors,
    std::chrono::milliseconds time, const std::stop_token& stop, Reply& reply,
    const std::function<bool(std::uint64_t bytes)>& memory) {
    // A process may have gone while nobody asked it; a second one gets the same request.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (!lease.isUsable()) return Answer::NotNow;
        switch (lease.helper().ask(request, descriptors, time, stop, reply, memory)) {
        case DecoderHelper::Outcome::Unsent:
            continue;
        case DecoderHelper::Outcome::Answered:
            return reply.status == process::Status::Done ? Answer::Done : Answer::Refused;
        case DecoderHelper::Outcome::Crashed:
        case DecoderHelper::Outcome::OutOfTime:
            return Answer::PictureFailed;
        case DecoderHelper::Outcome::Stopped:
        case DecoderHelper::Outcome::Lost:
            return Answer::NotNow;
        }
    }
    return Answer::NotNow;
}

ReadResult DecoderPool::decode(
    int descriptor, const QString& typeHint, const DecodeRequest& wanted, std::stop_token stop) {
    Request request = makeRequest(Kind::Decode, typeHint, wanted.frame);
    request.maxSize = wanted.maxSize;
    request.onlyEmbedded = wanted.onlyEmbedded ? 1 : 0;
    request.pixelLimit = wanted.limits.pixels;
    request.byteLimit = wanted.limits.bytes;
    const bool isThumbnail = wanted.maxSize > 0;
    const bool isSmall = isThumbnail && wanted.maxSize <= process::smallResultSide;

    std::vector<int> descriptors{descriptor};
    process::Descriptor pixels;
    if (!isSmall) {
        pixels = process::makeSharedMemory(wanted.limits.bytes);
        if (!pixels.isOpen()) return {ReadStatus::Failed, {}};
        descriptors.push_back(pixels.get());
        request.hasLargeResult = 1;
    }
    process::Descriptor profile;
    if (!wanted.targetProfile.isEmpty()) {
        const auto size = static_cast<std::size_t>(wanted.targetProfile.size());
        profile = process::makeSharedMemory(size);
        const auto room = Mapping::of(profile.get(), size, Mapping::Access::ReadWrite);
        if (!room) return {ReadStatus::Failed, {}};
        std::memcpy(room->data(), wanted.targetProfile.constData(), size);
        descriptors.push_back(profile.get());
        request.hasProfile = 1;
        request.profileBytes = static_cast<std::uint32_t>(size);
    }

    Lease lease(*this, wanted.onlyEmbedded ? Length::Short : Length::Long, stop);
    Reply reply;
    const auto time = isThumbnail ? _settings.thumbnailTime : _settings.fullTime;
    process::MemoryBudget::Share share;
    const auto takeMemory = [&](std::uint64_t bytes) {
        share = _memory.take(bytes, stop);
        return share != nullptr;
    };
    const Answer answer = ask(lease, request, descriptors, time, stop, reply, takeMemory);
    if (answer != Answer::Done) {
        const bool isRefused = answer == Answer::Refused && !stop.stop_requested();
        return {isRefused ? ReadStatus::Refused : ReadStatus::Failed, {}};
    }

    // The other side may have been taken over by its picture: nothing it says is believed.
    const QSize size(reply.width, reply.height);
    const int longest = isThumbnail ? wanted.maxSize : 1 << 20;
    if (size.isEmpty() || size.width() > longest || size.height() > longest)
        return {ReadStatus::Failed, {}};
    const std::uint64_t bytes = std::uint64_t(size.width()) * std::uint64_t(size.height()) * 4;
    const auto format = reply.isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied;
    Frame frame;
    frame.isComplete = reply.isComplete != 0;
    if (isSmall) {
        const auto* shared = reinterpret_cast<const uchar*>(lease.helper().smallResult().data());
        frame.image =
            QImage(shared, size.width(), size.height(), qsizetype{size.width()} * 4, format).copy();
    } else if (bytes <= wanted.limits.bytes) {
        auto mapping = Mapping::of(pixels.get(), bytes, Mapping::Access::ReadWrite);
        if (mapping) frame.image = adopt(std::move(*mapping), size, format);
    }
    const bool isThere = !frame.image.isNull();
    return {isThere ? ReadStatus::Decoded : ReadStatus::Failed, std::move(frame)};
}

OpenedSequence
DecoderPool::openSequence(int, const QString&, const DecodeRequest&, std::stop_token) {
    return {};
}

std::size_t DecoderPool::countFrames(int descriptor, const QString& typeHint, Urgency) {
    Lease lease(*this, Length::Short);
    Reply reply;
    const Request request = makeRequest(Kind::CountFrames, typeHint, 0);
    const Answer answer =
        ask(lease, request, std::array{descriptor}, _settings.thumbnailTime, {}, reply);
    return answer == Answer::Done ? reply.count : 0;
}

int DecoderPool::frameDelay(int descriptor, const QString& typeHint, std::size_t frame) {
    Lease lease(*this, Length::Short);
    Reply reply;
    const Request request = makeRequest(Kind::FrameDelay, typeHint, frame);
    if (ask(lease, request, std::array{descriptor}, _settings.thumbnailTime, {}, reply) !=
        Answer::Done) {
        return 0;
    }
    return static_cast<int>(std::min<std::uint64_t>(reply.count, 1U << 30));
}

PictureProperties DecoderPool::properties(
    int descriptor, const QString& typeHint, std::size_t frame, std::stop_token stop) {
    return askForProperties(std::array{descriptor}, typeHint, frame, stop).front().properties;
}

std::vector<PictureProperties>
DecoderPool::propertiesOfPictures(std::span<const OpenPicture> pictures, std::stop_token stop) {
    std::vector<std::size_t> byType(pictures.size());
    std::iota(byType.begin(), byType.end(), std::size_t{0});
    std::ranges::stable_sort(
        byType, {}, [&](std::size_t index) -> const QString& { return pictures[index].typeHint; });
    std::vector<PictureProperties> all(pictures.size());
    for (std::size_t begin = 0; begin < byType.size() && !stop.stop_requested();) {
        const QString& type = pictures[byType[begin]].typeHint;
        std::vector<int> together;
        while (begin + together.size() < byType.size() && together.size() < process::mostPictures) {
            const OpenPicture& next = pictures[byType[begin + together.size()]];
            if (next.typeHint != type) break;
            together.push_back(next.descriptor);
        }
        auto answers = askForProperties(together, type, 0, stop);
        for (std::size_t index = 0; index < answers.size(); ++index) {
            const bool isLast = answers.size() == 1 || stop.stop_requested();
            all[byType[begin + index]] = answers[index].isKnown || isLast
                                             ? std::move(answers[index].properties)
                                             : properties(together[index], type, 0, stop);
        }
        begin += together.size();
    }
    return all;
}

std::vector<DecoderPool::PropertyAnswer> DecoderPool::askForProperties(
    std::span<const int> descriptors, const QString& typeHint, std::size_t frame,
    const std::stop_token& stop) {
    std::vector<PropertyAnswer> answers(descriptors.size());
    Request request = makeRequest(Kind::Properties, typeHint, frame);
    request.pictures = static_cast<std::uint32_t>(descriptors.size());
    QByteArray result;
    {
        Lease lease(*this, Length::Short, stop);
        Reply reply;
        const Answer answer =
            ask(lease, request, descriptors, _settings.thumbnailTime, stop, reply);
        if (answer == Answer::NotNow) return answers;
        for (PropertyAnswer& one : answers)
            one.properties.status = PropertiesStatus::Unreadable;
        if (answer != Answer::Done || reply.count > process::smallResultBytes) return answers;
        // A copy, since the other side could still change the memory.
        const auto bytes = lease.helper().smallResult().first(reply.count);
        result = QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
    std::vector<std::uint64_t> lengths(descriptors.size());
    const std::size_t tableBytes = lengths.size() * sizeof(std::uint64_t);
    auto begin = static_cast<qsizetype>(tableBytes);
    if (result.size() < begin) return answers;
    std::memcpy(lengths.data(), result.constData(), tableBytes);
    for (std::size_t index = 0; index < answers.size(); ++index) {
        if (lengths[index] == process::noRoom) continue;
        answers[index].isKnown = true;
        const auto left = static_cast<std::uint64_t>(result.size() - begin);
        if (lengths[index] == process::noProperties || lengths[index] > left) continue;
        const auto length = static_cast<qsizetype>(lengths[index]);
        answers[index].properties = PictureProperties::of(platform::decodeDictionary(
            QByteArray::fromRawData(result.constData() + begin, length)));
        begin += length;
    }
    return answers;
}

} // namespace codec
