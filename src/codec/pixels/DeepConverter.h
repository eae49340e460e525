#pragma once

#include "codec/pixels/Colour.h"

#include <QByteArray>

#include <cstdint>
#include <memory>

namespace codec {

/// Turns rows of one layout, of more than 8 bits a sample, into 16-bit samples of red, green, blue
/// and premultiplied alpha in the picture's own colour space, where that is one of red, green and
/// blue; else, and for pictures brighter than white, in sRGB. Not shared between threads.
class DeepConverter {
public:
    DeepConverter(const PixelLayout& layout, const ColourDescription& colours);
    ~DeepConverter();
    DeepConverter(DeepConverter&&) noexcept;
    DeepConverter& operator=(DeepConverter&&) noexcept;

    /// ICC profile of what comes out; empty for sRGB.
    [[nodiscard]] const QByteArray& profile() const;
    /// Four samples a pixel; `destination` must not overlap the source.
    void convertRow(const void* source, std::uint16_t* destination, int width);

private:
    struct Steps;
    std::unique_ptr<Steps> _steps;
};

} // namespace codec
