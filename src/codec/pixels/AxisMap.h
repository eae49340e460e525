#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace codec {

/// Which pixels of a picture make each of a row of device pixels, along one axis, and with what
/// weights. A value; any thread.
class AxisMap {
public:
    enum class Mode {
        Nearest, ///< the pixel under the middle
        Linear,  ///< between the two nearest
        /// For fewer device pixels than pixels: a windowed sinc that leaves next to nothing of what
        /// is too fine for them, where the mean of what each covers would let fine stripes beat
        /// with the device's pixels.
        Filtered,
    };
    /// What suits so many device pixels for each of `length` pixels: nearest where they are the
    /// same to within half a pixel over the whole length.
    [[nodiscard]] static Mode modeFor(double devicePixels, int length);

    /// A coordinate of the device is `factor` times one of the picture, plus `offset`.
    struct Place {
        double factor = 1; ///< not 0
        double offset = 0;
    };
    /// For `count` device pixels from `first`; the picture has `length` pixels, at least 1, and
    /// what lies beyond its ends is its last pixel.
    AxisMap(const Place& place, int first, int count, int length, Mode mode);

    /// What makes one device pixel; the weights sum up to 1, and some may be below 0.
    struct Sum {
        int first = 0; ///< the first pixel
        std::span<const float> weights;
    };
    [[nodiscard]] int count() const { return static_cast<int>(_begins.size()); }
    [[nodiscard]] Sum sum(int index) const {
        const Begin& begin = _begins[static_cast<std::size_t>(index)];
        return {begin.pixel, std::span(_weights).subspan(begin.weight, begin.weightCount)};
    }
    /// The pixels that are needed at all, first and behind the last.
    [[nodiscard]] int firstPixel() const { return _firstPixel; }
    [[nodiscard]] int endPixel() const { return _endPixel; }
    /// Of one device pixel.
    [[nodiscard]] int mostWeights() const { return _mostWeights; }

private:
    struct Begin {
        int pixel = 0;
        std::uint32_t weight = 0;
        std::uint32_t weightCount = 0;
    };
    void addCovered(double from, double to, int length);
    void addFiltered(double middle, double devicePixels, int length);
    void begin(int first, int last);

    std::vector<Begin> _begins;
    std::vector<float> _weights;
    int _firstPixel = 0;
    int _endPixel = 0;
    int _mostWeights = 0;
};

} // namespace codec
