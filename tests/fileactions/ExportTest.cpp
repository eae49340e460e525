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

namespace {

struct ExportTest : support::TransferFixture {
    PBImageImporterManager importers;

    fileactions::ExportedPicture
    exported(const char* name, const ExportSettings& settings, double angle = 0) {
        return fileactions::exportPicture(
            importers, QFile::decodeName(path(name)), angle, settings, {});
    }
    /// Entries of its metadata.
    static QString told(const QByteArray& bytes, const QString& type, const char* entries) {
        const auto properties = pictures::propertiesOf(bytes, type);
        return support::listed(
                   support::words(entries),
                   [&](const QString& path) { return pictures::entry(properties, path); })
            .join(u'|');
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
        // The colours are said to be as its pixels are.
        EXPECT_EQ(
            told(
                whole.content, type,
                "TIFF.Make Exif.DateTimeOriginal Exif.PixelXDimension .PixelWidth "
                "Exif.ColorSpace IPTC.Caption/Abstract IPTC.City"),
            u"Panasonic|2020:01:02 03:04:05|96|96|1|Caption|Lisbon"_s);
        const QString orientation = told(whole.content, type, ".Orientation");
        EXPECT_TRUE(orientation == u"1" || orientation.isEmpty()) << orientation.toStdString();
        EXPECT_NE(told(whole.content, type, "GPS.Latitude"), QString());

        settings.hasLocation = false;
        const QByteArray anywhere = exported("a.jpg", settings).content;
        EXPECT_EQ(
            told(anywhere, type, "TIFF.Make GPS.Latitude IPTC.Caption/Abstract IPTC.City"),
            u"Panasonic||Caption|"_s);
        EXPECT_FALSE(anywhere.contains("48,30") || anywhere.contains("Lisbon"));

        settings.hasMetadata = false;
        settings.maxSize = 80;
        const QByteArray bare = exported("a.jpg", settings).content;
        EXPECT_EQ(seen(bare, type).size(), QSize(80, 48));
        EXPECT_EQ(told(bare, type, "TIFF.Make"), QString());
        EXPECT_FALSE(bare.contains("Title"));
    }
}

TEST_F(ExportTest, coloursKeepTheirProfileAndDeepOnesTheirBits) {
    QImage deep(64, 32, QImage::Format_RGBX64);
    deep.fill(QColor::fromRgba64(20'030, 30'000, 40'001));
    deep.setColorSpace(QColorSpace::DisplayP3);
    put("deep.png", pictures::saved(deep, "PNG"));
    for (const QString& type : codec::writableTypes()) {
        SCOPED_TRACE(type.toStdString());
        const auto made = exported("deep.png", {.type = type, .quality = 1, .tiffCompression = 5});
        ASSERT_FALSE(made.error);
        const QString profile = told(made.content, type, ".ProfileName");
        EXPECT_FALSE(profile.isEmpty() || profile.startsWith(u"sRGB"_s)) << profile.toStdString();
        // Colours as the screen has them, from which a missing profile would be far off.
        const QColor shown = seen(made.content, type).pixelColor(30, 16);
        const QColor wanted = seen(read("deep.png"), u"public.png"_s).pixelColor(30, 16);
        EXPECT_LE(std::abs(shown.red() - wanted.red()), 4);
        EXPECT_LE(std::abs(shown.blue() - wanted.blue()), 4);
        const bool isShallow = type == u"public.jpeg"_s || type == u"org.webmproject.webp"_s;
        const bool isTen = type == u"public.avif"_s || type == u"public.heic"_s;
        const int depth = isShallow ? 8 : isTen ? 10 : 16;
        EXPECT_EQ(told(made.content, type, ".Depth"), QString::number(depth));
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
        EXPECT_EQ(told(kept, type, ".DPIWidth"), u"300"_s);
        settings.hasMetadata = false;
        EXPECT_EQ(told(exported("line.png", settings).content, type, ".DPIWidth"), u"72"_s);
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
        EXPECT_EQ(
            told(made.content, type, "TIFF.Make TIFF.Compression"),
            type == u"public.tiff"_s ? u"Panasonic|1"_s : u"Panasonic|"_s);
    }
}

TEST_F(ExportTest, damagedAndForeignFilesAreNotExported) {
    put("no.txt", "text");
    put("no.jpg", "text");
    putPhotograph("half.jpg");
    ASSERT_TRUE(QFile::resize(at("half.jpg"), read("half.jpg").size() / 2));
    for (const char* name : {"no.txt", "no.jpg", "half.jpg", "gone.jpg"})
        EXPECT_TRUE(exported(name, {.type = u"public.jpeg"_s}).error) << name;
    putPhotograph("a.jpg");
    EXPECT_EQ(exported("a.jpg", {.type = u"public.unknown"_s}).error, std::errc::not_supported);
}

TEST_F(ExportTest, encodingsThatCanBeStoppedAre) {
    std::stop_source stop;
    const QImage image = formatpictures::picture().scaled(600, 400);
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
    put("a/x.jpg", "source");
    put("b/x.jpg", "other");
    const auto runInto = [this](const QByteArray& into, bool replaces, std::errc error = {}) {
        fileactions::TransferPlan plan;
        plan.addFile(
            {.source = path("a/x.jpg"),
             .folder = path(into),
             .name = "x.jpg",
             .make = support::making("made", error),
             .replaces = replaces});
        run(plan);
    };
    runInto("a", true);
    runInto("a", false);
    EXPECT_EQ(read("a/x.jpg"), "source");
    EXPECT_EQ(read("a/x copy.jpg"), "made");
    runInto("b", true, std::errc::bad_message);
    EXPECT_EQ(prompts.log.join(u','), u"failed x.jpg,failed x.jpg"_s);
    EXPECT_EQ(read("b/x.jpg"), "other");
    for (int step = 1; step < 30; ++step) {
        files = {};
        files.failAt = step;
        files.fault = std::errc::no_space_on_device;
        runInto("b", true);
        const QByteArray left = read("b/x.jpg");
        EXPECT_TRUE(left == "other" || left == "made") << step << files.failed.constData();
        put("b/x.jpg", "other");
    }
    files = {};
    runInto("b", true);
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
    EXPECT_EQ(waiting.take(0, stop.get_token()).error, std::errc::operation_canceled);
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
