#include "codec/pixels/ColumnMeans.h"

#include "codec/pixels/PixelPair.h"
#include "codec/pixels/Rounding.h"

#include <algorithm>
#include <cstring>

namespace codec {

namespace {

/// The four samples of a pixel, computed side by side.
template <typename Number>
struct Four;
template <>
struct Four<std::int32_t> {
    using Type [[gnu::vector_size(16)]] = std::int32_t;
};
template <>
struct Four<float> {
    using Type [[gnu::vector_size(16)]] = float;
};
template <>
struct Four<double> {
    using Type [[gnu::vector_size(32)]] = double;
};

template <typename Sum>
Four<float>::Type fourOf(const Sum* sums) {
    typename Four<Sum>::Type four;
    std::memcpy(&four, sums, sizeof four);
    return __builtin_convertvector(four, Four<float>::Type);
}

} // namespace

template <typename Sample, typename Sum>
void ColumnMeans<Sample, Sum>::make(const Sum* sums, std::int64_t weight, Sample* target) {
    const float share = 1.0F / static_cast<float>(weight);
    float* mean = _means.data();
    for (const ColumnSpan& span : _spans) {
        const Sum* some = sums + span.first * 4;
        const Sum* last = sums + span.last * 4;
        auto four = fourOf(some) * span.ofFirst + fourOf(last) * span.ofLast;
        for (some += 4; some < last; some += 4)
            four += fourOf(some) * span.ofInner;
        four *= share;
        std::memcpy(mean, &four, sizeof four);
        mean += 4;
    }
    const float* means = _means.data();
    const std::size_t count = _means.size();
    for (std::size_t index = 0; index < count; ++index)
        target[index] = rounded<Sample>(means[index]);
}

template class ColumnMeans<std::uint8_t, std::int32_t>;
template class ColumnMeans<std::uint16_t, double>;

SlightColumnMeans::SlightColumnMeans(std::vector<ColumnSpan> spans) : _width(spans.size()) {
    if (spans.size() % 2 != 0) spans.push_back(spans.back());
    const auto hasInner = [](const ColumnSpan& span) { return span.last > span.first + 1; };
    const bool isAnyInner = std::ranges::any_of(spans, hasInner);
    for (const ColumnSpan& span : spans) {
        add(_columns[0], span.first, span.ofFirst);
        add(_columns[1], span.last, span.ofLast);
        if (isAnyInner)
            add(_columns[2], hasInner(span) ? span.first + 1 : 0,
                hasInner(span) ? span.ofInner : 0);
    }
}

void SlightColumnMeans::add(Columns& columns, std::size_t place, float share) {
    columns.places.push_back(place);
    // Down, so that no sum of them exceeds the whole.
    const long part = std::min(static_cast<long>(share * 65'536.0F), 65'535L);
    columns.shares.insert(columns.shares.end(), 4, static_cast<std::uint16_t>(part));
}

void SlightColumnMeans::make(
    const std::uint16_t* sums, std::int64_t weight, std::uint8_t* target) const {
    // Stores could change members as far as the compiler knows: it would load these each time.
    const auto ofColumns = [sums](const Columns& columns) {
        return [sums, places = columns.places.data(),
                shares = columns.shares.data()](std::size_t pixel) {
            PixelPair share;
            std::memcpy(&share, shares + pixel * 4, sizeof share);
            return upperHalves(
                pixelPair(sums + places[pixel] * 4, sums + places[pixel + 1] * 4), share);
        };
    };
    const auto ofFirst = ofColumns(_columns[0]);
    const auto ofLast = ofColumns(_columns[1]);
    const auto ofInner = ofColumns(_columns[2]);
    const bool isAnyInner = !_columns[2].places.empty();
    // To means times 128. What the lower halves had is up to three of these.
    const PixelPair share = allOf(static_cast<std::uint16_t>((std::int64_t{1} << 23U) / weight));
    const auto pair = [=](std::size_t pixel) {
        PixelPair means = ofFirst(pixel) + ofLast(pixel);
        if (isAnyInner) means += ofInner(pixel);
        return bytesOf((upperHalves(means, share) + 67) >> 7);
    };
    std::size_t pixel = 0;
    for (const std::size_t pairs = _width - _width % 2; pixel < pairs; pixel += 2) {
        const auto bytes = pair(pixel);
        std::memcpy(target + pixel * 4, bytes.data(), sizeof bytes);
    }
    if (pixel < _width) {
        const auto bytes = pair(pixel);
        std::memcpy(target + pixel * 4, bytes.data(), sizeof bytes / 2);
    }
}

} // namespace codec
