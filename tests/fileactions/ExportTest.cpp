#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"
#include "codec/metadata/Pictures.h"
#include "fileactions/ScriptedFiles.h"
#include "fileactions/export/ExportAhead.h"
#include "fileactions/export/ExportPlan.h"
#include "fileactions/export/PictureExport.h"
#include "fileactions/share/ShareCopies.h"
#include "formatpictures/FormatPictures.h"
#include "platform/files/TypeIdentifiers.h"
#include "support/Images.h"

#include <QColorSpace>
#include <QDateTime>

#include <atomic>

using fileactions::ExportSettings;
using pictures::entry;

namespace {

struct ExportTest : support::TransferFixture {
    PBImageImporterManager importers;

    fileactions::ExportedPicture
    exported(const char* name, const ExportSettings& settings, double angle = 0) {
        return fileactions::exportPicture(
            importers, QFile::decodeName(path(name)), angle, settings, {});
    }
    /// What the program itself sees of an export.
    QImage seen(const QByteArray& bytes, const QString& type) {
        const QByteArray name =
            "seen." + platform::TypeIdentifiers::preferredExtension(type).toLatin1();
        put(name, bytes);
        const auto importer = importers.imageImporterForImageURL(QFile::decodeName(path(name)));
        return importer ? importer->createImageWithMaxSize(0, 0) : QImage();
    }
    /// A photograph that lies on its side, with a position and a profile.
    void putPhotograph(const QByteArray& name) {
        const QImage image = formatpictures::picture();
        const Exiv2::DataValue city(reinterpret_cast<const Exiv2::byte*>("Lisbon"), 6);
        put(name, pictures::withMetadata(
                      pictures::saved(image, "JPEG"),
                      [&city](Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
                          exif["Exif.Image.Make"] = "Panasonic";
                          exif["Exif.Image.Orientation"] = std::uint16_t(6);
                          exif["Exif.Photo.DateTimeOriginal"] = "2020:01:02 03:04:05";
                          exif["Exif.Photo.PixelXDimension"] = std::uint32_t(4000);
                          exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
                          exif["Exif.GPSInfo.GPSLatitude"] = "48/1 30/1 0/1";
                          exif["Exif.Photo.ColorSpace"] = std::uint16_t(2);
                          exif.add(Exiv2::ExifKey("Exif.Panasonic.City"), &city);
                          iptc["Iptc.Application2.Caption"] = "Caption";
                          iptc["Iptc.Application2.City"] = "Lisbon";
                          xmp["Xmp.photoshop.City"] = "Lisbon";
                          xmp["Xmp.mediapro.Location"] = "Lisbon";
                          xmp["Xmp.exif.GPSLatitude"] = "48,30.0N";
                          xmp["Xmp.dc.title"] = "lang=x-default Title";
                          xmp["Xmp.tiff.Orientation"] = "6";
                      }));
    }
};

/// The largest difference of the means of 8 x 8 pixels.
int difference(const QImage& one, const QImage& other) {
    if (one.size() != other.size()) return 255;
    const auto small = [](const QImage& image) {
        return image.scaled(image.size() / 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    return support::differenceOf(small(one), small(other)).most;
}

TEST_F(ExportTest, everyTypeHasThePixelsUprightAndTheMetadataThatWereWanted) {
    putPhotograph("a.jpg");
    const QImage upright = formatpictures::picture().transformed(QTransform().rotate(90));
    const QStringList types = codec::writableTypes();
    EXPECT_GE(types.size(), 7);
    for (const QString& type : types) {
        SCOPED_TRACE(type.toStdString());
        ExportSettings settings{.type = type, .quality = 0.9};
        const auto whole = exported("a.jpg", settings, -90);
        ASSERT_FALSE(whole.error) << whole.error.message();
        EXPECT_FALSE(whole.isMetadataMissing);
        EXPECT_LE(difference(seen(whole.content, type), upright), 12);
        const auto properties = pictures::propertiesOf(whole.content, type);
        EXPECT_EQ(entry(properties, u"TIFF.Make"_s), u"Panasonic"_s);
        EXPECT_EQ(entry(properties, u"Exif.DateTimeOriginal"_s), u"2020:01:02 03:04:05"_s);
        EXPECT_EQ(entry(properties, u"Exif.PixelXDimension"_s), u"96"_s);
        EXPECT_EQ(entry(properties, u".PixelWidth"_s), u"96"_s);
        EXPECT_TRUE(QStringList({u"1"_s, QString()}).contains(entry(properties, u".Orientation"_s)))
            << entry(properties, u".Orientation"_s).toStdString();
        EXPECT_FALSE(entry(properties, u"GPS.Latitude"_s).isEmpty());
        EXPECT_EQ(entry(properties, u"Exif.ColorSpace"_s), u"1"_s) << "as its pixels are";
        EXPECT_EQ(entry(properties, u"IPTC.Caption/Abstract"_s), u"Caption"_s);
        EXPECT_EQ(entry(properties, u"IPTC.City"_s), u"Lisbon"_s);

        settings.hasLocation = false;
        const auto anywhere = exported("a.jpg", settings);
        const auto kept = pictures::propertiesOf(anywhere.content, type);
        EXPECT_EQ(entry(kept, u"TIFF.Make"_s), u"Panasonic"_s);
        EXPECT_EQ(entry(kept, u"GPS.Latitude"_s), QString());
        EXPECT_EQ(entry(kept, u"IPTC.Caption/Abstract"_s), u"Caption"_s);
        EXPECT_EQ(entry(kept, u"IPTC.City"_s), QString());
        EXPECT_FALSE(anywhere.content.contains("48,30") || anywhere.content.contains("Lisbon"));

        settings.hasMetadata = false;
        settings.maxSize = 80;
        const auto bare = exported("a.jpg", settings);
        EXPECT_EQ(seen(bare.content, type).size(), QSize(80, 48));
        EXPECT_EQ(entry(pictures::propertiesOf(bare.content, type), u"TIFF.Make"_s), QString());
        EXPECT_FALSE(bare.content.contains("Title"));
    }
}

TEST_F(ExportTest, coloursKeepTheirProfileAndDeepOnesTheirBits) {
    QImage deep(64, 32, QImage::Format_RGBX64);
    for (int y = 0; y < deep.height(); ++y)
        for (int x = 0; x < deep.width(); ++x)
            deep.setPixelColor(
                x, y,
                QColor(
                    QRgba64::fromRgba64(static_cast<quint16>(20'000 + x), 30'000, 40'001, 65'535)));
    const QColorSpace wide(QColorSpace::DisplayP3);
    deep.setColorSpace(wide);
    put("deep.png", pictures::saved(deep, "PNG"));
    for (const QString& type : codec::writableTypes()) {
        SCOPED_TRACE(type.toStdString());
        const auto made = exported("deep.png", {.type = type, .quality = 1, .tiffCompression = 5});
        ASSERT_FALSE(made.error);
        const auto properties = pictures::propertiesOf(made.content, type);
        EXPECT_FALSE(entry(properties, u".ProfileName"_s).isEmpty());
        EXPECT_FALSE(entry(properties, u".ProfileName"_s).startsWith(u"sRGB"_s));
        // Colours as the screen has them, from which a missing profile would be far off.
        const QColor shown = seen(made.content, type).pixelColor(30, 16);
        const QColor wanted = seen(read("deep.png"), u"public.png"_s).pixelColor(30, 16);
        EXPECT_LE(std::abs(shown.red() - wanted.red()), 4);
        EXPECT_LE(std::abs(shown.blue() - wanted.blue()), 4);
        const bool isShallow = type == u"public.jpeg"_s || type == u"org.webmproject.webp"_s;
        const bool isTen = type == u"public.avif"_s || type == u"public.heic"_s;
        EXPECT_EQ(entry(properties, u".Depth"_s), isShallow ? u"8"_s : isTen ? u"10"_s : u"16"_s);
    }
}

TEST_F(ExportTest, thinPicturesStayOneAndTheirResolutionGoesAlongWithTheMetadata) {
    QImage line = support::filled({3000, 1});
    line.setDotsPerMeterX(11811);
    line.setDotsPerMeterY(11811);
    put("line.png", pictures::saved(line, "PNG"));
    for (const QString& type : {u"public.jpeg"_s, u"public.tiff"_s, u"public.png"_s}) {
        ExportSettings settings{.type = type, .maxSize = 50};
        const auto kept = exported("line.png", settings).content;
        EXPECT_EQ(seen(kept, type).size(), QSize(50, 1));
        EXPECT_EQ(entry(pictures::propertiesOf(kept, type), u".DPIWidth"_s), u"300"_s);
        settings.hasMetadata = false;
        const auto bare = exported("line.png", settings).content;
        EXPECT_EQ(entry(pictures::propertiesOf(bare, type), u".DPIWidth"_s), u"72"_s);
    }
}

TEST_F(ExportTest, howTheSourceWasStoredIsNotToldOfTheExport) {
    putPhotograph("a.jpg");
    put("lzw.tif", exported("a.jpg", {.type = u"public.tiff"_s, .tiffCompression = 5}).content);
    for (const QString& type : {u"public.jpeg"_s, u"public.tiff"_s, u"public.png"_s}) {
        const auto made = exported("lzw.tif", {.type = type, .quality = 0.9, .maxSize = 50});
        EXPECT_LE(
            difference(
                seen(made.content, type),
                seen(read("lzw.tif"), type).scaledToWidth(50, Qt::SmoothTransformation)),
            12);
        const auto properties = pictures::propertiesOf(made.content, type);
        EXPECT_EQ(entry(properties, u"TIFF.Make"_s), u"Panasonic"_s);
        EXPECT_EQ(
            entry(properties, u"TIFF.Compression"_s),
            type == u"public.tiff"_s ? u"1"_s : QString());
    }
}

TEST_F(ExportTest, damagedAndForeignFilesAreNotExported) {
    put("no.txt", "text");
    put("no.jpg", "text");
    putPhotograph("half.jpg");
    put("half.jpg", read("half.jpg").first(read("half.jpg").size() / 2));
    for (const char* name : {"no.txt", "no.jpg", "half.jpg", "gone.jpg"})
        EXPECT_TRUE(exported(name, {.type = u"public.jpeg"_s}).error) << name;
    putPhotograph("a.jpg");
    EXPECT_EQ(
        exported("a.jpg", {.type = u"public.unknown"_s}).error,
        std::make_error_code(std::errc::not_supported));
}

TEST_F(ExportTest, encodingsThatCanBeStoppedAre) {
    std::stop_source stop;
    QImage image(600, 400, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * y, x ^ y, x + y));
    for (const bool isStopped : {false, true}) {
        if (isStopped) stop.request_stop();
        for (const QString& type :
             {u"public.jpeg"_s, u"public.png"_s, u"public.tiff"_s, u"org.webmproject.webp"_s}) {
            const auto made =
                codec::encodePicture(image, {}, {}, {.type = type, .stop = stop.get_token()}, {});
            EXPECT_EQ(made.bytes.isEmpty(), isStopped) << type.toStdString();
        }
    }
}

TEST_F(ExportTest, namesTakeTheTypesExtensionAndAreToldApart) {
    using Names = std::vector<QByteArray>;
    const std::tuple<Names, QString, Names> table[] = {
        {{"/x/IMG.CR2", "/y/img.jpg"}, u"public.jpeg"_s, {"IMG.jpg", "img 1.jpg"}},
        {{"/x/a.tif", "/y/a.tif", "/z/a 1.tif"}, u"public.png"_s, {"a.png", "a 2.png", "a 1.png"}},
        {{"/x/.hidden", "/x/a.b.c"}, u"public.tiff"_s, {".hidden.tif", "a.b.tif"}},
        {{"/x/" + QByteArrayLiteral("ü").repeated(126) + ".gi"},
         u"public.jpeg-2000"_s,
         {QByteArrayLiteral("ü").repeated(126).first(250) + ".jp2"}},
        {{"/x/\xff.jpg", "/x/\xfe.jpg"}, u"public.png"_s, {"\xff.png", "\xfe.png"}},
    };
    for (const auto& [paths, type, names] : table)
        EXPECT_EQ(fileactions::exportNames(paths, type), names);
}

TEST_F(ExportTest, whatIsMadeIsWholeOrAbsentAndNeverInPlaceOfItsSource) {
    using Plan = fileactions::TransferPlan;
    put("a/x.jpg", "source");
    put("b/x.jpg", "other");
    const auto planOf = [this](const QByteArray& into, std::error_code error, bool replaces) {
        Plan plan;
        plan.addFile(
            {.source = path("a/x.jpg"),
             .folder = path(into),
             .name = "x.jpg",
             .make =
                 [error](const std::stop_token&, QByteArray& content) {
                     content = "made";
                     return error;
                 },
             .replaces = replaces});
        return plan;
    };
    static_cast<void>(run(planOf("a", {}, true)));
    static_cast<void>(run(planOf("a", {}, false)));
    EXPECT_EQ(read("a/x.jpg"), "source");
    EXPECT_EQ(read("a/x copy.jpg"), "made");
    EXPECT_EQ(
        QFile::permissions(QFile::decodeName(path("a/x copy.jpg"))),
        QFile::permissions(QFile::decodeName(path("a/x.jpg"))))
        << "as any new file";
    static_cast<void>(run(planOf("b", std::make_error_code(std::errc::bad_message), true)));
    EXPECT_EQ(read("b/x.jpg"), "other");
    static_cast<void>(run(planOf("b", {}, false)));
    EXPECT_EQ(prompts.log.join(u','), u"failed x.jpg,failed x.jpg,conflict x.jpg"_s);
    EXPECT_EQ(read("b/x.jpg"), "other");
    for (int step = 1; step < 30; ++step) {
        support::FaultyFiles faulty;
        faulty.failAt = step;
        faulty.fault = std::errc::no_space_on_device;
        fileactions::TemporaryFiles places(faulty, path("journal"));
        static_cast<void>(fileactions::FileTransfer({.files = faulty,
                                                     .temporaries = places,
                                                     .rows = rows,
                                                     .prompts = prompts,
                                                     .copyWord = u"copy"_s})
                              .run(planOf("b", {}, true), {}));
        const QByteArray left = read("b/x.jpg");
        EXPECT_TRUE(left == "other" || left == "made") << step << faulty.failed.constData();
        put("b/x.jpg", "other");
    }
    static_cast<void>(run(planOf("b", {}, true)));
    EXPECT_EQ(read("b/x.jpg"), "made");
}

TEST(ExportAheadTest, picturesComeInOrderFewAheadAndEndWithAStop) {
    std::atomic<std::size_t> begun = 0;
    std::atomic<std::size_t> wanted = 0;
    std::atomic<std::size_t> mostAhead = 0;
    const auto make = [&](std::size_t index, const std::stop_token&) {
        const std::size_t now = ++begun; // first: others go on meanwhile
        const std::size_t ahead = now - std::min(now, wanted.load());
        if (ahead > mostAhead) mostAhead = ahead;
        return fileactions::ExportedPicture{
            .error = {}, .content = QByteArray::number(static_cast<int>(index))};
    };
    {
        fileactions::ExportAhead ahead(50, 3, make);
        for (std::size_t i = 0; i < 50; i += i == 10 ? 5 : 1) {
            wanted = i;
            EXPECT_EQ(ahead.take(i, {}).content, QByteArray::number(static_cast<int>(i)));
        }
    }
    // One for each thread and one more, beside what is wanted, which may have been taken meanwhile.
    EXPECT_LE(mostAhead, 3 + 1 + 1);
    std::stop_source stop;
    fileactions::ExportAhead waiting(2, 1, [&](std::size_t, const std::stop_token& ended) {
        stop.request_stop();
        while (!ended.stop_requested())
            std::this_thread::yield();
        return fileactions::ExportedPicture{};
    });
    EXPECT_EQ(
        waiting.take(0, stop.get_token()).error,
        std::make_error_code(std::errc::operation_canceled));
}

TEST(ShareCopiesTest, copiesHavePlacesOfTheirOwnThatOthersCantSeeAndGoAfterADay) {
    namespace copies = fileactions::ShareCopies;
    EXPECT_EQ(
        copies::placesOfCopies({"/x/a.tif", "/y/a.tif", "/z/a.jpg", "/z/b.png"}, "/f"),
        (std::vector<copies::Place>{
            {"/f", "a.jpg"}, {"/f/1", "a.jpg"}, {"/f/2", "a.jpg"}, {"/f", "b.jpg"}}));
    EXPECT_TRUE(copies::needsCopy(-90, 1) && copies::needsCopy(0, 6));
    EXPECT_FALSE(copies::needsCopy(360, 0) || copies::needsCopy(0, 1));

    const QTemporaryDir base;
    const QString cache = base.filePath(u"cache"_s);
    const QString folder = QFile::decodeName(copies::makeFolder(cache));
    for (const QString& each : {cache, folder})
        EXPECT_EQ(
            QFile::permissions(each) & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther), 0);
    support::writeFile(folder + u"/a.jpg"_s, "a");
    QDir(cache).mkdir(u"mine"_s);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const qint64 hour = 60 * 60 * 1000;
    copies::removeOld(cache, now + 23 * hour);
    EXPECT_TRUE(QFile::exists(folder + u"/a.jpg"_s));
    copies::removeOld(cache, now + 25 * hour);
    EXPECT_EQ(QDir(cache).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList(u"mine"_s));
}

} // namespace
