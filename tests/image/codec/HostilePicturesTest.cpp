#include "image/codec/Decoder.h"
#include "image/codec/MadePictures.h"
#include "image/codec/PBImageImporterManager.h"
#include "image/codec/metadata/Pictures.h"
#include "support/Support.h"

#include <QTemporaryDir>
#include <QUrl>

#include <map>
#include <random>

#include <gif_lib.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

namespace {

/// Few pixels, so that thousands of cases cost little.
std::vector<made::Picture> samples() {
    std::vector<made::Picture> all = made::gradients();
    const auto add = [&](const char* name, const QByteArray& bytes, const QString& hint = {}) {
        all.push_back({QString::fromLatin1(name), bytes, hint});
    };
    QImage glass(40, 30, QImage::Format_ARGB32);
    glass.fill(qRgba(200, 100, 50, 128));
    add("gif", made::gif(DISPOSE_PREVIOUS, false));
    add("gif interlaced", made::gif(DISPOSE_BACKGROUND, true));
    add("webp animation", made::animatedWebp());
    add("icons", made::icon({{glass, 8}, {glass, 32}, {glass, 0}}));
    add("jxl alpha", made::jpegXl(glass, 16, true));
    add("png profile", made::png(made::gradient({40, 30}), 16, true, made::swappedProfile()));
    add("dng", pictures::dng(), QStringLiteral("com.adobe.raw-image"));
    return all;
}

class Damage {
public:
    explicit Damage(unsigned seed) : _random(seed) {}

    QByteArray of(QByteArray bytes, int round) {
        if (round % 4 == 0) bytes.truncate(at(bytes) + 1);
        // Headers decide most; two rounds in three hit the beginning.
        const qsizetype most =
            round % 3 == 0 ? bytes.size() : std::min<qsizetype>(bytes.size(), 200);
        for (int flip = 0; flip < 1 + round % 6; ++flip)
            bytes[number(most)] = static_cast<char>(round % 2 == 0 ? _random() : 0xFF);
        if (round % 5 == 0) {
            const QByteArray piece = bytes.mid(at(bytes), 40);
            bytes.insert(at(bytes), piece);
        }
        return bytes;
    }

private:
    qsizetype number(qsizetype most) {
        return static_cast<qsizetype>(_random() % static_cast<unsigned>(most));
    }
    qsizetype at(const QByteArray& bytes) { return number(bytes.size()); }

    std::mt19937 _random;
};

/// zlib's bytes of so many zeros.
QByteArray packedZeros(std::size_t count) {
    QByteArray result(static_cast<qsizetype>(count / 900 + 1000), '\0');
    z_stream stream{};
    deflateInit(&stream, 9);
    stream.next_out = reinterpret_cast<Bytef*>(result.data());
    stream.avail_out = static_cast<uInt>(result.size());
    std::vector<Bytef> zeros(1 << 20, 0);
    for (std::size_t done = 0; done < count;) {
        const std::size_t part = std::min(zeros.size(), count - done);
        stream.next_in = zeros.data();
        stream.avail_in = static_cast<uInt>(part);
        done += part;
        deflate(&stream, done == count ? Z_FINISH : Z_NO_FLUSH);
    }
    result.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
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
    file.text("II").u16(42).u32(8).u16(count);
    entry(256, width);
    entry(257, height);
    entry(258, 8);
    entry(259, 8); // deflate
    entry(262, 1);
    const unsigned dataAt = 8 + 2 + count * 12 + 4;
    if (!isTiled) entry(273, dataAt);
    entry(277, 1);
    if (!isTiled) {
        entry(278, height);
        entry(279, static_cast<unsigned>(data.size()));
    } else {
        entry(284, 1);
        entry(322, width);
        entry(323, height);
        entry(324, dataAt);
        entry(325, static_cast<unsigned>(data.size()));
    }
    return file.u32(0).text(data).bytes();
}

} // namespace

TEST(HostilePictures, DamageOfEveryFormatDoesNoHarm) {
    unsigned seed = 0;
    for (const made::Picture& picture : samples()) {
        SCOPED_TRACE(picture.name.toStdString());
        ASSERT_FALSE(picture.bytes.isEmpty());
        Damage damage(++seed);
        for (int round = 0; round < 100; ++round) {
            const QByteArray bytes = damage.of(picture.bytes, round);
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
    EXPECT_TRUE(decode(pngOf(60000, 60000, zeros)).isNull());
    EXPECT_TRUE(decode(pngOf(0x7FFFFFFF, 1, zeros)).isNull());
    EXPECT_TRUE(decode(tiffOf(60000, 60000, false, zeros)).isNull());
    // Small pictures with tiles and strips of gigabytes.
    EXPECT_TRUE(decode(tiffOf(65536, 65536, true, zeros)).isNull());
    // Within the limits the honest part of a bomb is shown.
    EXPECT_EQ(decode(pngOf(4000, 4000, zeros)).size(), QSize(256, 256));
    EXPECT_EQ(decode(tiffOf(4000, 4000, false, zeros)).size(), QSize(256, 256));
    EXPECT_EQ(decode(tiffOf(4000, 4000, true, zeros)).size(), QSize(256, 256));
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
