#include "codec/pixels/AreaScaler.h"

#include "codec/pixels/Rounding.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace codec {

namespace {

/// Source columns count this much, so that the borders between result pixels fall between columns.
constexpr std::int64_t columnWeight = 256;
/// Of rows: as much, where the sums have room for it.
constexpr int rowWeight = 256;
constexpr int mostWeightedRows = 32'000;

/// What a whole source row counts, so that a sum of 255 times the weight of all rows of one result
/// row, and one more for its edges, fits into 16 bits, or into 32 with a sign.
template <typename Sum>
std::uint16_t weightOfRow(int source, int destination) {
    if constexpr (std::is_same_v<Sum, std::uint16_t>)
        return static_cast<std::uint16_t>(rowWeight * destination / source);
    return source / destination < mostWeightedRows ? rowWeight : 1;
}

/// The four samples of a pixel, computed side by side.
template <typename Number>
struct Four;
template <>
struct Four<std::uint16_t> {
    using Type [[gnu::vector_size(8)]] = std::uint16_t;
};
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
    if constexpr (std::is_same_v<Sum, std::uint16_t>) {
        const auto wide = __builtin_convertvector(four, Four<std::int32_t>::Type);
        return __builtin_convertvector(wide, Four<float>::Type);
    } else {
        return __builtin_convertvector(four, Four<float>::Type);
    }
}

} // namespace

template <typename Sample, typename Sum>
BasicAreaScaler<Sample, Sum>::BasicAreaScaler(QSize source, QImage& destination)
    : _sourceHeight(source.height()), _target(reinterpret_cast<Sample*>(destination.bits())),
      _targetStride(static_cast<std::size_t>(destination.bytesPerLine()) / sizeof(Sample)),
      _targetHeight(destination.height()),
      _one(weightOfRow<Sum>(source.height(), destination.height())),
      _sums(static_cast<std::size_t>(source.width()) * 4, 0),
      _means(static_cast<std::size_t>(destination.width()) * 4, 0) {
    const std::int64_t targetWidth = destination.width();
    _spans.reserve(static_cast<std::size_t>(targetWidth));
    std::int64_t begin = 0;
    for (std::int64_t x = 0; x < targetWidth; ++x) {
        const std::int64_t end = (x + 1) * columnWeight * source.width() / targetWidth;
        const std::int64_t first = begin / columnWeight;
        const std::int64_t last = (end - 1) / columnWeight;
        const float share = 1.0F / static_cast<float>(end - begin);
        const std::int64_t ofFirst = std::min(end, (first + 1) * columnWeight) - begin;
        const std::int64_t ofLast = last > first ? end - last * columnWeight : 0;
        _spans.push_back(
            {.first = static_cast<std::size_t>(first),
             .last = static_cast<std::size_t>(last),
             .ofFirst = static_cast<float>(ofFirst) * share,
             .ofInner = static_cast<float>(columnWeight) * share,
             .ofLast = static_cast<float>(ofLast) * share});
        begin = end;
    }
}

template <typename Sample, typename Sum>
std::int64_t BasicAreaScaler<Sample, Sum>::rowEdge(int index) const {
    return static_cast<std::int64_t>(index) * _one * _sourceHeight / _targetHeight;
}

template <typename Sample, typename Sum>
void BasicAreaScaler<Sample, Sum>::addRow(const void* row) {
    const auto* samples = static_cast<const Sample*>(row);
    std::int64_t left = _one;
    while (left > 0 && _targetRow < _targetHeight) {
        const std::int64_t edge = rowEdge(_targetRow + 1);
        const auto weight = static_cast<std::uint16_t>(std::min(left, edge - _position));
        addWeighted(samples, weight);
        _position += weight;
        left -= weight;
        if (_position == edge) emitRow();
    }
}

template <typename Sample, typename Sum>
void BasicAreaScaler<Sample, Sum>::addWeighted(const Sample* samples, std::uint16_t weight) {
    /// Wide enough for a weighted sample, and no wider.
    using Product = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, std::uint32_t>;
    Sum* sums = _sums.data();
    const std::size_t count = _sums.size();
    for (std::size_t index = 0; index < count; ++index)
        sums[index] += static_cast<Product>(static_cast<Product>(weight) * samples[index]);
}

template <typename Sample, typename Sum>
void BasicAreaScaler<Sample, Sum>::emitRow() {
    const float share = 1.0F / static_cast<float>(_position - _rowBegin);
    float* mean = _means.data();
    for (const Span& span : _spans) {
        const Sum* sums = _sums.data() + span.first * 4;
        const Sum* lastSums = _sums.data() + span.last * 4;
        auto four = fourOf(sums) * span.ofFirst + fourOf(lastSums) * span.ofLast;
        for (sums += 4; sums < lastSums; sums += 4)
            four += fourOf(sums) * span.ofInner;
        four *= share;
        std::memcpy(mean, &four, sizeof four);
        mean += 4;
    }
    Sample* target = _target + static_cast<std::size_t>(_targetRow) * _targetStride;
    const float* means = _means.data();
    const std::size_t count = _means.size();
    for (std::size_t index = 0; index < count; ++index)
        target[index] = rounded<Sample>(means[index]);
    std::ranges::fill(_sums, Sum{0});
    _rowBegin = _position;
    ++_targetRow;
}

template class BasicAreaScaler<std::uint8_t, std::uint16_t>;
template class BasicAreaScaler<std::uint8_t, std::int32_t>;
template class BasicAreaScaler<std::uint16_t, double>;

} // namespace codec
