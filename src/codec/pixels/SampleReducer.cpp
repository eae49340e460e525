#include "codec/pixels/SampleReducer.h"

#include <algorithm>

namespace codec {

namespace {

/// 256 x 256 samples of 16 bits just fit into a sum of 32 bits.
constexpr int largestBlock = 256;

} // namespace

int SampleReducer::chooseBlock(
    QSize decoded, QSize wanted, const PixelLayout& layout, Reduction reduction) {
    if (layout.sample != SampleType::U16 || layout.isQRgb || layout.alpha == AlphaType::Straight ||
        wanted.isEmpty()) {
        return 1;
    }
    const int ratio =
        std::min(decoded.width() / wanted.width(), decoded.height() / wanted.height());
    return std::clamp(ratio / (reduction == Reduction::Filtered ? 4 : 2), 1, largestBlock);
}

SampleReducer::SampleReducer(QSize decoded, int channels, int block)
    : _sourceWidth(decoded.width()), _channels(channels), _block(block),
      _size((decoded.width() + block - 1) / block, (decoded.height() + block - 1) / block),
      _sums(static_cast<std::size_t>(_size.width()) * static_cast<std::size_t>(channels), 0),
      _row(_sums.size(), 0) {}

bool SampleReducer::addRow(const std::uint16_t* row) {
    std::uint32_t* sums = _sums.data();
    for (int left = 0; left < _sourceWidth; left += _block, sums += _channels) {
        const int end = std::min(left + _block, _sourceWidth);
        for (int x = left; x < end; ++x) {
            for (int channel = 0; channel < _channels; ++channel)
                sums[channel] += *row++;
        }
    }
    ++_rows;
    return _rows == _block && flush();
}

bool SampleReducer::flush() {
    if (_rows == 0) return false;
    const int channels = _channels;
    for (int column = 0; column < _size.width(); ++column) {
        const int width = std::min(_block, _sourceWidth - column * _block);
        const auto count = static_cast<std::uint32_t>(width * _rows);
        for (int channel = 0; channel < channels; ++channel) {
            const auto index = static_cast<std::size_t>(column * channels + channel);
            _row[index] = static_cast<std::uint16_t>(_sums[index] / count);
        }
    }
    std::ranges::fill(_sums, 0U);
    _rows = 0;
    return true;
}

} // namespace codec
