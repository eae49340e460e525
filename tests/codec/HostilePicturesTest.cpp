#include "codec/MadePictures.h"
#include "codec/formats/Codecs.h"
#include "codec/metadata/Pictures.h"

namespace {

/// Every text is valid and every number is one: what the catalogue takes without a check.
void expectSound(const PBDictionary& dictionary) {
    for (const auto& [key, value] : dictionary) {
        if (const PBDictionary* nested = value.dictionary()) {
            expectSound(*nested);
        } else if (value.isText()) {
            EXPECT_TRUE(value.toText().isValidUtf16()) << key.toStdString();
            EXPECT_FALSE(value.toText().contains(QChar(u'\0'))) << key.toStdString();
        } else if (value.isFloating()) {
            EXPECT_TRUE(std::isfinite(value.toDouble())) << key.toStdString();
        }
    }
}

} // namespace

TEST(HostilePictures, DamageOfEveryFormatDoesNoHarm) {
    unsigned seed = 0;
    for (const made::Picture& picture : made::samples()) {
        SCOPED_TRACE(picture.name);
        ASSERT_FALSE(picture.bytes.isEmpty());
        std::mt19937 random(++seed);
        for (int round = 0; round < 40; ++round) {
            const QByteArray bytes = support::mutated(picture.bytes, random);
            codec::DecodeRequest request;
            request.frame = round % 7 == 0 ? 1 : 0;
            request.maxSize = round % 2 == 0 ? 0 : 32;
            request.limits = {1U << 18, 16U << 20};
            const codec::Source source = codec::Source::fromBytes(bytes);
            const codec::Frame frame = codec::decode(source, picture.typeHint, request);
            EXPECT_LE(frame.image.width() * 1LL * frame.image.height(), 1 << 18);
            if (const auto properties = pictures::propertiesOf(bytes, picture.typeHint))
                expectSound(*properties);
            if (round % 10 == 0) {
                EXPECT_LE(codec::countFrames(source, picture.typeHint), 100000U);
            }
        }
    }
}
