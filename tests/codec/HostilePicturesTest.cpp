// Damaged pictures of every kind, through the same checks as the fuzzers: pixels in one program,
// metadata in the other.

#include "codec/MadePictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

TEST(HostilePictures, DamageOfEveryFormatDoesNoHarm) {
    unsigned seed = 0;
    for (const made::Picture& picture : made::samples()) {
        SCOPED_TRACE(picture.name);
        ASSERT_FALSE(picture.bytes.isEmpty());
        std::mt19937 random(++seed);
        for (int round = 0; round < 30; ++round) {
            const int reducedOrNext = round % 2 * 8 + (round % 7 == 0 ? 32 : 0);
            const QByteArray bytes = support::mutated(picture.bytes, random) +
                                     static_cast<char>(made::fuzzerHint(picture) | reducedOrNext);
            const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
            EXPECT_EQ(LLVMFuzzerTestOneInput(data, static_cast<std::size_t>(bytes.size())), 0);
        }
    }
}
