#include "codec/pixels/ReducedImage.h"
#include "support/Images.h"
#include "support/Support.h"

namespace {

/// Of the samples of one that is reduced, each held against the mean of what it covers: of the
/// source with every pixel split into as many columns and rows as the result has.
double largestError(const QImage& image, QSize size) {
    const QImage reduced = codec::reduceImage(image, size, codec::Reduction::Mean);
    double largest = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width() * 4; ++x) {
            double sum = 0;
            for (int row = 0; row < image.height(); ++row) {
                const uchar* line = image.constScanLine((y * image.height() + row) / size.height());
                for (int part = 0; part < image.width(); ++part) {
                    const int column = (x / 4 * image.width() + part) / size.width();
                    sum += line[column * 4 + x % 4];
                }
            }
            const double mean = sum / (image.width() * image.height());
            largest = std::max(largest, std::abs(reduced.constScanLine(y)[x] - mean));
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
        std::generate_n(image.bits(), image.sizeInBytes(), std::ref(random));
        // Rounded, and the borders between rows and columns are 256ths of them.
        EXPECT_LT(largestError(image, size), 1.5)
            << source.width() << "x" << source.height() << " to " << size.width();
        for (const QRgb one : {0x00000000U, 0xff010203U, 0xfffefdfcU, 0xffffffffU}) {
            image.fill(one);
            const QImage same = support::filled(size, QColor::fromRgba(one), image.format());
            EXPECT_EQ(codec::reduceImage(image, size, codec::Reduction::Mean), same)
                << size.width();
        }
    }
}
