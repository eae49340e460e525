#include "codec/pixels/ReducedImage.h"

#include "codec/pixels/AreaScaler.h"
#include "codec/pixels/Resampler.h"

namespace codec {

std::unique_ptr<RowScaler> makeScaler(QSize source, QImage& destination, Reduction reduction) {
    const bool isDeep = destination.depth() == 64;
    if (reduction == Reduction::Filtered) {
        if (isDeep) return std::make_unique<FilteredScaler<std::uint16_t>>(source, destination);
        return std::make_unique<FilteredScaler<std::uint8_t>>(source, destination);
    }
    if (isDeep) return std::make_unique<DeepAreaScaler>(source, destination);
    if (source.height() <= 2 * destination.height() && source.width() <= 2 * destination.width())
        return std::make_unique<SlightAreaScaler>(source, destination);
    return std::make_unique<AreaScaler>(source, destination);
}

QImage reduceImage(const QImage& image, QSize size, Reduction reduction) {
    if (image.size() == size) return image;
    QImage reduced(size, image.format());
    if (reduced.isNull()) return {};
    const auto scaler = makeScaler(image.size(), reduced, reduction);
    for (int y = 0; y < image.height(); ++y)
        scaler->addRow(image.constScanLine(y));
    return reduced;
}

} // namespace codec
