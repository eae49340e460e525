#include "codec/process/DecoderPool.h"

#include "codec/process/AskHelper.h"
#include "codec/process/DecodeExchange.h"
#include "codec/process/DecoderHelper.h"
#include "codec/process/EmbedExchange.h"
#include "codec/process/EncodeExchange.h"
#include "codec/process/HelperSequence.h"
#include "codec/process/HelperShelf.h"
#include "platform/tasks/Cores.h"
#include "platform/values/CborValues.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

namespace codec {

using process::Answer;
using process::DecodeExchange;
using process::HelperShelf;
using process::Kind;
using process::Reply;
using process::Request;

DecoderPool::DecoderPool(Settings settings)
    : _settings(std::move(settings)),
      _shelf(std::make_shared<HelperShelf>(HelperShelf::Settings{
          _settings.executable, _settings.addressSpaceBytes,
          _settings.processes > 0 ? _settings.processes : platform::usableCores(),
          _settings.reserved, _settings.availableMemory})) {}

DecoderPool::~DecoderPool() = default;

void DecoderPool::start() {
    _shelf->start();
}

void DecoderPool::startOne() {
    _shelf->startOne();
}

std::chrono::milliseconds DecoderPool::timeFor(const DecodeRequest& request) const {
    const bool isThumbnail = request.maxSize > 0 && request.urgency > Urgency::Next;
    return isThumbnail ? _settings.thumbnailTime : _settings.fullTime;
}

ReadResult DecoderPool::decode(
    int descriptor, const QString& typeHint, const DecodeRequest& request, std::stop_token stop) {
    DecodeRequest wanted = request;
    wanted.threads = threadsFor(request.urgency);
    DecodeExchange exchange(Kind::Decode, typeHint, wanted, descriptor);
    if (!exchange.isUsable()) return {ReadStatus::NotNow, {}};
    HelperShelf::Lease lease(_shelf, wanted.urgency, stop);
    process::MemoryBudget::Share share;
    const auto takeMemory = [&](std::uint64_t bytes) {
        share = _shelf->memory().take(bytes, stop, wanted.urgency == Urgency::Focus);
        return share != nullptr;
    };
    Reply reply;
    switch (process::ask(
        lease, exchange.request(), exchange.descriptors(), timeFor(wanted), stop, reply,
        takeMemory)) {
    case Answer::Done:
        break;
    case Answer::Refused:
        return {stop.stop_requested() ? ReadStatus::NotNow : ReadStatus::Refused, {}};
    case Answer::PictureFailed:
        return {ReadStatus::Failed, {}};
    case Answer::OutOfTime:
    case Answer::NotNow:
        return {ReadStatus::NotNow, {}};
    }
    Frame frame = exchange.accept(reply, lease.helper().smallResult());
    const bool isThere = !frame.image.isNull();
    return {isThere ? ReadStatus::Decoded : ReadStatus::Failed, std::move(frame)};
}

OpenedSequence DecoderPool::openSequence(
    int descriptor, const QString& typeHint, const DecodeRequest& request, std::stop_token stop) {
    DecodeRequest wanted = request;
    wanted.threads = threadsFor(request.urgency);
    return process::HelperSequence::open(
        _shelf, descriptor, typeHint, wanted, timeFor(wanted), stop);
}

std::size_t DecoderPool::countFrames(int descriptor, const QString& typeHint, Urgency urgency) {
    HelperShelf::Lease lease(_shelf, urgency, {});
    Reply reply;
    const Request request = process::makeRequest(Kind::CountFrames, typeHint, 0);
    const Answer answer =
        process::ask(lease, request, std::array{descriptor}, _settings.thumbnailTime, {}, reply);
    return answer == Answer::Done && reply.count <= mostFrames ? reply.count : 0;
}

int DecoderPool::frameDelay(int descriptor, const QString& typeHint, std::size_t frame) {
    HelperShelf::Lease lease(_shelf, Urgency::Properties, {});
    Reply reply;
    const Request request = process::makeRequest(Kind::FrameDelay, typeHint, frame);
    if (process::ask(lease, request, std::array{descriptor}, _settings.thumbnailTime, {}, reply) !=
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

ReadMetadata
DecoderPool::metadataBlocks(int descriptor, const NewPicture& picture, std::stop_token stop) {
    HelperShelf::Lease lease(_shelf, Urgency::Next, stop);
    Reply reply;
    Request request = process::makeRequest(Kind::MetadataBlocks, {}, 0);
    request.newWidth = picture.size.width();
    request.newHeight = picture.size.height();
    request.isNewSrgb = picture.isSrgb ? 1 : 0;
    request.hasNewIptc = picture.hasIptc ? 1 : 0;
    request.hasNewLocation = picture.hasLocation ? 1 : 0;
    const Answer answer =
        process::ask(lease, request, std::array{descriptor}, _settings.thumbnailTime, stop, reply);
    if (answer == Answer::NotNow || stop.stop_requested()) return {};
    ReadMetadata read{PropertiesStatus::Unreadable, {}};
    process::MetadataLengths lengths;
    if (answer != Answer::Done || reply.count > process::smallResultBytes ||
        reply.count < sizeof lengths)
        return read;
    // A copy, since the other side could still change the memory.
    const auto bytes = lease.helper().smallResult().first(reply.count);
    const QByteArray result(bytes.data(), static_cast<qsizetype>(bytes.size()));
    std::memcpy(&lengths, result.constData(), sizeof lengths);
    qsizetype begin = sizeof lengths;
    for (auto [length, block] :
         {std::pair(lengths.exif, &read.blocks.exif), std::pair(lengths.iptc, &read.blocks.iptc),
          std::pair(lengths.xmp, &read.blocks.xmp)}) {
        if (length >
            static_cast<std::uint64_t>(std::min(largestMetadataBlock, result.size() - begin)))
            return {PropertiesStatus::Unreadable, {}};
        *block = result.sliced(begin, static_cast<qsizetype>(length));
        begin += static_cast<qsizetype>(length);
    }
    read.blocks.isComplete = lengths.isComplete != 0;
    read.status = PropertiesStatus::Read;
    return read;
}

bool DecoderPool::embedMetadata(
    QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile,
    std::stop_token stop) {
    const auto exchange = process::embedExchange(file, metadata, profile);
    if (!exchange.isUsable()) return false;
    HelperShelf::Lease lease(_shelf, Urgency::Next, stop);
    Reply reply;
    if (process::ask(
            lease, exchange.request(), exchange.descriptors(), _settings.fullTime, stop, reply) !=
        Answer::Done)
        return false;
    QByteArray whole = exchange.accept(reply);
    if (whole.isEmpty()) return false;
    file = std::move(whole);
    return true;
}

QByteArray DecoderPool::encode(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings) {
    const auto exchange = process::encodeExchange(image, profile, metadata, settings);
    if (!exchange.isUsable()) return {};
    HelperShelf::Lease lease(_shelf, Urgency::Next, settings.stop);
    Reply reply;
    const Answer answer = process::ask(
        lease, exchange.request(), exchange.descriptors(), _settings.encodeTime, settings.stop,
        reply);
    return answer == Answer::Done ? exchange.accept(reply) : QByteArray();
}

std::vector<DecoderPool::PropertyAnswer> DecoderPool::askForProperties(
    std::span<const int> descriptors, const QString& typeHint, std::size_t frame,
    const std::stop_token& stop) {
    std::vector<PropertyAnswer> answers(descriptors.size());
    Request request = process::makeRequest(Kind::Properties, typeHint, frame);
    request.pictures = static_cast<std::uint32_t>(descriptors.size());
    QByteArray result;
    {
        HelperShelf::Lease lease(_shelf, Urgency::Properties, stop);
        Reply reply;
        const Answer answer =
            process::ask(lease, request, descriptors, _settings.thumbnailTime, stop, reply);
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
