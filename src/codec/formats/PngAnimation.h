#pragma once

#include "codec/metadata/headers/Bytes.h"

#include <QRect>
#include <QSize>

#include <cstdint>
#include <vector>

namespace codec::formats {

/// The frames of a PNG file that plays, from chunks that the library passes over: see "Animation
/// information" in https://www.w3.org/TR/png-3. Looks into the file's bytes, which outlive it. A
/// value; any thread.
class PngAnimation {
public:
    enum class Disposal { Keep, Clear, Previous };
    struct Frame {
        QRect area;    ///< pixels; within the picture
        int delay = 0; ///< milliseconds
        Disposal disposal = Disposal::Keep;
        bool isBlended = false;  ///< drawn over what is there, else in place of it
        std::vector<Bytes> data; ///< its compressed pixels, in pieces; at least one
    };

    /// Without frames where the file does not play.
    explicit PngAnimation(Bytes file);

    [[nodiscard]] const std::vector<Frame>& frames() const { return _frames; }
    [[nodiscard]] QSize size() const { return _size; }
    /// The first frame is what readers of still pictures show.
    [[nodiscard]] bool beginsWithPicture() const { return _beginsWithPicture; }
    /// A PNG file of the frame alone, whose checksums are not filled in.
    [[nodiscard]] std::vector<std::uint8_t> file(const Frame& frame) const;

private:
    bool addControl(Bytes chunk);
    void endFrame();

    QSize _size{0, 0};
    Bytes _header;
    std::vector<Bytes> _shared; ///< palette, profile and the like, as chunks
    std::vector<Frame> _frames;
    Frame _open; ///< the one that is being read; without an area before the first
    bool _beginsWithPicture = false;
};

} // namespace codec::formats
