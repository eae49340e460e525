#include "image/large/AnimationFrames.h"

#include <algorithm>
#include <utility>

using platform::Lock;

namespace {

/// Of an animation that is not kept as a whole: what a player that is held up for a moment needs.
constexpr std::size_t mostAhead = 6;
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
    if (!_isTooLong) return index < _count && !stop.stop_requested() ? Need::Next : Need::Nothing;
    Need need = Need::Nothing;
    const bool isNeeded = _shownChanged.waitUnlessStopped(lock, stop, [&] {
        _mutex.assertHeld();
        const std::size_t wanted = (_shown + 1) % _count;
        // A player that jumped back is not to wait for the whole way round.
        const bool isBehind = wanted != 0 && wanted < index && !_frames.contains(wanted);
        need = isBehind || index >= _count ? Need::Rewind : Need::Next;
        return _count > 1 && (isBehind || framesAhead(index % _count) <= mostAhead);
    });
    return isNeeded ? need : Need::Nothing;
}

void AnimationFrames::store(std::size_t index, const codec::SequenceFrame& decoded) {
    if (index == 0) return;
    const PBImage image(decoded.frame.image, decoded.delay * secondsPerMillisecond);
    std::vector<PBImage> gone; // freed without the lock
    const Lock lock(_mutex);
    if (!_frames.emplace(index, image).second) return;
    _bytes += image.image().sizeInBytes();
    _isTooLong = _isTooLong || _bytes > _mostBytes;
    // The one shown and the next one stay, however large they are.
    while (_isTooLong && _frames.size() > 2) {
        const auto farthest = std::ranges::max_element(_frames, {}, [this](const auto& entry) {
            _mutex.assertHeld();
            return framesAhead(entry.first);
        });
        if (framesAhead(farthest->first) <= mostAhead && _bytes <= _mostBytes) return;
        _bytes -= farthest->second.image().sizeInBytes();
        gone.push_back(std::move(farthest->second));
        _frames.erase(farthest);
    }
}
