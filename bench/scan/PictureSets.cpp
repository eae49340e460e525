#include "scan/PictureSets.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QtEndian>

#include <exiv2/exiv2.hpp>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace bench {

namespace {

constexpr int smallPictureWidth = 160;
constexpr const char* placeholderDate = "2001:01:01 00:00:00";

// Millionths of a degree, as they stand in the file.
constexpr std::uint32_t placeholderLatitude = 0x01A2B3C4;
constexpr std::uint32_t placeholderLongitude = 0x01D4C3B2;

/// Soft gradients and a little of the noise of a sensor.
QByteArray pictureBytes(QSize size, int quality) {
    QImage image(size, QImage::Format_RGB32);
    std::uint32_t random = 1;
    for (int y = 0; y < size.height(); ++y) {
        auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            random = random * 1664525U + 1013904223U;
            const int noise = static_cast<int>(random >> 29);
            const int light = 40 + 150 * x / size.width() + (x / 200 + y / 150) % 2 * 30 + noise;
            pixels[x] = qRgb(light, 200 * y / size.height() + noise, 255 - light);
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "JPEG", quality)) std::abort();
    return bytes;
}

std::string degrees(std::uint32_t millionths) {
    return std::to_string(millionths) + "/1000000 0/1 0/1";
}

/// As cameras have one; pictures that are small themselves have none.
void addSmallPicture(Exiv2::ExifData& exif, QSize size) {
    if (size.width() < smallPictureWidth * 4) return;
    const QSize small = size.scaled(smallPictureWidth, smallPictureWidth, Qt::KeepAspectRatio);
    const QByteArray jpeg = pictureBytes(small, 80);
    Exiv2::ExifThumb(exif).setJpegThumbnail(
        reinterpret_cast<const Exiv2::byte*>(jpeg.constData()), static_cast<long>(jpeg.size()));
}

QByteArray withMetadata(const QByteArray& jpeg, QSize size, bool hasPosition) {
    const auto image = Exiv2::ImageFactory::open(
        reinterpret_cast<const Exiv2::byte*>(jpeg.constData()), static_cast<long>(jpeg.size()));
    image->readMetadata();
    Exiv2::ExifData& exif = image->exifData();
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.Model"] = "Canon EOS 40D";
    exif["Exif.Image.Orientation"] = std::uint16_t(1);
    exif["Exif.Photo.DateTimeOriginal"] = placeholderDate;
    exif["Exif.Photo.DateTimeDigitized"] = placeholderDate;
    exif["Exif.Photo.ExposureTime"] = "1/250";
    exif["Exif.Photo.FNumber"] = "28/10";
    exif["Exif.Photo.FocalLength"] = "50/1";
    exif["Exif.Photo.ISOSpeedRatings"] = std::uint16_t(100);
    exif["Exif.Photo.Flash"] = std::uint16_t(0);
    if (hasPosition) {
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        exif["Exif.GPSInfo.GPSLatitude"] = degrees(placeholderLatitude);
        exif["Exif.GPSInfo.GPSLongitudeRef"] = "E";
        exif["Exif.GPSInfo.GPSLongitude"] = degrees(placeholderLongitude);
    }
    addSmallPicture(exif, size);
    image->setByteOrder(Exiv2::littleEndian);
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    io.open();
    const Exiv2::DataBuf written = io.read(static_cast<long>(io.size()));
    return {reinterpret_cast<const char*>(written.pData_), static_cast<int>(written.size_)};
}

/// A date for each number, over twelve years.
QByteArray dateOf(int number) {
    char text[32];
    std::snprintf(
        text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", 2010 + number % 12,
        1 + number / 12 % 12, 1 + number / 144 % 28, number % 24, number % 60, number / 60 % 60);
    return text;
}

QByteArray littleEndian(std::uint32_t number) {
    QByteArray bytes(4, Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// Puts the position of a place, of those in a grid over southern Europe, where the placeholders
/// stand.
QByteArray atPlace(QByteArray bytes, int place) {
    const auto row = static_cast<std::uint32_t>(place / 100);
    const auto column = static_cast<std::uint32_t>(place % 100);
    bytes.replace(littleEndian(placeholderLatitude), littleEndian(38'000'000 + row * 200'000));
    bytes.replace(littleEndian(placeholderLongitude), littleEndian(1'000'000 + column * 250'000));
    return bytes;
}

QString folderOf(const QString& root, int folder) {
    return QStringLiteral("%1/%2").arg(root).arg(folder, 4, 10, QChar(u'0'));
}

QString pathOf(const PictureSet& set, const QString& root, int number) {
    return QStringLiteral("%1/IMG_%2.jpg")
        .arg(folderOf(root, number % set.folders))
        .arg(number, 6, 10, QChar(u'0'));
}

void make(const PictureSet& set, const QString& root) {
    QByteArray bytes = withMetadata(pictureBytes(set.size, set.quality), set.size, set.places > 0);
    for (int folder = 0; folder < set.folders; ++folder) {
        if (!QDir().mkpath(folderOf(root, folder))) std::abort();
        for (int number = folder; number < set.pictures; number += set.folders) {
            const QString name = pathOf(set, root, number);
            if (set.originals > 0 && number >= set.originals) {
                const QString original = pathOf(set, root, number % set.originals);
                if (::link(QFile::encodeName(original), QFile::encodeName(name)) != 0) std::abort();
                continue;
            }
            const QByteArray date = dateOf(number);
            for (qsizetype at = 0; (at = bytes.indexOf(placeholderDate, at)) >= 0;)
                bytes.replace(at, date.size(), date);
            QFile file(name);
            const QByteArray content = set.places > 0 ? atPlace(bytes, number % set.places) : bytes;
            if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
                std::abort();
            bytes.replace(date, placeholderDate);
        }
    }
}

} // namespace

QString PictureSet::folder() const {
    const QString root =
        QStringLiteral("%1/velmora-bench/%2x%3-%4-in-%5%6")
            .arg(QDir::tempPath())
            .arg(size.width())
            .arg(size.height())
            .arg(pictures)
            .arg(folders)
            .arg(places > 0 ? QStringLiteral("-of-%1-places").arg(places) : QString()) +
        (originals > 0 ? QStringLiteral("-linked-%1").arg(originals) : QString());
    const QString complete = root + QStringLiteral(".complete");
    if (QFile::exists(complete)) return root;
    std::fprintf(
        stderr, "making %d pictures in %s\n", pictures, QFile::encodeName(root).constData());
    QDir(root).removeRecursively();
    make(*this, root);
    QFile mark(complete);
    if (!mark.open(QIODevice::WriteOnly)) std::abort();
    return root;
}

QStringList filesBelow(const QString& folder) {
    QStringList files;
    QDirIterator iterator(folder, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(iterator.next());
    return files;
}

} // namespace bench
