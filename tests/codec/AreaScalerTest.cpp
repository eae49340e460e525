#include "codec/pixels/ReducedImage.h"
#include "support/Support.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace {

/// How much of the source's columns or rows one of the result covers.
double overlap(int source, int result, int sourceSize, int resultSize) {
    const double scale = static_cast<double>(sourceSize) / resultSize;
    return std::max(
               0.0, std::min(source + 1.0, (result + 1) * scale) -
                        std::max<double>(source, result * scale)) /
           scale;
}

std::array<double, 4> meanOf(const QImage& image, int x, int y, QSize size) {
    std::array<double, 4> mean{};
    for (int row = 0; row < image.height(); ++row) {
        const double ofRow = overlap(row, y, image.height(), size.height());
        if (ofRow == 0) continue;
        for (int column = 0; column < image.width(); ++column) {
            const double share = ofRow * overlap(column, x, image.width(), size.width());
            const uchar* samples = image.constScanLine(row) + column * 4;
            for (std::size_t sample = 0; sample < 4; ++sample)
                mean.at(sample) += share * samples[sample];
        }
    }
    return mean;
}

/// Of the samples of one that is reduced.
double largestError(const QImage& image, QSize size) {
    const QImage reduced = codec::reduceImage(image, size, codec::Reduction::Mean);
    double largest = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const auto mean = meanOf(image, x, y, size);
            for (std::size_t sample = 0; sample < 4; ++sample) {
                const int made = reduced.constScanLine(y)[static_cast<std::size_t>(x) * 4 + sample];
                largest = std::max(largest, std::abs(made - mean.at(sample)));
            }
        }
    }
    return largest;
}

} // namespace

/// In their corners, too, and where the number of columns is odd.
TEST(AreaScaler, PixelsAreTheMeansOfWhatTheyCover) {
    std::mt19937 random(7);
    const std::pair<QSize, QSize> cases[] = {
        {{40, 30}, {32, 24}}, {{40, 30}, {21, 16}}, {{41, 31}, {40, 30}}, {{39, 20}, {20, 10}},
        {{40, 30}, {1, 30}},  {{40, 30}, {39, 15}}, {{40, 30}, {13, 30}}, {{40, 31}, {7, 3}},
        {{2, 2}, {1, 1}},     {{3, 300}, {3, 150}}};
    for (const auto& [source, size] : cases) {
        QImage image(source, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width() * 4; ++x)
                image.scanLine(y)[x] = static_cast<uchar>(random());
        // Rounded, and the borders between rows and columns are 256ths of them.
        EXPECT_LT(largestError(image, size), 1.5)
            << source.width() << "x" << source.height() << " to " << size.width();
        for (const QRgb one : {0x00000000U, 0xff010203U, 0xfffefdfcU, 0xffffffffU}) {
            image.fill(one);
            const QImage reduced = codec::reduceImage(image, size, codec::Reduction::Mean);
            QImage same(size, image.format());
            same.fill(one);
            EXPECT_EQ(reduced, same) << size.width();
        }
    }
}
