#pragma once

#include <QImage>

#include <algorithm>
#include <cmath>

/// Arithmetic on opaque 32-bit pixels, for RasterTransitions.
namespace RasterPixels {

/// Weights are 0 to 256.
[[nodiscard]] inline unsigned weightOf(float part) {
    const float rounded = std::clamp(part, 0.0F, 1.0F) * 256.0F + 0.5F;
    return static_cast<unsigned>(rounded);
}

/// The first alone at 0, the second at 256.
[[nodiscard]] inline QRgb mixed(QRgb first, QRgb second, unsigned weight) {
    const unsigned rest = 256 - weight;
    const unsigned redBlue =
        (((first & 0xff00ffU) * rest + (second & 0xff00ffU) * weight) >> 8) & 0xff00ffU;
    const unsigned green =
        (((first & 0xff00U) * rest + (second & 0xff00U) * weight) >> 8) & 0xff00U;
    return 0xff000000U | redBlue | green;
}

/// As dark as a shadow of that weight makes it.
[[nodiscard]] inline QRgb darkened(QRgb colour, unsigned shadow) {
    return mixed(colour, 0xff000000U, shadow);
}

/// With light of so much, 0 to 255 for each.
[[nodiscard]] inline QRgb lit(QRgb colour, int red, int green, int blue) {
    return qRgb(
        std::min(qRed(colour) + red, 255), std::min(qGreen(colour) + green, 255),
        std::min(qBlue(colour) + blue, 255));
}

/// Rows of an image that are read on several threads.
class Source {
public:
    explicit Source(const QImage& image)
        : _pixels(reinterpret_cast<const QRgb*>(image.constBits())),
          _stride(image.bytesPerLine() / qsizetype{sizeof(QRgb)}), _width(image.width()),
          _height(image.height()) {}

    [[nodiscard]] const QRgb* row(int y) const { return _pixels + y * _stride; }
    [[nodiscard]] int width() const { return _width; }
    [[nodiscard]] int height() const { return _height; }
    /// Between the four nearest pixels, whose centres lie on halves; the edge goes on outwards.
    [[nodiscard]] QRgb between(float x, float y) const {
        const float column = std::clamp(x - 0.5F, 0.0F, static_cast<float>(_width - 1));
        const float line = std::clamp(y - 0.5F, 0.0F, static_cast<float>(_height - 1));
        const int left = static_cast<int>(column);
        const int top = static_cast<int>(line);
        const int right = std::min(left + 1, _width - 1);
        const QRgb* upper = row(top);
        const QRgb* lower = row(std::min(top + 1, _height - 1));
        const auto across = static_cast<unsigned>((column - static_cast<float>(left)) * 256);
        const auto down = static_cast<unsigned>((line - static_cast<float>(top)) * 256);
        return mixed(
            mixed(upper[left], upper[right], across), mixed(lower[left], lower[right], across),
            down);
    }

private:
    const QRgb* _pixels;
    qsizetype _stride;
    int _width;
    int _height;
};

/// What the picture "restrictedshine" lays over a surface of that lean, each -1 to 1.
class Shine {
public:
    explicit Shine(const QImage& image) : _image(image) {}
    [[nodiscard]] QRgb over(QRgb colour, float leanRight, float leanDown) const {
        if (_image.width() == 0) return colour;
        const auto place = [this](float lean) {
            const float last = static_cast<float>(_image.width() - 1);
            const float rounded = std::clamp((lean + 1) / 2, 0.0F, 1.0F) * last + 0.5F;
            return static_cast<int>(rounded);
        };
        const QRgb light =
            _image.row(std::min(place(leanDown), _image.height() - 1))[place(leanRight)];
        return mixed(colour, light | 0xff000000U, static_cast<unsigned>(qAlpha(light)));
    }

private:
    Source _image;
};

} // namespace RasterPixels
