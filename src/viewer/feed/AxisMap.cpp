#include "viewer/feed/AxisMap.h"

#include <algorithm>
#include <cmath>

AxisMap::Mode AxisMap::modeFor(double devicePixels, int length) {
    if (std::abs(devicePixels - 1) * length < 0.5) return Mode::Nearest;
    return devicePixels < 1 ? Mode::Mean : Mode::Linear;
}

AxisMap::AxisMap(const Place& place, int first, int count, int length, Mode mode) {
    _begins.reserve(static_cast<std::size_t>(std::max(count, 0)));
    const auto pixelAt = [&](double device) { return (device - place.offset) / place.factor; };
    for (int device = first; device < first + count; ++device) {
        const double middle = pixelAt(device + 0.5);
        if (mode == Mode::Nearest) {
            const double pixel = std::floor(middle);
            add(pixel, pixel + 1, length);
        } else if (mode == Mode::Linear) {
            // As wide as a pixel: covers the two nearest by how near they are.
            add(middle - 0.5, middle + 0.5, length);
        } else {
            const auto [from, to] = std::minmax({pixelAt(device), pixelAt(device + 1.0)});
            add(from, to, length);
        }
    }
}

void AxisMap::add(double from, double to, int length) {
    const auto pixelOf = [length](double place) {
        return static_cast<int>(std::clamp(std::floor(place), 0.0, length - 1.0));
    };
    const int begin = pixelOf(from);
    const int last = std::max(begin, pixelOf(std::nextafter(to, from)));
    _begins.push_back(
        {begin, static_cast<std::uint32_t>(_weights.size()),
         static_cast<std::uint32_t>(last - begin + 1)});
    // Rounded at the borders between pixels, so that the sum is exact. What lies beyond the ends
    // counts for the pixels there.
    std::uint32_t before = 0;
    for (int pixel = begin; pixel <= last; ++pixel) {
        const double share = pixel == last ? 1.0 : (pixel + 1 - from) / (to - from);
        const auto upTo =
            static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * one));
        _weights.push_back(static_cast<std::uint16_t>(upTo - std::min(before, upTo)));
        before = std::max(before, upTo);
    }
    _firstPixel = _begins.size() == 1 ? begin : std::min(_firstPixel, begin);
    _endPixel = std::max(_endPixel, last + 1);
}

AxisMap::Sum AxisMap::sum(int index) const {
    const Begin& begin = _begins[static_cast<std::size_t>(index)];
    return {begin.pixel, std::span(_weights).subspan(begin.weight, begin.weightCount)};
}

namespace {

constexpr int channels = 4;
/// Sums of a row are kept with 16 bits a channel.
constexpr int keptShift = 6;
constexpr int lastShift = 22;
static_assert((AxisMap::one >> keptShift) * std::uint64_t{AxisMap::one} == 1ULL << lastShift);

/// The mean of rows, for the columns from `first`.
void addRows(
    const QImage& image, const AxisMap::Sum& rows, int first, std::span<std::uint32_t> sums) {
    std::ranges::fill(sums, 0U);
    for (std::size_t row = 0; row < rows.weights.size(); ++row) {
        const std::uint32_t weight = rows.weights[row];
        const std::uint8_t* bytes = image.constScanLine(rows.first + static_cast<int>(row)) +
                                    std::ptrdiff_t{first} * channels;
        for (std::size_t index = 0; index < sums.size(); ++index)
            sums[index] += weight * bytes[index];
    }
}

void addColumns(std::span<const std::uint32_t> sums, const AxisMap& columns, std::uint8_t* target) {
    constexpr std::uint32_t half = 1U << (lastShift - 1);
    for (int x = 0; x < columns.count(); ++x) {
        const AxisMap::Sum pixels = columns.sum(x);
        const std::uint32_t* sum =
            sums.data() + std::ptrdiff_t{pixels.first - columns.firstPixel()} * channels;
        std::uint32_t all[channels] = {half, half, half, half};
        for (const std::uint32_t weight : pixels.weights) {
            for (int channel = 0; channel < channels; ++channel)
                all[channel] += weight * (sum[channel] >> keptShift);
            sum += channels;
        }
        for (int channel = 0; channel < channels; ++channel)
            target[channel] = static_cast<std::uint8_t>(all[channel] >> lastShift);
        target += channels;
    }
}

} // namespace

QImage resampled(
    const QImage& image, const AxisMap& columns, const AxisMap& rows,
    const std::function<bool()>& isStopped) {
    QImage made(columns.count(), rows.count(), image.format());
    if (made.isNull()) return {};
    const int first = columns.firstPixel();
    std::vector<std::uint32_t> sums(
        static_cast<std::size_t>(columns.endPixel() - first) * channels);
    for (int y = 0; y < rows.count(); ++y) {
        if (isStopped && isStopped()) return {};
        addRows(image, rows.sum(y), first, sums);
        addColumns(sums, columns, made.scanLine(y));
    }
    return made;
}
