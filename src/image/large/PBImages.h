#pragma once

#include <QImage>
#include <QSize>

#include <cstddef>
#include <memory>
#include <vector>

/// One decoded frame: 32 bits a pixel, premultiplied or opaque, in the colours of the screen that
/// it was loaded for, as stored (no rotation applied).
class PBImage {
public:
    PBImage() = default;
    /// `delayTime`: seconds that the frame stays; 0 unless the set can animate.
    explicit PBImage(QImage image, double delayTime = 0)
        : _image(std::move(image)), _delayTime(delayTime) {}

    [[nodiscard]] const QImage& image() const { return _image; }
    /// Pixels; 0 x 0 without a picture.
    [[nodiscard]] QSize imageSize() const { return _image.isNull() ? QSize(0, 0) : _image.size(); }
    [[nodiscard]] double delayTime() const { return _delayTime; }

private:
    QImage _image;
    double _delayTime = 0;
};

/// The frames of an animation behind its first one: they are decoded as it plays. Main thread; let
/// go on any.
class PlayedFrames {
public:
    PlayedFrames() = default;
    PlayedFrames(const PlayedFrames&) = delete;
    PlayedFrames& operator=(const PlayedFrames&) = delete;
    virtual ~PlayedFrames() = default;

    /// The first included. A damaged frame ends the animation: then there are fewer than before.
    [[nodiscard]] virtual std::size_t frameCount() const = 0;
    /// The frame where it is in memory; else one without a picture.
    [[nodiscard]] virtual PBImage frame(std::size_t index) const = 0;
    /// This frame is about to be shown: those behind it are decoded, and those before it may go.
    virtual void willShow(std::size_t index) = 0;
    [[nodiscard]] virtual qsizetype byteCount() const = 0;
};

/// All frames of one file at one scale. Never changes once it was handed out, but for the frames
/// of an animation, which come as it plays. Shared: whoever paints it holds the pointer,
/// not copies of its pictures, so that the last owner hands these to the thread that frees them
/// (see PBLoadImageOperation).
class PBImages {
public:
    PBImages() = default;
    explicit PBImages(std::vector<PBImage> images, bool canAnimation = false)
        : _pbImages(std::move(images)), _canAnimation(canAnimation) {}
    /// An animation: the first frame, and those behind it as they are played.
    PBImages(PBImage first, std::shared_ptr<PlayedFrames> played)
        : _pbImages{std::move(first)}, _canAnimation(true), _played(std::move(played)) {}

    /// Two or more frames that tell their times.
    [[nodiscard]] bool canAnimation() const { return _canAnimation; }
    /// The componentwise maximum of all frames' sizes, 0 x 0 when empty.
    [[nodiscard]] QSize imageSize() const;
    /// Also those that are not in memory at the moment. Fewer than before once a frame turned out
    /// to be damaged.
    [[nodiscard]] std::size_t imageCount() const;
    /// Nothing at or past the end; without a picture while an animation waits for it.
    [[nodiscard]] PBImage pbImageAtIndex(std::size_t index) const;
    [[nodiscard]] QImage imageAtIndex(std::size_t index) const {
        return pbImageAtIndex(index).image();
    }
    [[nodiscard]] QImage firstImage() const { return imageAtIndex(0); }
    /// Seconds; 0 beyond the end, and for a frame that is not in memory.
    [[nodiscard]] double delayTimeAtIndex(std::size_t index) const {
        return pbImageAtIndex(index).delayTime();
    }

    /// A player that comes to a frame which is not ready keeps the former one and looks again soon.
    [[nodiscard]] bool isFrameReady(std::size_t index) const {
        return !pbImageAtIndex(index).image().isNull();
    }
    /// For players, before each frame that they show: keeps the frames behind it coming. Main
    /// thread.
    void willShowFrame(std::size_t index) const;

    /// Of all pictures in memory.
    [[nodiscard]] qsizetype byteCount() const;

private:
    std::vector<PBImage> _pbImages;
    bool _canAnimation = false;
    std::shared_ptr<PlayedFrames> _played;
};

/// What became of a load.
struct LoadedImages {
    enum class Kind {
        Nothing,    ///< cancelled
        NullMarker, ///< tried and failed: not to be asked for again while the file stays as it is
        NotNow,     ///< out of time, or its decoder was lost: the next visit tries again
        Images,
    };

    Kind kind = Kind::Nothing;
    std::shared_ptr<const PBImages> images; ///< for `Images` only

    [[nodiscard]] static LoadedImages nullMarker() { return {Kind::NullMarker, nullptr}; }
    [[nodiscard]] static LoadedImages notNow() { return {Kind::NotNow, nullptr}; }
    [[nodiscard]] static LoadedImages of(std::shared_ptr<const PBImages> images) {
        return {Kind::Images, std::move(images)};
    }
};
