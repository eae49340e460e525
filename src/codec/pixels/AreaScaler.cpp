#include "codec/pixels/AreaScaler.h"

#include "codec/pixels/Rounding.h"

#include <algorithm>

namespace codec {

namespace {

/// Source columns count this much, so that the borders between result pixels fall between columns.
constexpr std::uint64_t columnWeight = 256;

} // namespace

template <typename Sample, typename Sum>
BasicAreaScaler<Sample, Sum>::BasicAreaScaler(QSize source, QImage& destination)
    : _sourceWidth(source.width()), _sourceHeight(source.height()),
      _target(reinterpret_cast<Sample*>(destination.bits())),
      _targetStride(static_cast<std::size_t>(destination.bytesPerLine()) / sizeof(Sample)),
      _targetWidth(destination.width()), _targetHeight(destination.height()),
      // A sum of 255 times the weight of all rows of one result row has to fit into 32 bits.
      _one(source.height() / destination.height() < 65000 ? 256 : 1),
      _sums(static_cast<std::size_t>(source.width()) * 4, 0) {}

template <typename Sample, typename Sum>
std::uint64_t BasicAreaScaler<Sample, Sum>::rowEdge(int index) const {
    return static_cast<std::uint64_t>(index) * _one * static_cast<std::uint64_t>(_sourceHeight) /
           static_cast<std::uint64_t>(_targetHeight);
}

template <typename Sample, typename Sum>
void BasicAreaScaler<Sample, Sum>::addRow(const void* row) {
    const auto* samples = static_cast<const Sample*>(row);
    std::uint64_t left = _one;
    while (left > 0 && _targetRow < _targetHeight) {
        const std::uint64_t edge = rowEdge(_targetRow + 1);
        const auto weight = static_cast<Sum>(std::min(left, edge - _position));
        Sum* sums = _sums.data();
        const std::size_t count = _sums.size();
        for (std::size_t index = 0; index < count; ++index)
            sums[index] += weight * samples[index];
        _position += weight;
        left -= weight;
        if (_position == edge) emitRow();
    }
}

template <typename Sample, typename Sum>
void BasicAreaScaler<Sample, Sum>::emitRow() {
    const std::uint64_t height = _position - _rowBegin;
    Sample* target = _target + static_cast<std::size_t>(_targetRow) * _targetStride;
    const auto sourceWidth = static_cast<std::uint64_t>(_sourceWidth);
    const auto targetWidth = static_cast<std::uint64_t>(_targetWidth);
    std::uint64_t begin = 0;
    for (std::uint64_t x = 0; x < targetWidth; ++x) {
        const std::uint64_t end = (x + 1) * columnWeight * sourceWidth / targetWidth;
        std::uint64_t channels[4] = {};
        for (std::uint64_t position = begin; position < end;) {
            const std::uint64_t column = position / columnWeight;
            const std::uint64_t weight = std::min(end, (column + 1) * columnWeight) - position;
            const Sum* sums = _sums.data() + column * 4;
            for (int channel = 0; channel < 4; ++channel)
                channels[channel] += weight * sums[channel];
            position += weight;
        }
        const double scale = 1.0 / (static_cast<double>(end - begin) * static_cast<double>(height));
        Sample* pixel = target + x * 4;
        for (int channel = 0; channel < 4; ++channel)
            pixel[channel] = rounded<Sample>(static_cast<double>(channels[channel]) * scale);
        begin = end;
    }
    std::ranges::fill(_sums, Sum{0});
    _rowBegin = _position;
    ++_targetRow;
}

template class BasicAreaScaler<std::uint8_t, std::uint32_t>;
template class BasicAreaScaler<std::uint16_t, std::uint64_t>;

} // namespace codec
