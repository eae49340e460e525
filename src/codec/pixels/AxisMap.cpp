#include "codec/pixels/AxisMap.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace codec {

namespace {

/// A sinc of three lobes in the window of its main lobe, a fifth wider than what would just keep
/// the finest detail: by how much was chosen by stripes of 1 to 6 pixels, reduced once or twice,
/// whose unevenness it takes from 78 % of their contrast with a mean to 15 % (33 % with a tenth).
/// Of stripes that are too fine by a ninth 5 % are left, and of those half as fine as the finest 99
/// %.
constexpr double widening = 1.2;
constexpr double lobes = 3; // as `filterAt` has it
/// Device pixels to either side.
constexpr double reach = lobes * widening;

/// At a distance in device pixels.
double filterAt(double distance) {
    const double x = distance / widening;
    if (std::abs(x) >= lobes) return 0;
    const double angle = std::numbers::pi * x / lobes;
    if (std::abs(angle) < 1e-9) return 1;
    // Of three times the angle: 3 sin - 4 sin^3.
    const double sine = std::sin(angle);
    return sine * sine * (3 - 4 * sine * sine) / (lobes * angle * angle);
}

int pixelOf(double place, int length) {
    return static_cast<int>(std::clamp(std::floor(place), 0.0, length - 1.0));
}

} // namespace

AxisMap::Mode AxisMap::modeFor(double devicePixels, int length) {
    if (std::abs(devicePixels - 1) * length < 0.5) return Mode::Nearest;
    return devicePixels < 1 ? Mode::Filtered : Mode::Linear;
}

AxisMap::AxisMap(const Place& place, int first, int count, int length, Mode mode) {
    _begins.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int device = first; device < first + count; ++device) {
        const double middle = (device + 0.5 - place.offset) / place.factor;
        if (mode == Mode::Nearest)
            addCovered(std::floor(middle), std::floor(middle) + 1, length);
        else if (mode == Mode::Linear)
            // As wide as a pixel: covers the two nearest by how near they are.
            addCovered(middle - 0.5, middle + 0.5, length);
        else
            addFiltered(middle, std::abs(place.factor), length);
    }
}

void AxisMap::begin(int first, int last) {
    const auto count = static_cast<std::uint32_t>(last - first + 1);
    _begins.push_back({first, static_cast<std::uint32_t>(_weights.size()), count});
    _firstPixel = _begins.size() == 1 ? first : std::min(_firstPixel, first);
    _endPixel = std::max(_endPixel, last + 1);
    _mostWeights = std::max(_mostWeights, last - first + 1);
}

void AxisMap::addCovered(double from, double to, int length) {
    const int first = pixelOf(from, length);
    const int last = std::max(first, pixelOf(std::nextafter(to, from), length));
    begin(first, last);
    // What lies beyond the ends counts for the pixels there.
    double before = 0;
    for (int pixel = first; pixel <= last; ++pixel) {
        const double upTo =
            pixel == last ? 1.0 : std::clamp((pixel + 1 - from) / (to - from), 0.0, 1.0);
        _weights.push_back(static_cast<float>(upTo - before));
        before = upTo;
    }
}

void AxisMap::addFiltered(double middle, double devicePixels, int length) {
    const double wide = reach / devicePixels;
    const int first = pixelOf(middle - wide, length);
    const int last = pixelOf(middle + wide, length);
    const std::size_t place = _weights.size();
    begin(first, last);
    _weights.resize(place + static_cast<std::size_t>(last - first + 1), 0.0F);
    std::vector<double> weights(static_cast<std::size_t>(last - first + 1), 0.0);
    double all = 0;
    const auto end = static_cast<std::int64_t>(std::ceil(middle + wide));
    for (auto pixel = static_cast<std::int64_t>(std::floor(middle - wide)); pixel < end; ++pixel) {
        const double weight = filterAt((static_cast<double>(pixel) + 0.5 - middle) * devicePixels);
        const auto inside = std::clamp<std::int64_t>(pixel, first, last);
        weights[static_cast<std::size_t>(inside - first)] += weight;
        all += weight;
    }
    for (std::size_t index = 0; index < weights.size(); ++index)
        _weights[place + index] = static_cast<float>(weights[index] / all);
}

} // namespace codec
