#pragma once

#include <QImage>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

/// Which pixels of a picture make each of a row of device pixels, along one axis, and with what
/// weights. A value; any thread.
class AxisMap {
public:
    enum class Mode {
        Nearest, ///< the pixel under the middle
        Linear,  ///< between the two nearest
        Mean,    ///< all that the device pixel covers, by how much of each
    };
    /// What suits so many device pixels for each of `length` pixels: the mean where there are fewer
    /// of them, nearest where they are the same to within half a pixel over the whole length.
    [[nodiscard]] static Mode modeFor(double devicePixels, int length);

    /// A coordinate of the device is `factor` times one of the picture, plus `offset`.
    struct Place {
        double factor = 1; ///< not 0
        double offset = 0;
    };
    /// For `count` device pixels from `first`; the picture has `length` pixels, at least 1, and
    /// what lies beyond its ends is its last pixel.
    AxisMap(const Place& place, int first, int count, int length, Mode mode);

    /// The weights of one device pixel sum up to this.
    static constexpr std::uint32_t one = 1U << 14;
    struct Sum {
        int first = 0; ///< the first pixel
        std::span<const std::uint16_t> weights;
    };
    [[nodiscard]] int count() const { return static_cast<int>(_begins.size()); }
    [[nodiscard]] Sum sum(int index) const;
    /// The pixels that are needed at all, first and behind the last.
    [[nodiscard]] int firstPixel() const { return _firstPixel; }
    [[nodiscard]] int endPixel() const { return _endPixel; }

private:
    struct Begin {
        int pixel = 0;
        std::uint32_t weight = 0;
        std::uint32_t weightCount = 0;
    };
    void add(double from, double to, int length);

    std::vector<Begin> _begins;
    std::vector<std::uint16_t> _weights;
    int _firstPixel = 0;
    int _endPixel = 0;
};

/// The picture (32 bits a pixel, premultiplied or opaque) through both maps, in its own format.
/// Null when memory is refused or it was stopped, which is asked for each row.
[[nodiscard]] QImage resampled(
    const QImage& image, const AxisMap& columns, const AxisMap& rows,
    const std::function<bool()>& isStopped);
