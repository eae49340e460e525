#include "codec/pixels/AreaScaler.h"

#include <algorithm>
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

std::vector<ColumnSpan> spansOf(std::int64_t source, std::int64_t destination) {
    std::vector<ColumnSpan> spans;
    spans.reserve(static_cast<std::size_t>(destination));
    std::int64_t begin = 0;
    for (std::int64_t x = 0; x < destination; ++x) {
        const std::int64_t end = (x + 1) * columnWeight * source / destination;
        const std::int64_t first = begin / columnWeight;
        const std::int64_t last = (end - 1) / columnWeight;
        const float share = 1.0F / static_cast<float>(end - begin);
        const std::int64_t ofFirst = std::min(end, (first + 1) * columnWeight) - begin;
        const std::int64_t ofLast = last > first ? end - last * columnWeight : 0;
        spans.push_back(
            {.first = static_cast<std::size_t>(first),
             .last = static_cast<std::size_t>(last),
             .ofFirst = static_cast<float>(ofFirst) * share,
             .ofInner = static_cast<float>(columnWeight) * share,
             .ofLast = static_cast<float>(ofLast) * share});
        begin = end;
    }
    return spans;
}

} // namespace

template <typename Sample, typename Sum>
BasicAreaScaler<Sample, Sum>::BasicAreaScaler(QSize source, QImage& destination)
    : _sourceHeight(source.height()), _target(reinterpret_cast<Sample*>(destination.bits())),
      _targetStride(static_cast<std::size_t>(destination.bytesPerLine()) / sizeof(Sample)),
      _targetHeight(destination.height()),
      _one(weightOfRow<Sum>(source.height(), destination.height())),
      _sums(static_cast<std::size_t>(source.width()) * 4, 0),
      _means(spansOf(source.width(), destination.width())) {}

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
    Sample* const target = _target + static_cast<std::size_t>(_targetRow) * _targetStride;
    _means.make(_sums.data(), _position - _rowBegin, target);
    std::ranges::fill(_sums, Sum{0});
    _rowBegin = _position;
    ++_targetRow;
}

template class BasicAreaScaler<std::uint8_t, std::uint16_t>;
template class BasicAreaScaler<std::uint8_t, std::int32_t>;
template class BasicAreaScaler<std::uint16_t, double>;

} // namespace codec
