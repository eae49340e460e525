#include "image/codec/Decoder.h"
#include "image/codec/MadePictures.h"
#include "image/codec/PBImageImporterManager.h"
#include "image/codec/metadata/Pictures.h"

#include <QUrl>

#include <gif_lib.h>
#include <unistd.h>
#include <zlib.h>

namespace {

/// Few pixels, so that thousands of cases cost little.
std::vector<made::Picture> samples() {
    std::vector<made::Picture> all = made::gradients();
    QImage glass(40, 30, QImage::Format_ARGB32);
    glass.fill(qRgba(200, 100, 50, 128));
    all.push_back({"gif", made::gif(DISPOSE_PREVIOUS, false)});
    all.push_back({"gif interlaced", made::gif(DISPOSE_BACKGROUND, true)});
    all.push_back({"webp animation", made::animatedWebp()});
    all.push_back({"icons", made::icon({{glass, 8}, {glass, 32}, {glass, 0}})});
    all.push_back({"jxl alpha", made::jpegXl(glass, 16, true)});
    all.push_back(
        {"png profile", made::png(made::gradient({40, 30}), 16, true, made::swappedProfile())});
    all.push_back({"dng", pictures::dng(), u"com.adobe.raw-image"_s});
    return all;
}

/// zlib's bytes of so many zeros.
QByteArray packedZeros(std::size_t count) {
    const std::vector<Bytef> zeros(count, 0);
    uLongf length = compressBound(count);
    QByteArray result(static_cast<qsizetype>(length), '\0');
    compress2(reinterpret_cast<Bytef*>(result.data()), &length, zeros.data(), count, 9);
    result.truncate(static_cast<qsizetype>(length));
    return result;
}

QByteArray pngOf(std::uint32_t width, std::uint32_t height, const QByteArray& data) {
    using pictures::ByteWriter;
    const auto chunk = [](const char* name, const QByteArray& content) {
        const QByteArray body = QByteArray(name, 4) + content;
        const auto sum = ::crc32(
            0, reinterpret_cast<const Bytef*>(body.constData()), static_cast<uInt>(body.size()));
        ByteWriter writer(false);
        writer.u32(static_cast<quint64>(content.size())).text(body).u32(sum);
        return writer.bytes();
    };
    ByteWriter header(false);
    header.u32(width).u32(height).u8(8).u8(2).u8(0).u8(0).u8(0);
    return QByteArray("\x89PNG\r\n\x1A\n", 8) + chunk("IHDR", header.bytes()) +
           chunk("IDAT", data) + chunk("IEND", {});
}

QByteArray tiffOf(unsigned width, unsigned height, bool isTiled, const QByteArray& data) {
    pictures::ByteWriter file(true);
    const auto entry = [&](unsigned tag, unsigned value) {
        file.u16(tag).u16(4).u32(1).u32(value);
    };
    const unsigned count = isTiled ? 11 : 9;
    const unsigned dataAt = 8 + 2 + count * 12 + 4;
    const auto length = static_cast<unsigned>(data.size());
    file.text("II").u16(42).u32(8).u16(count);
    for (const auto& [tag, value] :
         {std::pair(256U, width), {257, height}, {258, 8}, {259, 8}, {262, 1}}) // 8: deflate
        entry(tag, value);
    if (isTiled)
        for (const auto& [tag, value] :
             {std::pair(277U, 1U),
              {284, 1},
              {322, width},
              {323, height},
              {324, dataAt},
              {325, length}})
            entry(tag, value);
    else
        for (const auto& [tag, value] :
             {std::pair(273U, dataAt), {277, 1}, {278, height}, {279, length}})
            entry(tag, value);
    return file.u32(0).text(data).bytes();
}

} // namespace

TEST(HostilePictures, DamageOfEveryFormatDoesNoHarm) {
    unsigned seed = 0;
    for (const made::Picture& picture : samples()) {
        SCOPED_TRACE(picture.name);
        ASSERT_FALSE(picture.bytes.isEmpty());
        std::mt19937 random(++seed);
        for (int round = 0; round < 100; ++round) {
            const QByteArray bytes = support::mutated(picture.bytes, random);
            codec::DecodeRequest request;
            request.frame = round % 7 == 0 ? 1 : 0;
            request.maxSize = round % 2 == 0 ? 0 : 32;
            request.limits = {1U << 18, 16U << 20};
            const codec::Source source = codec::Source::fromBytes(bytes);
            const codec::Frame frame = codec::decode(source, picture.typeHint, request);
            EXPECT_LE(frame.image.width() * 1LL * frame.image.height(), 1 << 18);
            if (round % 10 == 0) {
                EXPECT_LE(codec::countFrames(source, picture.typeHint), 100000U);
            }
        }
    }
}

TEST(HostilePictures, BombsAreRefusedOrStayWithinTheLimits) {
    const QByteArray zeros = packedZeros(64U << 20);
    codec::DecodeRequest request;
    request.maxSize = 256;
    request.limits = {1U << 24, 64U << 20};
    const auto decode = [&](const QByteArray& bytes) {
        return codec::decode(codec::Source::fromBytes(bytes), {}, request).image;
    };
    // Also small pictures with tiles and strips of gigabytes.
    for (const QByteArray& bomb :
         {pngOf(60000, 60000, zeros), pngOf(0x7FFFFFFF, 1, zeros),
          tiffOf(60000, 60000, false, zeros), tiffOf(65536, 65536, true, zeros)})
        EXPECT_TRUE(decode(bomb).isNull());
    // Within the limits the honest part of a bomb is shown.
    for (const QByteArray& picture :
         {pngOf(4000, 4000, zeros), tiffOf(4000, 4000, false, zeros),
          tiffOf(4000, 4000, true, zeros)})
        EXPECT_EQ(decode(picture).size(), QSize(256, 256));
}

TEST(HostilePictures, HugeFilesOfZerosAreNothing) {
    const QTemporaryDir folder;
    PBImageImporterManager manager;
    for (const auto* name :
         {u"zeros.jpg", u"zeros.nef", u"zeros.tif", u"zeros.tga", u"zeros.heic"}) {
        const QString path = folder.filePath(QString::fromUtf16(name));
        support::writeFile(path, {});
        ASSERT_EQ(::truncate(path.toLocal8Bit().constData(), 200L << 20), 0);
        const auto importer = manager.imageImporterForImageURL(QUrl::fromLocalFile(path));
        ASSERT_TRUE(importer) << path.toStdString();
        EXPECT_TRUE(importer->createImageWithMaxSize(256, 0).isNull());
        EXPECT_EQ(importer->imageCount(), 0U);
        (void)importer->propertiesAtIndex(0);
    }
}
