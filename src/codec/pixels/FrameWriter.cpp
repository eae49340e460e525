#include "codec/pixels/FrameWriter.h"

#include "codec/pixels/Geometry.h"
#include "codec/pixels/Profiles.h"

#include <algorithm>
#include <system_error>

namespace codec {

namespace {

/// The gray that a decoder leaves where a damaged file gives nothing.
constexpr QRgb filler = 0xFF808080U;

/// The same with 16 bits a sample, in the order of memory.
constexpr std::uint64_t deepFiller = 0xFFFF808080808080U;

std::size_t bytesPerPixel(bool isDeep) {
    return isDeep ? sizeof(std::uint64_t) : sizeof(QRgb);
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
    : _request(request), _decoded(decoded), _layout(layout),
      _isDeep(request.depth == Depth::Source && layout.sample != SampleType::U8) {
    const QSize wanted = reducedSize(full, request.maxSize).boundedTo(decoded);
    if (!withinLimits(full, request.limits) || !withinLimits(decoded, request.limits) ||
        !withinLimits(wanted, request.limits, bytesPerPixel(_isDeep))) {
        return;
    }
    _image = makeImage(wanted);
    if (_image.isNull()) return;
    makeConverter(colours);
    const bool isScaled = wanted != decoded;
    if (isScaled) {
        const int block = SampleReducer::chooseBlock(decoded, wanted, layout, request.reduction);
        if (block > 1) _reducer.emplace(decoded, layout.channels(), block);
        const QSize rows = _reducer ? _reducer->size() : decoded;
        _scaler = makeScaler(rows, _image, request.reduction);
        scaleInBackground(rows);
    }
    const auto width = static_cast<std::size_t>(decoded.width());
    if (isScaled && !copiesRows()) _convertedRow.resize(width * bytesPerPixel(_isDeep) / 8 + 1);
    if (isScaled || !copiesRows()) _rowBuffer.resize(width * layout.bytesPerPixel() / 8 + 3);
    placeRow();
}

/// The filter of pictures that are looked at takes about as long as the decoding.
void FrameWriter::scaleInBackground(QSize rows) {
    constexpr int fewestPixels = 500'000;
    if (_request.threads < 2 || _request.reduction != Reduction::Filtered) return;
    if (static_cast<std::int64_t>(rows.width()) * rows.height() < fewestPixels) return;
    try {
        _background = std::make_unique<BackgroundScaler>(
            *_scaler, static_cast<std::size_t>(rows.width()) * bytesPerPixel(_isDeep));
    } catch (const std::system_error&) {
        return; // no thread is to be had: it is done between the rows
    }
}

QImage FrameWriter::makeImage(QSize size) const {
    const bool isOpaque = _layout.alpha == AlphaType::None;
    auto format = isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied;
    if (_isDeep) format = isOpaque ? QImage::Format_RGBX64 : QImage::Format_RGBA64_Premultiplied;
    return _request.allocate ? _request.allocate(size, format) : QImage(size, format);
}

void FrameWriter::makeConverter(const ColourDescription& colours) {
    if (_isDeep) {
        _deepConverter.emplace(_layout, colours);
    } else if (_request.depth == Depth::Source) {
        const bool isRgb = _layout.model == ColourModel::Rgb;
        if (isRgb) _ownProfile = profiles::ownProfile(colours, _layout.model);
        // What is not red, green and blue becomes sRGB.
        _converter.emplace(
            _layout, isRgb ? ColourDescription() : colours, QByteArray(), _request.threads);
    } else {
        _converter.emplace(_layout, colours, _request.targetProfile, _request.threads);
    }
}

void FrameWriter::placeRow() {
    if (!_rowBuffer.empty()) {
        // Into rows at multiples of 16 or 32 libjpeg-turbo writes past the caches, and reading them
        // again has to wait for the memory.
        const bool isEven = reinterpret_cast<std::uintptr_t>(_rowBuffer.data()) % 16 == 0;
        _row = reinterpret_cast<std::uint8_t*>(_rowBuffer.data() + (isEven ? 1 : 2));
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
        convertRow(_row, _image.scanLine(_rowsDone), _decoded.width());
    }
    ++_rowsDone;
    placeRow();
}

void FrameWriter::convertRow(const void* row, void* destination, int width) {
    if (_isDeep)
        _deepConverter->convertRow(row, static_cast<std::uint16_t*>(destination), width);
    else
        _converter->convertRow(row, static_cast<QRgb*>(destination), width);
}

void FrameWriter::scaleRow(const void* row, int width) {
    if (!_convertedRow.empty()) {
        convertRow(row, _convertedRow.data(), width);
        row = _convertedRow.data();
    }
    addScaled(row);
}

void FrameWriter::addScaled(const void* row) {
    if (_background)
        _background->addRow(row);
    else
        _scaler->addRow(row);
    ++_scaledRows;
}

void FrameWriter::fillMissingRows() {
    const bool isOpaque = _layout.alpha == AlphaType::None;
    // Of the one size or the other.
    const std::uint64_t deep = isOpaque ? deepFiller : 0;
    const QRgb shallow = isOpaque ? filler : 0;
    const auto fill = [&](void* row, int width) {
        if (_isDeep)
            std::fill_n(static_cast<std::uint64_t*>(row), width, deep);
        else
            std::fill_n(static_cast<QRgb*>(row), width, shallow);
    };
    if (_scaler) {
        const QSize size = _reducer ? _reducer->size() : _decoded;
        std::vector<std::uint64_t> row(static_cast<std::size_t>(size.width()));
        fill(row.data(), size.width());
        while (_scaledRows < size.height() && !isStopped())
            addScaled(row.data());
    } else {
        for (int y = _rowsDone; y < _decoded.height() && !isStopped(); ++y)
            fill(_image.scanLine(y), _decoded.width());
    }
}

bool FrameWriter::isOpaque() const {
    const int width = _image.width(); // a call that the loops over pixels would make for each
    for (int y = 0; y < _image.height() && !isStopped(); ++y) {
        if (_isDeep) {
            const auto* row = reinterpret_cast<const std::uint16_t*>(_image.constScanLine(y));
            std::uint16_t all = 0xFFFF;
            for (int x = 0; x < width; ++x)
                all &= row[x * 4 + 3];
            if (all != 0xFFFF) return false;
        } else {
            const auto* row = reinterpret_cast<const QRgb*>(_image.constScanLine(y));
            QRgb all = 0xFF000000U;
            for (int x = 0; x < width; ++x)
                all &= row[x];
            if (qAlpha(all) != 255) return false;
        }
    }
    return true;
}

Frame FrameWriter::finish() {
    // What is left to do takes long for a large picture, and nobody wants it any more.
    if (!isUsable() || _rowsDone == 0 || isStopped()) return {};
    Frame frame;
    frame.isComplete = _rowsDone == _decoded.height();
    // The last blocks may be cut off.
    if (_reducer && _reducer->flush()) scaleRow(_reducer->row(), _reducer->size().width());
    if (!frame.isComplete) fillMissingRows();
    if (_background) _background->finish();
    if (_converter) _converter->finish(_image, _request.stop);
    if (_layout.alpha != AlphaType::None && isOpaque())
        _image.reinterpretAsFormat(_isDeep ? QImage::Format_RGBX64 : QImage::Format_RGB32);
    if (isStopped()) return {};
    if (_isDeep)
        frame.profile = _deepConverter->profile();
    else if (_request.depth == Depth::Source)
        frame.profile = _ownProfile;
    else if (_converter->isInTarget())
        frame.profile = _request.targetProfile;
    frame.image = std::move(_image);
    return frame;
}

} // namespace codec
