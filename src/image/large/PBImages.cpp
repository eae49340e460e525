#include "image/large/PBImages.h"

#include <algorithm>

QSize PBImages::imageSize() const {
    QSize size(0, 0);
    for (const PBImage& image : _pbImages)
        size = size.expandedTo(image.imageSize());
    return size;
}

std::size_t PBImages::imageCount() const {
    return std::max(_pbImages.size(), _played ? _played->frameCount() : 0);
}

PBImage PBImages::pbImageAtIndex(std::size_t index) const {
    if (index < _pbImages.size()) return _pbImages[index];
    return _played ? _played->frame(index) : PBImage();
}

void PBImages::willShowFrame(std::size_t index) const {
    if (_played) _played->willShow(index);
}

qsizetype PBImages::byteCount() const {
    qsizetype bytes = _played ? _played->byteCount() : 0;
    for (const PBImage& image : _pbImages)
        bytes += image.image().sizeInBytes();
    return bytes;
}
