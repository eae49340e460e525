#pragma once

#include <QColor>
#include <QImage>

#include <algorithm>
#include <cmath>

namespace support {

/// A picture of one colour.
[[nodiscard]] inline QImage
filled(QSize size, const QColor& color = Qt::red, QImage::Format format = QImage::Format_RGB32) {
    QImage image(size, format);
    image.fill(color);
    return image;
}

/// A picture of whose pixels the function tells the colours.
[[nodiscard]] QImage
painted(QSize size, const auto& colorAt, QImage::Format format = QImage::Format_RGB32) {
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, colorAt(x, y));
    return image;
}

/// How far the colours of two pictures lie apart, of 255; all of it where their sizes differ.
struct Difference {
    double mean = 255;
    int most = 255;
};

[[nodiscard]] inline Difference differenceOf(const QImage& one, const QImage& other) {
    if (one.size() != other.size() || one.isNull()) return {};
    Difference difference{0, 0};
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            for (const int shift : {0, 8, 16}) {
                const int apart = std::abs(int(a >> shift & 255) - int(b >> shift & 255));
                difference.mean += apart;
                difference.most = std::max(difference.most, apart);
            }
        }
    }
    difference.mean /= 3.0 * one.width() * one.height();
    return difference;
}

} // namespace support
