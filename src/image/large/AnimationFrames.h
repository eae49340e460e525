#pragma once

#include "codec/process/FrameReader.h"
#include "image/large/PBImages.h"
#include "platform/tasks/Mutex.h"

#include <functional>
#include <map>
#include <stop_token>
#include <thread>

/// Decodes an animation while it plays, on a thread of its own: all of it once where the frames
/// take no more than `keptBytes`; else as many as that ahead of the one shown, round after round.
/// Begins with the first frame that is shown, so that an animation which nobody plays costs one
/// frame.
class AnimationFrames final : public PlayedFrames {
public:
    /// Asked on the thread, with what stops it.
    using Open = std::function<codec::OpenedSequence(std::stop_token stop)>;
    static constexpr qsizetype keptBytes = qsizetype{256} << 20;

    /// `frameCount` as the file declares it. The first frame is kept by others.
    AnimationFrames(Open open, std::size_t frameCount, qsizetype mostBytes = keptBytes);
    /// Stops what is decoded, and waits for it.
    ~AnimationFrames() override;

    [[nodiscard]] std::size_t frameCount() const override;
    [[nodiscard]] PBImage frame(std::size_t index) const override;
    void willShow(std::size_t index) override;
    [[nodiscard]] qsizetype byteCount() const override;

private:
    void decodeAll(const std::stop_token& stop);
    enum class Need { Next, Rewind, Nothing };
    /// Waits until the frame at the index, which comes next, is wanted.
    [[nodiscard]] Need waitForNeed(std::size_t index, const std::stop_token& stop);
    void endAt(std::size_t count);
    void store(std::size_t index, const codec::SequenceFrame& decoded);
    /// It can be kept, in place of one that is wanted later.
    [[nodiscard]] bool hasRoomFor(std::size_t index) const VELMORA_REQUIRES(_mutex);
    /// The frame in memory that is wanted last.
    [[nodiscard]] std::size_t farthest() const VELMORA_REQUIRES(_mutex);
    /// The frames between the one shown and this one, round the end.
    [[nodiscard]] std::size_t framesAhead(std::size_t index) const VELMORA_REQUIRES(_mutex);

    const Open _open;
    const qsizetype _mostBytes;
    mutable platform::Mutex _mutex;
    platform::Condition _shownChanged;
    std::size_t _count VELMORA_GUARDED_BY(_mutex);
    std::size_t _shown VELMORA_GUARDED_BY(_mutex) = 0;
    bool _isTooLong VELMORA_GUARDED_BY(_mutex) = false;
    qsizetype _frameBytes VELMORA_GUARDED_BY(_mutex) = 0; ///< of the last one
    qsizetype _bytes VELMORA_GUARDED_BY(_mutex) = 0;
    std::map<std::size_t, PBImage> _frames VELMORA_GUARDED_BY(_mutex);
    std::jthread _thread; // the last member: it ends before the others go
};
