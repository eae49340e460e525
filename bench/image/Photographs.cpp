#include "image/Photographs.h"

#include "codec/metadata/ImageProperties.h"

#include <QImage>

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace bench {

namespace {

void writeMetadata(const QString& path) {
    codec::prepareImageProperties();
    const Exiv2::Image::AutoPtr file = Exiv2::ImageFactory::open(path.toStdString());
    file->readMetadata();
    Exiv2::ExifData& exif = file->exifData();
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.Model"] = "Canon EOS 40D";
    exif["Exif.Photo.DateTimeOriginal"] = "2010:07:01 12:00:00";
    exif["Exif.Photo.ExposureTime"] = "1/250";
    exif["Exif.Photo.FNumber"] = "28/10";
    exif["Exif.Photo.ISOSpeedRatings"] = std::uint16_t(100);
    exif["Exif.CanonCs.LensType"] = std::uint16_t(2);
    exif["Exif.GPSInfo.GPSLatitude"] = "52/1 30/1 36/1";
    file->iptcData()["Iptc.Application2.City"] = "Berlin";
    file->xmpData()["Xmp.dc.description"] = "lang=x-default A street";
    file->xmpData()["Xmp.xmp.Rating"] = "4";
    file->writeMetadata();
}

} // namespace

QString writePhotograph(const QTemporaryDir& folder, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    std::uint32_t random = 1;
    for (int y = 0; y < size.height(); ++y) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
        const double wave = 40 * std::sin(y / 190.0);
        for (int x = 0; x < size.width(); ++x) {
            random = random * 1664525U + 1013904223U;
            const int noise = static_cast<int>(random >> 28) - 8;
            const int edge = (x / 400 + y / 300) % 2 * 30;
            const int light = 60 + 100 * x / size.width() + static_cast<int>(wave) + edge + noise;
            const auto limited = [](int value) { return std::clamp(value, 0, 255); };
            pixels[x] =
                qRgb(limited(light), limited(light + 20), limited(light + y * 60 / size.height()));
        }
    }
    const QString path = folder.filePath(QStringLiteral("%1.jpg").arg(size.width()));
    image.save(path, "JPEG", 90);
    writeMetadata(path);
    return path;
}

} // namespace bench
