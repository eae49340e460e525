#include "formatpictures/Samples.h"

#include "codec/pixels/Rounding.h"

#include <span>

#include <lcms2.h>

namespace formatpictures {

namespace {

struct LabTransform {
    cmsHPROFILE from = cmsCreate_sRGBProfile();
    cmsHPROFILE to = cmsCreateLab2Profile(nullptr);
    cmsHTRANSFORM handle = cmsCreateTransform(
        from, TYPE_BGRA_8, to, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);

    LabTransform() = default;
    LabTransform(const LabTransform&) = delete;
    LabTransform& operator=(const LabTransform&) = delete;
    ~LabTransform() {
        cmsDeleteTransform(handle);
        cmsCloseProfile(to);
        cmsCloseProfile(from);
    }
};

} // namespace

void put(ByteWriter& writer, unsigned sample, int bits) {
    bits == 8 ? writer.u8(sample) : writer.u16(sample);
}

QByteArray rowOf(const QImage& image, int y, int bits, bool isLittleEndian) {
    ByteWriter row(isLittleEndian);
    for (int x = 0; x < image.width(); ++x) {
        const QRgb pixel = image.pixel(x, y);
        const std::array samples{qRed(pixel), qGreen(pixel), qBlue(pixel), qAlpha(pixel)};
        for (const int value : std::span(samples).first(image.hasAlphaChannel() ? 4 : 3))
            put(row, static_cast<unsigned>(value * ((1 << bits) - 1) / 255), bits);
    }
    return row.bytes();
}

std::array<unsigned, 4> modeSamples(QRgb pixel, PsdMode mode, int depth) {
    const unsigned scale = depth == 8 ? 1 : 257;
    const unsigned red = static_cast<unsigned>(qRed(pixel)) * scale;
    const unsigned green = static_cast<unsigned>(qGreen(pixel)) * scale;
    const unsigned blue = static_cast<unsigned>(qBlue(pixel)) * scale;
    if (mode == PsdMode::Cmyk) return {red, green, blue, 255 * scale}; // the most: no ink
    if (mode != PsdMode::Lab)
        return {red, green, blue, static_cast<unsigned>(qAlpha(pixel)) * scale};
    static const LabTransform transform;
    cmsCIELab lab;
    cmsDoTransform(transform.handle, &pixel, &lab, 1);
    const double unit = depth == 8 ? 1 : 256;
    return {
        codec::rounded<unsigned>(lab.L / 100 * 255 * scale),
        codec::rounded<unsigned>((lab.a + 128) * unit),
        codec::rounded<unsigned>((lab.b + 128) * unit), 0};
}

} // namespace formatpictures
