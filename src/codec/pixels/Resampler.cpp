#include "codec/pixels/Resampler.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

namespace codec {

namespace {

constexpr std::size_t channels = 4;

/// The four samples of a pixel at once: three times as quick as what the compiler makes of a loop.
using Pixel = float __attribute__((vector_size(channels * sizeof(float))));

Pixel pixelAt(const float* samples) {
    Pixel pixel;
    std::memcpy(&pixel, samples, sizeof(pixel));
    return pixel;
}

/// Two sums, since each addition has to wait for the one before.
Pixel weightedSum(std::span<const float> weights, const float* samples) {
    Pixel even{};
    Pixel odd{};
    std::size_t index = 0;
    for (; index + 1 < weights.size(); index += 2, samples += 2 * channels) {
        even += weights[index] * pixelAt(samples);
        odd += weights[index + 1] * pixelAt(samples + channels);
    }
    if (index < weights.size()) even += weights[index] * pixelAt(samples);
    return even + odd;
}

/// The pixels at one place of several rows, weighted, which stay in registers; and a half: what is
/// cut off of the sum is thereby rounded.
template <std::size_t pixels>
std::array<Pixel, pixels> sumOfRows(
    std::span<const float> weights, const std::vector<const float*>& rows, std::size_t place) {
    std::array<Pixel, pixels> sums;
    sums.fill(Pixel{0.5F, 0.5F, 0.5F, 0.5F});
    for (std::size_t row = 0; row < weights.size(); ++row)
        for (std::size_t pixel = 0; pixel < pixels; ++pixel)
            sums[pixel] += weights[row] * pixelAt(rows[row] + place + pixel * channels);
    return sums;
}

template <typename Sample, std::size_t pixels>
void store(const std::array<Pixel, pixels>& sums, Sample* target) {
    using Whole = std::int32_t __attribute__((vector_size(channels * sizeof(std::int32_t))));
    constexpr auto limit = static_cast<float>(std::numeric_limits<Sample>::max());
    constexpr Pixel least{};
    constexpr Pixel most{limit, limit, limit, limit};
    for (const Pixel& sum : sums) {
        const Pixel atLeast = sum > least ? sum : least;
        const auto whole = __builtin_convertvector(atLeast < most ? atLeast : most, Whole);
        for (std::size_t channel = 0; channel < channels; ++channel)
            *target++ = static_cast<Sample>(whole[channel]);
    }
}

AxisMap reduction(int source, int target) {
    const AxisMap::Place place{.factor = static_cast<double>(target) / source, .offset = 0};
    return {place, 0, target, source, AxisMap::modeFor(place.factor, source)};
}

} // namespace

template <typename Sample>
RowResampler<Sample>::RowResampler(AxisMap columns, AxisMap rows, bool hasAlpha)
    : _columns(std::move(columns)), _rows(std::move(rows)), _hasAlpha(hasAlpha),
      _width(static_cast<std::size_t>(_columns.count()) * channels),
      _keptRows(static_cast<std::size_t>(_rows.mostWeights()), -1),
      _kept(_keptRows.size() * _width),
      _source(static_cast<std::size_t>(_columns.endPixel() - _columns.firstPixel()) * channels) {
    _summed.reserve(_keptRows.size());
}

template <typename Sample>
float* RowResampler<Sample>::kept(int row) {
    return _kept.data() + static_cast<std::size_t>(row) % _keptRows.size() * _width;
}

template <typename Sample>
void RowResampler<Sample>::setRow(int row, const Sample* samples) {
    int& keptRow = _keptRows[static_cast<std::size_t>(row) % _keptRows.size()];
    if (keptRow == row) return;
    keptRow = row;
    const Sample* begin = samples + static_cast<std::size_t>(_columns.firstPixel()) * channels;
    for (std::size_t index = 0; index < _source.size(); ++index)
        _source[index] = static_cast<float>(begin[index]);
    float* target = kept(row);
    for (int x = 0; x < _columns.count(); ++x) {
        const AxisMap::Sum pixels = _columns.sum(x);
        const auto offset = static_cast<std::size_t>(pixels.first - _columns.firstPixel());
        const Pixel sum = weightedSum(pixels.weights, _source.data() + offset * channels);
        std::memcpy(target, &sum, sizeof(sum));
        target += channels;
    }
}

template <typename Sample>
void RowResampler<Sample>::makeRow(int index, Sample* target) {
    const AxisMap::Sum rows = _rows.sum(index);
    _summed.clear();
    for (std::size_t row = 0; row < rows.weights.size(); ++row)
        _summed.push_back(kept(rows.first + static_cast<int>(row)));
    constexpr std::size_t together = 4;
    std::size_t place = 0;
    for (; place + together * channels <= _width; place += together * channels)
        store(sumOfRows<together>(rows.weights, _summed, place), target + place);
    for (; place < _width; place += channels)
        store(sumOfRows<1>(rows.weights, _summed, place), target + place);
    if (!_hasAlpha) return;
    for (place = 0; place < _width; place += channels)
        for (std::size_t channel = 0; channel + 1 < channels; ++channel)
            target[place + channel] = std::min(target[place + channel], target[place + 3]);
}

template class RowResampler<std::uint8_t>;
template class RowResampler<std::uint16_t>;

template <typename Sample>
FilteredScaler<Sample>::FilteredScaler(QSize source, QImage& destination)
    : _resampler(
          reduction(source.width(), destination.width()),
          reduction(source.height(), destination.height()), destination.hasAlphaChannel()),
      _target(reinterpret_cast<Sample*>(destination.bits())),
      _targetStride(static_cast<std::size_t>(destination.bytesPerLine()) / sizeof(Sample)),
      _sourceHeight(source.height()) {}

template <typename Sample>
void FilteredScaler<Sample>::addRow(const void* row) {
    if (_row >= _sourceHeight) return;
    _resampler.setRow(_row++, static_cast<const Sample*>(row));
    const AxisMap& rows = _resampler.rows();
    while (_targetRow < rows.count()) {
        const AxisMap::Sum sum = rows.sum(_targetRow);
        if (sum.first + static_cast<int>(sum.weights.size()) > _row) return;
        const std::size_t offset = static_cast<std::size_t>(_targetRow) * _targetStride;
        _resampler.makeRow(_targetRow++, _target + offset);
    }
}

template class FilteredScaler<std::uint8_t>;
template class FilteredScaler<std::uint16_t>;

QImage resampled(
    const QImage& image, const AxisMap& columns, const AxisMap& rows,
    const std::function<bool()>& isStopped) {
    QImage made(columns.count(), rows.count(), image.format());
    if (made.isNull()) return {};
    RowResampler<std::uint8_t> resampler(columns, rows, image.hasAlphaChannel());
    for (int y = 0; y < rows.count(); ++y) {
        if (isStopped && isStopped()) return {};
        const AxisMap::Sum sum = rows.sum(y);
        const int end = sum.first + static_cast<int>(sum.weights.size());
        for (int row = sum.first; row < end; ++row)
            resampler.setRow(row, image.constScanLine(row));
        resampler.makeRow(y, made.scanLine(y));
    }
    return made;
}

} // namespace codec
