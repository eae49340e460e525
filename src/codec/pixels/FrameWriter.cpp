#include "codec/pixels/FrameWriter.h"

#include "codec/pixels/Geometry.h"

#include <algorithm>

namespace codec {

namespace {

/// The gray that a decoder leaves where a damaged file gives nothing.
constexpr QRgb filler = 0xFF808080U;

bool isOpaque(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        QRgb all = 0xFF000000U;
        for (int x = 0; x < image.width(); ++x)
            all &= row[x];
        if (qAlpha(all) != 255) return false;
    }
    return true;
}

} // namespace

bool withinLimits(QSize size, const Limits& limits, std::uint64_t bytesPerPixel) {
    if (size.width() < 1 || size.height() < 1) return false;
    const auto pixels =
        static_cast<std::uint64_t>(size.width()) * static_cast<std::uint64_t>(size.height());
    return pixels <= limits.pixels &&
           (bytesPerPixel == 0 || pixels <= limits.bytes / bytesPerPixel);
}

FrameWriter::FrameWriter(
    const DecodeRequest& request, QSize full, QSize decoded, const PixelLayout& layout,
    const ColourDescription& colours)
    : _request(request), _decoded(decoded), _layout(layout) {
    const QSize wanted = reducedSize(full, request.maxSize).boundedTo(decoded);
    if (!withinLimits(full, request.limits) || !withinLimits(decoded, request.limits) ||
        !withinLimits(wanted, request.limits, sizeof(QRgb))) {
        return;
    }
    const auto format = layout.alpha == AlphaType::None ? QImage::Format_RGB32
                                                        : QImage::Format_ARGB32_Premultiplied;
    _image = request.allocate ? request.allocate(wanted, format) : QImage(wanted, format);
    if (_image.isNull()) return;
    _converter.emplace(layout, colours, request.targetProfile);
    if (wanted != decoded) {
        const int block = SampleReducer::chooseBlock(decoded, wanted, layout);
        if (block > 1) _reducer.emplace(decoded, layout.channels(), block);
        _scaler.emplace(_reducer ? _reducer->size() : decoded, _image);
    }
    const auto width = static_cast<std::size_t>(decoded.width());
    if (_scaler && !_converter->copiesRows()) _convertedRow.resize(width);
    if (_scaler || !_converter->copiesRows()) {
        _rowBuffer.resize(width * layout.bytesPerPixel() / 8 + 1);
    }
    placeRow();
}

void FrameWriter::placeRow() {
    if (!_rowBuffer.empty()) {
        _row = reinterpret_cast<std::uint8_t*>(_rowBuffer.data());
    } else {
        // Past the last row the decoder gets the last one again, and whatever it writes is lost.
        _row = _image.scanLine(std::min(_rowsDone, _decoded.height() - 1));
    }
}

void FrameWriter::rowDone() {
    if (_rowsDone >= _decoded.height()) return;
    if (_reducer) {
        const auto* samples = reinterpret_cast<const std::uint16_t*>(_row);
        if (_reducer->addRow(samples)) scaleRow(_reducer->row(), _reducer->size().width());
    } else if (_scaler) {
        scaleRow(_row, _decoded.width());
    } else if (!_rowBuffer.empty()) {
        _converter->convertRow(
            _row, reinterpret_cast<QRgb*>(_image.scanLine(_rowsDone)), _decoded.width());
    }
    ++_rowsDone;
    placeRow();
}

void FrameWriter::scaleRow(const void* row, int width) {
    const auto* pixels = static_cast<const QRgb*>(row);
    if (!_convertedRow.empty()) {
        _converter->convertRow(row, _convertedRow.data(), width);
        pixels = _convertedRow.data();
    }
    _scaler->addRow(pixels);
    ++_scaledRows;
}

void FrameWriter::fillMissingRows() {
    const QRgb missing = _layout.alpha == AlphaType::None ? filler : 0;
    if (_scaler) {
        const QSize size = _reducer ? _reducer->size() : _decoded;
        const std::vector<QRgb> row(static_cast<std::size_t>(size.width()), missing);
        for (; _scaledRows < size.height(); ++_scaledRows)
            _scaler->addRow(row.data());
    } else {
        for (int y = _rowsDone; y < _decoded.height(); ++y) {
            std::fill_n(reinterpret_cast<QRgb*>(_image.scanLine(y)), _decoded.width(), missing);
        }
    }
}

Frame FrameWriter::finish() {
    if (!isUsable() || _rowsDone == 0) return {};
    Frame frame;
    frame.isComplete = _rowsDone == _decoded.height();
    // The last blocks may be cut off.
    if (_reducer && _reducer->flush()) scaleRow(_reducer->row(), _reducer->size().width());
    if (!frame.isComplete) fillMissingRows();
    _converter->finish(_image);
    if (_layout.alpha != AlphaType::None && isOpaque(_image)) {
        _image.reinterpretAsFormat(QImage::Format_RGB32);
    }
    frame.image = std::move(_image);
    return frame;
}

} // namespace codec
