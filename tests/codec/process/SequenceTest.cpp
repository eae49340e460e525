#include "codec/process/OrderFiles.h"

using codec::ReadStatus;
using codec::SequenceFrame;
using codec::SequenceStatus;

namespace {

struct SequenceTest : OrderFiles {
    codec::OpenedSequence open(codec::DecoderPool& from, const QByteArray& order, int maxSize = 0) {
        const auto request = requestFor(maxSize, codec::Urgency::Focus);
        return from.openSequence(orders(order).get(), {}, request, {});
    }
    /// The numbers that its frames show, until it ends, and how.
    static std::pair<std::vector<int>, SequenceStatus> play(codec::FrameSequence& sequence) {
        std::vector<int> shown;
        while (true) {
            const SequenceFrame frame = sequence.next({});
            if (frame.status != SequenceStatus::Decoded) return {shown, frame.status};
            shown.push_back(qBlue(frame.frame.image.pixel(0, 0)));
        }
    }
};

TEST_F(SequenceTest, FramesComeOneAfterTheOtherUntilTheEndOrTheFirstDamage) {
    const std::tuple<const char*, std::size_t, std::vector<int>, SequenceStatus> cases[] = {
        {"film 4 9", 4, {0, 1, 2, 3}, SequenceStatus::Ended},
        {"film 4 2 damage", 4, {0, 1}, SequenceStatus::Damaged},
        {"film 4 2 cut", 4, {0, 1}, SequenceStatus::Damaged},
        {"film 4 0 cut", 4, {0}, SequenceStatus::Ended},
        {"film 4 0 damage", 4, {}, SequenceStatus::Damaged},
        {"film 4 2 crash", 4, {0, 1}, SequenceStatus::Damaged},
        {"film 1000000 1 damage", codec::mostFrames, {0}, SequenceStatus::Damaged},
        // Pages, which do not play.
        {"number 0 0 7", 1, {0}, SequenceStatus::Ended}};
    for (const auto& [order, count, shown, end] : cases) {
        SCOPED_TRACE(order);
        for (const int maxSize : {0, 256}) { // through memory of its own, and of the process
            const auto opened = open(pool, order, maxSize);
            ASSERT_EQ(opened.status, ReadStatus::Decoded);
            EXPECT_EQ(opened.sequence->frameCount(), count);
            EXPECT_EQ(play(*opened.sequence), std::pair(shown, end));
            EXPECT_EQ(opened.sequence->next({}).status, SequenceStatus::Ended);
        }
    }
    EXPECT_EQ(open(pool, "crash-open").status, ReadStatus::Failed);
    EXPECT_EQ(pool.countFrames(orders("paint 1 1 100001").get(), {}, codec::Urgency::Next), 0U);
}

TEST_F(SequenceTest, TheDecoderStaysWithTheSequenceWhichMayBeginAnewAndOutliveThePool) {
    auto mortal = std::make_unique<codec::DecoderPool>(settings(1));
    const auto opened = open(*mortal, "film 40 99");
    ASSERT_TRUE(opened.sequence);
    std::vector<int> delays;
    for (int frame = 0; frame < 5; ++frame)
        delays.push_back(opened.sequence->next({}).delay);
    EXPECT_EQ(delays, (std::vector{100, 100, 20, 30, 40})) << "0 and 10 are shown for 100";
    // Others get a process meanwhile, and the pictures of both are right.
    const auto request = requestFor(0, codec::Urgency::Focus);
    EXPECT_EQ(
        mortal->decode(orders("paint 9 9").get(), {}, request, {}).frame.image.size(), QSize(9, 9));
    EXPECT_EQ(qBlue(opened.sequence->next({}).frame.image.pixel(0, 0)), 5);
    EXPECT_EQ(opened.sequence->next(support::stopped()).status, SequenceStatus::NotNow);
    mortal.reset();
    opened.sequence->rewind();
    EXPECT_EQ(play(*opened.sequence).first.size(), 40U);
}

TEST_F(SequenceTest, ARequestSaysDepthAndCoresAndTheReplyWhatItIs) {
    const auto file = orders("wishes");
    // Width: threads, and 100 for a filter; height: bytes a sample.
    codec::Frame frame = pool.decode(file.get(), {}, {.targetProfile = "a profile"}, {}).frame;
    EXPECT_EQ(frame.image.size(), QSize(1, 1));
    EXPECT_EQ(frame.profile, "a profile");
    const codec::DecodeRequest request{
        .reduction = codec::Reduction::Filtered,
        .depth = codec::Depth::Source,
        .urgency = codec::Urgency::Focus};
    frame = pool.decode(file.get(), {}, request, {}).frame;
    EXPECT_EQ(frame.image.size(), QSize(codec::threadsFor(codec::Urgency::Focus) + 100, 2));
    EXPECT_EQ(frame.image.format(), QImage::Format_RGBX64);
    EXPECT_EQ(frame.image.pixelColor(0, 1).rgba64(), qRgba64(0x1234, 0x5678, 0x9ABC, 0xFFFF));
    EXPECT_EQ(frame.profile, "its own");
}

} // namespace
