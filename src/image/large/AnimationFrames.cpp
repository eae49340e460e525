#include "image/large/AnimationFrames.h"

#include <algorithm>
#include <utility>

using platform::Lock;

namespace {

/// The one shown and the next one stay, however large they are.
constexpr std::size_t fewest = 2;
constexpr double secondsPerMillisecond = 1e-3;

} // namespace

AnimationFrames::AnimationFrames(Open open, std::size_t frameCount, qsizetype mostBytes)
    : _open(std::move(open)), _mostBytes(mostBytes), _count(frameCount) {}

AnimationFrames::~AnimationFrames() = default;

std::size_t AnimationFrames::frameCount() const {
    const Lock lock(_mutex);
    return _count;
}

PBImage AnimationFrames::frame(std::size_t index) const {
    const Lock lock(_mutex);
    const auto found = _frames.find(index);
    return found == _frames.end() ? PBImage() : found->second;
}

qsizetype AnimationFrames::byteCount() const {
    const Lock lock(_mutex);
    return _bytes;
}

void AnimationFrames::willShow(std::size_t index) {
    {
        const Lock lock(_mutex);
        _shown = index;
        _shownChanged.notifyAll();
    }
    if (!_thread.joinable())
        _thread = std::jthread([this](const std::stop_token& stop) { decodeAll(stop); });
}

std::size_t AnimationFrames::framesAhead(std::size_t index) const {
    return index >= _shown ? index - _shown : index + _count - _shown;
}

void AnimationFrames::decodeAll(const std::stop_token& stop) {
    const auto opened = _open(stop);
    if (!opened.sequence) return endAt(1); // the first frame stays
    std::size_t index = 0;                 // of the next frame of the sequence
    for (;;) {
        const Need need = waitForNeed(index, stop);
        if (need == Need::Nothing) return;
        if (need == Need::Rewind) {
            opened.sequence->rewind();
            index = 0;
        }
        const codec::SequenceFrame decoded = opened.sequence->next(stop);
        if (stop.stop_requested()) return;
        if (decoded.status != codec::SequenceStatus::Decoded)
            endAt(index);
        else
            store(index++, decoded);
    }
}

void AnimationFrames::endAt(std::size_t count) {
    const Lock lock(_mutex);
    _count = std::clamp<std::size_t>(count, 1, _count);
}

AnimationFrames::Need AnimationFrames::waitForNeed(std::size_t index, const std::stop_token& stop) {
    Lock lock(_mutex);
    if (index >= _count && !_isTooLong) return Need::Nothing; // all are here
    Need need = Need::Nothing;
    const bool isNeeded = _shownChanged.waitUnlessStopped(lock, stop, [&] {
        _mutex.assertHeld();
        const std::size_t wanted = (_shown + 1) % _count;
        const bool isMissing = wanted != 0 && !_frames.contains(wanted);
        // A player that jumped back is not to wait for the whole way round.
        need = index >= _count || (isMissing && wanted < index) ? Need::Rewind : Need::Next;
        return _count > 1 && (isMissing || need == Need::Rewind || hasRoomFor(index));
    });
    return isNeeded ? need : Need::Nothing;
}

bool AnimationFrames::hasRoomFor(std::size_t index) const {
    if (index == 0 || _frames.size() < fewest || _frames.contains(index)) return true;
    return _bytes + _frameBytes <= _mostBytes || framesAhead(index) < framesAhead(farthest());
}

std::size_t AnimationFrames::farthest() const {
    return std::ranges::max_element(
               _frames, {},
               [this](const auto& entry) {
                   _mutex.assertHeld();
                   return framesAhead(entry.first);
               })
        ->first;
}

void AnimationFrames::store(std::size_t index, const codec::SequenceFrame& decoded) {
    if (index == 0) return;
    const PBImage image(decoded.frame.image, decoded.delay * secondsPerMillisecond);
    std::vector<PBImage> gone; // freed without the lock
    const Lock lock(_mutex);
    if (!_frames.emplace(index, image).second) return;
    _frameBytes = image.image().sizeInBytes();
    _bytes += _frameBytes;
    while (_bytes > _mostBytes && _frames.size() > fewest) {
        _isTooLong = true;
        const auto dropped = _frames.find(farthest());
        _bytes -= dropped->second.image().sizeInBytes();
        gone.push_back(std::move(dropped->second));
        _frames.erase(dropped);
    }
}
