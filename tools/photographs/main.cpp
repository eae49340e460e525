// photographs FOLDER [WIDTH]: paints some ninety photographs into folders below FOLDER, with dates,
// places, cameras and exposures, for pictures of the window and for trying things out. The same
// pictures on every run.
#include "photographs/Scenes.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>

#include <exiv2/exiv2.hpp>

#include <array>
#include <cmath>
#include <cstdio>
#include <random>

namespace {

using scenes::Kind;
using scenes::Light;

struct Camera {
    const char* make;
    const char* model;
    const char* lens;
    int focalLength;
};

constexpr std::array<Camera, 4> cameras{
    {{"NIKON CORPORATION", "NIKON Z 6", "NIKKOR Z 24-70mm f/4 S", 35},
     {"FUJIFILM", "X-T4", "XF16-55mmF2.8 R LM WR", 23},
     {"Canon", "Canon EOS R6", "RF70-200mm F4 L IS USM", 120},
     {"Panasonic", "DC-GX9", "LUMIX G 20/F1.7 II", 20}}};

/// A walk with a camera: one folder.
struct Series {
    const char* folder;
    const char* prefix;
    int count;
    const char* date;
    double latitude;
    double longitude;
    std::size_t camera;
    std::array<Kind, 3> kinds;
    std::array<Light, 3> lights;
};

constexpr std::array<Series, 9> allSeries{{
    {"2021/Lake in autumn",
     "DSCF",
     9,
     "2021-10-09",
     46.3637,
     14.0938,
     1,
     {Kind::Lake, Kind::Forest, Kind::Lake},
     {Light::Dawn, Light::Day, Light::Evening}},
    {"2022/Lisbon",
     "P10",
     10,
     "2022-05-21",
     38.7120,
     -9.1390,
     3,
     {Kind::City, Kind::Sea, Kind::City},
     {Light::Day, Light::Evening, Light::Dusk}},
    {"2022/Sahara",
     "IMG_",
     8,
     "2022-11-03",
     31.0990,
     -4.0120,
     2,
     {Kind::Desert, Kind::Desert, Kind::Desert},
     {Light::Day, Light::Evening, Light::Dawn}},
    {"2023/Garden",
     "DSCF",
     12,
     "2023-06-11",
     52.4040,
     13.0580,
     1,
     {Kind::Flowers, Kind::Flowers, Kind::Flowers},
     {Light::Day, Light::Day, Light::Evening}},
    {"2023/Lofoten",
     "_DSC",
     12,
     "2023-09-14",
     68.2340,
     14.5680,
     0,
     {Kind::Sea, Kind::Mountains, Kind::Lake},
     {Light::Evening, Light::Dawn, Light::Dusk}},
    {"2024/Dolomites",
     "_DSC",
     14,
     "2024-07-02",
     46.5405,
     11.7580,
     0,
     {Kind::Mountains, Kind::Lake, Kind::Forest},
     {Light::Dawn, Light::Day, Light::Evening}},
    {"2024/Night walks",
     "IMG_",
     8,
     "2024-12-19",
     50.0870,
     14.4210,
     2,
     {Kind::Night, Kind::City, Kind::Night},
     {Light::Dusk, Light::Dusk, Light::Dusk}},
    {"2025/Black Forest",
     "_DSC",
     9,
     "2025-04-27",
     47.8740,
     8.0040,
     0,
     {Kind::Forest, Kind::Mountains, Kind::Forest},
     {Light::Dawn, Light::Dusk, Light::Day}},
    {"2025/West coast",
     "DSCF",
     10,
     "2025-08-16",
     53.2200,
     -9.4500,
     1,
     {Kind::Sea, Kind::Sea, Kind::Lake},
     {Light::Evening, Light::Day, Light::Dawn}},
}};

/// Degrees, minutes and hundredths of a second, as the format keeps positions.
std::string sexagesimal(double degrees) {
    const long hundredths = std::lround(std::abs(degrees) * 360000);
    return std::to_string(hundredths / 360000) + "/1 " + std::to_string(hundredths / 6000 % 60) +
           "/1 " + std::to_string(hundredths % 6000) + "/100";
}

void writeMetadata(
    const QString& path, const Series& series, const QDateTime& taken, std::mt19937& random) {
    static constexpr std::array<const char*, 6> apertures{
        {"28/10", "4/1", "56/10", "8/1", "11/1", "17/10"}};
    static constexpr std::array<const char*, 5> times{
        {"1/30", "1/125", "1/250", "1/500", "1/1000"}};
    static constexpr std::array<std::uint16_t, 5> speeds{{100, 200, 400, 800, 3200}};
    const Camera& camera = cameras[series.camera];
    const auto file = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = camera.make;
    exif["Exif.Image.Model"] = camera.model;
    exif["Exif.Photo.LensModel"] = camera.lens;
    const std::string time = taken.toString(QStringLiteral("yyyy:MM:dd hh:mm:ss")).toStdString();
    exif["Exif.Photo.DateTimeOriginal"] = time;
    exif["Exif.Photo.DateTimeDigitized"] = time;
    exif["Exif.Photo.FNumber"] = apertures[random() % apertures.size()];
    exif["Exif.Photo.ExposureTime"] = times[random() % times.size()];
    exif["Exif.Photo.ISOSpeedRatings"] = speeds[random() % speeds.size()];
    exif["Exif.Photo.FocalLength"] = std::to_string(camera.focalLength) + "/1";
    exif["Exif.GPSInfo.GPSLatitudeRef"] = series.latitude < 0 ? "S" : "N";
    exif["Exif.GPSInfo.GPSLatitude"] = sexagesimal(series.latitude);
    exif["Exif.GPSInfo.GPSLongitudeRef"] = series.longitude < 0 ? "W" : "E";
    exif["Exif.GPSInfo.GPSLongitude"] = sexagesimal(series.longitude);
    file->setExifData(exif);
    file->writeMetadata();
}

/// Answers the exit code.
int paintAll(const QDir& root, int width) {
    std::uint32_t number = 0;
    for (const Series& series : allSeries) {
        const QDir folder(root.filePath(QString::fromLatin1(series.folder)));
        folder.mkpath(QStringLiteral("."));
        QDateTime taken(
            QDate::fromString(QString::fromLatin1(series.date), Qt::ISODate), QTime(8, 12));
        for (int i = 0; i < series.count; ++i) {
            ++number;
            std::mt19937 random(number);
            taken = taken.addSecs(300 + random() % 3600);
            QSize size(width, width * 2 / 3);
            if (random() % 5 == 0) size.transpose();
            const auto step = static_cast<std::size_t>(i);
            const QString path =
                folder.filePath(QStringLiteral("%1%2.jpg")
                                    .arg(QString::fromLatin1(series.prefix))
                                    .arg(1200 + i * 7 % 900 + static_cast<int>(number) * 31));
            const QImage picture =
                scenes::paint(series.kinds[step % 3], series.lights[step / 3 % 3], size, number);
            if (!picture.save(path, "JPEG", 88)) {
                std::fprintf(stderr, "photographs: %s can't be written\n", qPrintable(path));
                return 1;
            }
            writeMetadata(path, series, taken, random);
            QFile file(path);
            if (file.open(QIODevice::ReadWrite))
                file.setFileTime(taken, QFileDevice::FileModificationTime);
        }
    }
    std::printf("%u photographs in %s\n", number, qPrintable(root.path()));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Paints some ninety photographs."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Where they go."));
    parser.addPositionalArgument(
        QStringLiteral("WIDTH"), QStringLiteral("In pixels, at least 60; 960 without it."),
        QStringLiteral("[WIDTH]"));
    parser.process(application);
    const QStringList words = parser.positionalArguments();
    bool isWidth = true;
    const int width = words.size() > 1 ? words[1].toInt(&isWidth) : 960;
    if (words.isEmpty() || words.size() > 2 || !isWidth || width < 60) parser.showHelp(2);
    return paintAll(words[0], width);
}
