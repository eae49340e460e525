#pragma once

#include "codec/pixels/BackgroundScaler.h"
#include "codec/pixels/Colour.h"
#include "codec/pixels/Decoder.h"
#include "codec/pixels/DeepConverter.h"
#include "codec/pixels/RowScaler.h"
#include "codec/pixels/SampleReducer.h"

#include <memory>
#include <optional>
#include <vector>

namespace codec {

/// Takes the rows of one frame from its decoder, from top to bottom, and makes the result of them:
/// converts, reduces and stores row by row, so that a thumbnail of a picture of any size needs one
/// row and the result.
class FrameWriter {
public:
    /// `decoded` is the size of the rows that will come; `full` that of the picture, from which the
    /// result's size follows. They differ where the format itself reduces.
    FrameWriter(
        const DecodeRequest& request, QSize full, QSize decoded, const PixelLayout& layout,
        const ColourDescription& colours);

    /// False when the picture is larger than the limits, or memory for it was refused.
    [[nodiscard]] bool isUsable() const { return !_image.isNull(); }
    /// Where the decoder puts the next row in its layout. Valid until `rowDone`.
    [[nodiscard]] std::uint8_t* row() { return _row; }
    void rowDone();
    [[nodiscard]] bool isStopped() const { return _request.stop.isSet(); }

    /// The result; null if not one row was written, or it was stopped. Missing rows are filled,
    /// gray where the picture has no alpha, and make it incomplete.
    [[nodiscard]] Frame finish();

private:
    void placeRow();
    [[nodiscard]] QImage makeImage(QSize size) const;
    void scaleInBackground(QSize rows);
    void makeConverter(const ColourDescription& colours);
    [[nodiscard]] bool copiesRows() const { return _converter && _converter->copiesRows(); }
    void convertRow(const void* row, void* destination, int width);
    /// Converts a row and hands it to the scaler.
    void scaleRow(const void* row, int width);
    void addScaled(const void* row);
    void fillMissingRows();
    [[nodiscard]] bool isOpaque() const;

    const DecodeRequest& _request;
    QSize _decoded;
    PixelLayout _layout;
    bool _isDeep;
    std::optional<ColourConverter> _converter;
    QByteArray _ownProfile;                      // of what the converter leaves as it is
    std::optional<DeepConverter> _deepConverter; // in its place for 16 bits
    QImage _image;
    std::optional<SampleReducer> _reducer; // before the scaler
    std::unique_ptr<RowScaler> _scaler;
    std::unique_ptr<BackgroundScaler> _background; // hands rows on to the scaler, if it is there
    int _scaledRows = 0;
    std::vector<std::uint64_t> _rowBuffer; // 64 bits wide for the sake of alignment
    std::vector<std::uint64_t> _convertedRow;
    std::uint8_t* _row = nullptr;
    int _rowsDone = 0;
};

/// Whether a frame of this size, and a decoder that needs so many bytes for each of its pixels
/// besides the result, stay within the limits.
[[nodiscard]] bool withinLimits(QSize size, const Limits& limits, std::uint64_t bytesPerPixel = 0);

} // namespace codec
