#include "image/large/AnimationFrames.h"

#include "support/Images.h"
#include "support/Support.h"

using codec::SequenceStatus;
using support::spinUntil;

namespace {

struct Film {
    std::size_t declared = 0;
    std::size_t damagedFrom = 1000;
    bool opens = true;
    std::atomic<int> decoded = 0;
    std::atomic<int> open = 0;
};

constexpr int side = 16;
constexpr qsizetype frameBytes = qsizetype{side} * side * 4;

QImage frameOf(unsigned index) {
    return support::filled({side, side}, QColor(index));
}

struct FilmSequence final : codec::FrameSequence {
    explicit FilmSequence(Film& shown) : film(shown) { ++film.open; }
    ~FilmSequence() override { --film.open; }
    std::size_t frameCount() const override { return film.declared; }
    void rewind() override { place = 0; }
    codec::SequenceFrame next(std::stop_token) override {
        ++film.decoded;
        if (place >= film.damagedFrom) return {SequenceStatus::Damaged, {}, 0};
        if (place >= film.declared) return {};
        return {SequenceStatus::Decoded, {.image = frameOf(static_cast<unsigned>(place++))}, 40};
    }

    Film& film;
    std::size_t place = 0;
};

struct Player {
    Player(Film& played, qsizetype mostBytes)
        : film(played),
          frames(std::make_shared<AnimationFrames>(
              [&played](const std::stop_token&) -> codec::OpenedSequence {
                  if (!played.opens) return {};
                  return {codec::ReadStatus::Decoded, std::make_unique<FilmSequence>(played)};
              },
              played.declared, mostBytes)) {
        images.emplace(PBImage(frameOf(0), 0.04), frames);
    }
    /// Shows the frame as a player does; false when it never comes.
    [[nodiscard]] bool show(std::size_t index) {
        images->willShowFrame(index == 0 ? 0 : index - 1);
        if (!spinUntil([&] { return images->isFrameReady(index); })) return false;
        images->willShowFrame(index);
        most = std::max(most, frames->byteCount());
        const QImage image = images->imageAtIndex(index);
        return (image.pixel(3, 3) & 0xffffff) == index && images->delayTimeAtIndex(index) == 0.04;
    }

    Film& film;
    std::shared_ptr<AnimationFrames> frames;
    std::optional<PBImages> images;
    qsizetype most = 0;
};

} // namespace

TEST(AnimationFramesTest, AShortAnimationIsDecodedOnceAndALongOneAheadOfThePlayer) {
    for (const bool isLong : {false, true}) {
        Film film{.declared = 60};
        Player player(film, isLong ? 20 * frameBytes : AnimationFrames::keptBytes);
        EXPECT_EQ(film.decoded, 0); // nobody plays it
        for (int round = 0; round < 3; ++round)
            for (std::size_t index = 0; index < 60; ++index)
                ASSERT_TRUE(player.show(index)) << "round " << round << ", frame " << index;
        EXPECT_EQ(player.images->imageCount(), 60U);
        EXPECT_LE(player.most, isLong ? 20 * frameBytes : 59 * frameBytes);
        if (isLong) {
            EXPECT_GT(film.decoded, 120);
        } else {
            EXPECT_EQ(film.decoded, 60);
            EXPECT_TRUE(spinUntil([&] { return film.open == 0; })); // the decoder is given back
        }
        player.images.reset();
        player.frames.reset();
        EXPECT_EQ(film.open, 0);
    }
}

TEST(AnimationFramesTest, APlayerThatJumpsBackDoesNotWaitForTheWholeWayRound) {
    Film film{.declared = 4000};
    Player player(film, 20 * frameBytes);
    for (const std::size_t index : {1, 2, 100, 3})
        ASSERT_TRUE(player.show(index));
    EXPECT_LE(film.decoded, 300);
}

TEST(AnimationFramesTest, ADamagedFrameEndsTheAnimationAndThoseBeforeItPlay) {
    const std::tuple<std::size_t, qsizetype, bool, std::size_t> cases[] = {
        {30, AnimationFrames::keptBytes, true, 30},
        {30, 12 * frameBytes, true, 30},
        {1, AnimationFrames::keptBytes, true, 1},
        {1000, AnimationFrames::keptBytes, false, 1}};
    for (const auto& [damagedFrom, mostBytes, opens, expected] : cases) {
        Film film{.declared = 60, .damagedFrom = damagedFrom, .opens = opens};
        Player player(film, mostBytes);
        for (std::size_t round = 0; round < 2; ++round)
            for (std::size_t index = 0; index < expected; ++index)
                ASSERT_TRUE(player.show(index)) << expected << ": " << index;
        player.images->willShowFrame(expected - 1);
        EXPECT_TRUE(
            spinUntil([&, count = expected] { return player.images->imageCount() == count; }));
        EXPECT_TRUE(player.images->pbImageAtIndex(expected).image().isNull());
    }
}
