#include "catalogue/PhotoRows.h"

#include <QString>

#include <random>

namespace bench {

namespace {

PBDictionary imageFile(int number, std::mt19937& random) {
    const double date = 1.6e9 + static_cast<double>(random()) / 100.0;
    return {
        {QStringLiteral("FolderId"), qint64(number / 500 + 1)},
        {QStringLiteral("FileName"), QStringLiteral("IMG_%1.JPG").arg(number)},
        {QStringLiteral("FileSize"), qint64(2'000'000 + random() % 4'000'000)},
        {QStringLiteral("ModificationDate"), date},
        {QStringLiteral("CreationDate"), date - 60},
        {QStringLiteral("UTIType"), QStringLiteral("public.jpeg")},
        {QStringLiteral("ImageWidth"), qint64(6000)},
        {QStringLiteral("ImageHeight"), qint64(4000)},
        {QStringLiteral("ImageDPI"), qint64(72)},
        {QStringLiteral("ColorModel"), QStringLiteral("RGB")},
        {QStringLiteral("ColorSyncProfile"), QStringLiteral("sRGB IEC61966-2.1")},
        {QStringLiteral("RotateAngle"), 0.0},
    };
}

double below(std::mt19937& random, std::uint_fast32_t limit) {
    return static_cast<double>(random() % limit);
}

PBDictionary exif(int number, int camera, std::mt19937& random) {
    const QString date = QStringLiteral("2023:05:%1 12:%2:07")
                             .arg(number % 28 + 1, 2, 10, QChar(u'0'))
                             .arg(number % 60, 2, 10, QChar(u'0'));
    PBDictionary row{
        {QStringLiteral("ExposureTime"), 1.0 / (50 + below(random, 1000))},
        {QStringLiteral("FNumber"), 1.8 + below(random, 10)},
        {QStringLiteral("ExposureProgram"), qint64(2)},
        {QStringLiteral("ISOSpeedRatings"), QString::number(100 << random() % 6)},
        {QStringLiteral("ExifVersion"), QStringLiteral("2,3,1")},
        {QStringLiteral("DateTimeOriginal"), date},
        {QStringLiteral("DateTimeDigitized"), date},
        {QStringLiteral("ComponentsConfiguration"), QStringLiteral("1,2,3,0")},
        {QStringLiteral("ShutterSpeedValue"), 5.0 + below(random, 5)},
        {QStringLiteral("ApertureValue"), 1.7},
        {QStringLiteral("ExposureBiasValue"), 0.0},
        {QStringLiteral("MaxApertureValue"), 1.6},
        {QStringLiteral("MeteringMode"), qint64(5)},
        {QStringLiteral("Flash"), qint64(16)},
        {QStringLiteral("FocalLength"), 24.0 + below(random, 80)},
        {QStringLiteral("SubsecTimeOriginal"), QString::number(number % 1000)},
        {QStringLiteral("FlashPixVersion"), QStringLiteral("1,0")},
        {QStringLiteral("ColorSpace"), qint64(1)},
        {QStringLiteral("PixelXDimension"), qint64(6000)},
        {QStringLiteral("PixelYDimension"), qint64(4000)},
        {QStringLiteral("CustomRendered"), qint64(0)},
        {QStringLiteral("ExposureMode"), qint64(0)},
        {QStringLiteral("WhiteBalance"), qint64(0)},
        {QStringLiteral("SceneCaptureType"), qint64(0)},
        {QStringLiteral("LensModel"), QStringLiteral("24-105mm F4 normal zoom")},
    };
    if (camera > 0) {
        row[QStringLiteral("BodySerialNumber")] = QStringLiteral("042021005678");
        row[QStringLiteral("LensSpecification")] = QStringLiteral("24,105,4,4");
        row[QStringLiteral("FocalPlaneXResolution")] = 6825.9;
    }
    if (camera > 1) {
        row[QStringLiteral("FocalLenIn35mmFilm")] = qint64(28);
        row[QStringLiteral("BrightnessValue")] = 7.25;
    }
    return row;
}

PBDictionary tiff(int number) {
    return {
        {QStringLiteral("Make"), QStringLiteral("Some Maker")},
        {QStringLiteral("Model"), QStringLiteral("Model %1").arg(number % 3)},
        {QStringLiteral("Orientation"), qint64(1)},
        {QStringLiteral("XResolution"), qint64(72)},
        {QStringLiteral("YResolution"), qint64(72)},
        {QStringLiteral("ResolutionUnit"), qint64(2)},
        {QStringLiteral("Software"), QStringLiteral("Firmware 1.4.2")},
        {QStringLiteral("DateTime"), QStringLiteral("2023:05:17 12:00:07")},
    };
}

PBDictionary gps(std::mt19937& random) {
    return {
        {QStringLiteral("LatitudeRef"), QStringLiteral("N")},
        {QStringLiteral("Latitude"), 38.0 + below(random, 1000) / 1000.0},
        {QStringLiteral("LongitudeRef"), QStringLiteral("W")},
        {QStringLiteral("Longitude"), 9.0 + below(random, 1000) / 1000.0},
        {QStringLiteral("AltitudeRef"), QStringLiteral("0")},
        {QStringLiteral("Altitude"), 12.5},
        {QStringLiteral("TimeStamp"), QStringLiteral("11:00:07")},
        {QStringLiteral("DateStamp"), QStringLiteral("2023:05:17")},
    };
}

PhotoRow inBothForms(PBDictionary dictionary) {
    PhotoRow row;
    for (const auto& [key, value] : dictionary) {
        if (value.isText()) {
            row.plain.emplace_back(value.toText().toStdString());
        } else if (value.isFloating()) {
            row.plain.emplace_back(value.toDouble());
        } else {
            row.plain.emplace_back(std::int64_t(value.toInteger()));
        }
    }
    row.dictionary = std::move(dictionary);
    return row;
}

} // namespace

std::vector<PhotoRows> makePhotoRows(int count) {
    std::mt19937 random(3);
    std::vector<PhotoRows> photos;
    for (int number = 0; number < count; ++number) {
        const int camera = number % cameraCount;
        photos.push_back(
            {camera,
             {inBothForms(imageFile(number, random)), inBothForms(exif(number, camera, random)),
              inBothForms(tiff(number)), inBothForms(gps(random))}});
    }
    return photos;
}

} // namespace bench
