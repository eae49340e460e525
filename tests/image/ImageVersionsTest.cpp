#include "image/large/ImageVersions.h"

#include "group/PBImageFileItem.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "support/Images.h"
#include "support/Support.h"

namespace {

LoadedImages pictures(QSize size, std::size_t frames = 1) {
    const PBImage image(support::filled(size));
    return LoadedImages::of(std::make_shared<PBImages>(std::vector(frames, image)));
}

std::shared_ptr<PBImageFileItem> itemOf(qint64 id, double date = 1000) {
    return PBImageFileItem::imageFileItemWithId(id, 1, u"a.jpg"_s, 5000, date);
}

/// The scale of the version that is taken, then which answers are true.
std::string chosen(const PBImageFileItem& item, double scale) {
    const AppropriateImage found = appropriateImageForScale(item, scale);
    std::string told = found.images ? QString::number(found.scale).toStdString() : "none";
    if (found.isMatched) told += " matched";
    if (found.hasNullImage) told += " null";
    if (found.isUnreadable) told += " unreadable";
    return told;
}

TEST(ImageVersionsTest, TheSmallestVersionThatIsLargeEnoughIsTaken) {
    using Version = std::pair<LoadedImages, double>;
    const auto picture = [](double scale) { return Version(pictures({4, 3}), scale); };
    const Version bad(LoadedImages::nullMarker(), 0.25);
    const std::tuple<std::vector<Version>, double, std::string> cases[] = {
        {{}, 1.0, "none"},
        {{picture(0.25), picture(1.0)}, 0.3, "1 matched"},
        {{picture(0.25), picture(1.0)}, 0.2, "0.25 matched"},
        {{picture(1.0), picture(0.25)}, 0.25, "0.25 matched"},
        {{picture(0.25)}, 1.0, "0.25"},
        {{picture(0.1), picture(0.5), picture(0.2)}, 1.0, "0.5"},
        {{picture(0.0)}, 0.5, "none"},
        {{picture(0.3)}, 0.3 * (1 + 1e-14), "0.3 matched"}, // went through points
        {{bad}, 1.0, "none null unreadable"},
        {{bad, picture(1.0)}, 0.25, "1 matched null unreadable"},
        {{{LoadedImages::notNow(), 0.25}}, 1.0, "none null"},
        {{{LoadedImages(), 0.25}}, 1.0, "none"},
    };
    for (const auto& [versions, asked, expected] : cases) {
        const auto item = itemOf(1);
        for (const auto& [version, scale] : versions)
            addImage(*item, version, scale);
        EXPECT_EQ(chosen(*item, asked), expected) << asked;
    }
}

TEST(ImageVersionsTest, WhatBelongsToAFormerFileIsShownButNeverEnough) {
    const auto former = itemOf(1, 1000);
    addImage(*former, pictures({8, 8}), 1.0);
    addImage(*former, LoadedImages::nullMarker(), 0.5);
    const auto same = itemOf(1, 1000);
    moveImages(*former, *same);
    EXPECT_EQ(chosen(*former, 1.0), "none");
    EXPECT_EQ(chosen(*same, 1.0), "1 matched null unreadable");

    const auto changed = itemOf(1, 2000);
    moveImages(*same, *changed);
    EXPECT_EQ(chosen(*changed, 1.0), "1");
    addImage(*changed, LoadedImages::notNow(), 0.5); // says nothing of the new file
    EXPECT_EQ(chosen(*changed, 0.5), "1 null");
    clearNotNowMarkers(*changed); // the next visit
    EXPECT_EQ(chosen(*changed, 0.5), "1");
    addImage(*changed, pictures({4, 4}), 0.5);
    EXPECT_EQ(chosen(*changed, 1.0), "0.5");

    expireImages(*changed); // another screen
    EXPECT_EQ(chosen(*changed, 0.5), "0.5");
    addImage(*changed, LoadedImages::nullMarker(), 0.5);
    EXPECT_EQ(chosen(*changed, 0.5), "none null unreadable");
}

TEST(ImageVersionsTest, OneOfTheTwoClearingsTakesEachPictureAndNoneAMarker) {
    constexpr double side = 10;
    const std::tuple<QSize, std::size_t, bool> cases[] = {
        {{10, 10}, 1, true}, {{11, 3}, 1, false}, {{3, 11}, 1, false}, {{10, 10}, 2, false}};
    for (const auto& [size, frames, isFitIn] : cases) {
        for (const bool clearsFitIn : {true, false}) {
            const auto item = itemOf(1);
            addImage(*item, pictures(size, frames), 1.0);
            addImage(*item, LoadedImages::nullMarker(), 0.5);
            EXPECT_EQ(fitInByteCount(*item, side) > 0, isFitIn);
            clearsFitIn ? clearFitInImage(*item, side) : clearUnFitInImages(*item, side);
            EXPECT_EQ(imageByteCount(*item) == 0, clearsFitIn == isFitIn) << size.width();
            EXPECT_TRUE(appropriateImageForScale(*item, 1.0).hasNullImage);
        }
    }
}

struct ImageBufferTest : testing::Test {
    ImageBufferTest() { line.setScreen({.maxScreenSize = 10, .colorSpace = {}}); }

    std::shared_ptr<PBImageFileItem> item(int index) {
        auto& item = items[index];
        if (!item) item = itemOf(index);
        return item;
    }
    void push(PBImageBufferManager& buffer, int index, const std::vector<int>& kept = {}) {
        if (imageByteCount(*item(index)) == 0) addImage(*item(index), pictures({10, 10}), 1.0);
        std::vector<std::shared_ptr<PBImageFileItem>> keepItems;
        for (const int each : kept)
            keepItems.push_back(item(each));
        buffer.pushImageFileItem(item(index), index, keepItems);
    }
    std::vector<int> withPictures() const {
        std::vector<int> indices;
        for (const auto& [index, item] : items)
            if (imageByteCount(*item) != 0) indices.push_back(index);
        return indices;
    }
    void focusOn(int index) {
        const std::array focus{item(index)};
        line.cancelAllOperationExceptContextObjs(focus, index);
    }

    PBLoadImageManager line;
    std::map<int, std::shared_ptr<PBImageFileItem>> items;
    std::uint64_t available = std::uint64_t{1} << 40;
    PBImageBufferManager::Environment environment{
        .loadImageManager = line, .byteLimit = 1 << 20, .availableMemory = [this] {
            return available;
        }};
};

constexpr qint64 pictureBytes = qint64{10} * 10 * 4;

TEST_F(ImageBufferTest, TheFarthestOfFifteenGoesUnlessItIsOnScreen) {
    PBImageBufferManager buffer(environment);
    for (int index = 0; index < 15; ++index)
        push(buffer, index);
    push(buffer, 3); // is there
    EXPECT_EQ(withPictures().size(), 15U);
    // Of two that are equally far the earlier one goes.
    addImage(*item(900), pictures({10, 10}), 1.0);
    buffer.pushImageFileItem(item(900), 7);
    EXPECT_EQ(withPictures().front(), 1);
    EXPECT_NE(imageByteCount(*item(14)), 0);
    push(buffer, 16, {1, 2});
    EXPECT_EQ((std::vector{withPictures()[1], withPictures()[2]}), (std::vector{2, 4}));
    push(buffer, 9 + 100, {1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 16, 900});
    EXPECT_EQ(buffer.itemCount(), 16U);
    buffer.clearBuffer();
    EXPECT_TRUE(buffer.byteCount() == 0 && withPictures().empty());
}

TEST_F(ImageBufferTest, BytesAreBoundedRoundTheFocusWhichStaysWithItsNeighbours) {
    environment.byteLimit = 5 * pictureBytes;
    PBImageBufferManager buffer(environment);
    focusOn(20);
    const std::vector<int> kept{17, 18, 19, 20, 21, 22, 23};
    addImage(*item(24), pictures({10, 10}), 0.5);
    addImage(*item(24), LoadedImages::nullMarker(), 1.0); // its original is too large
    for (const int index : {20, 21, 19, 22, 23, 24, 18})
        push(buffer, index, kept);
    EXPECT_EQ(withPictures(), (std::vector{18, 19, 20, 21, 22}));
    EXPECT_EQ(chosen(*item(24), 0.5), "none");    // to be loaded again
    addImage(*item(20), pictures({40, 40}), 1.0); // an original counts elsewhere
    push(buffer, 20, kept);
    EXPECT_EQ(withPictures(), (std::vector{18, 19, 20, 21, 22}));
    available = 0; // memory runs short
    push(buffer, 20, kept);
    EXPECT_EQ(withPictures(), (std::vector{19, 20, 21}));
    environment.byteLimit = 1;
    focusOn(19);
    push(buffer, 19);
    EXPECT_EQ(withPictures(), (std::vector{19, 20}));
}

TEST_F(ImageBufferTest, AnAnimationThatWasNeverLookedAtGoesWithItsItem) {
    PBImageBufferManager buffer(environment);
    focusOn(30);
    for (const int index : {0, 30}) {
        addImage(*item(index), pictures({10, 10}, 2), 1.0);
        push(buffer, index);
    }
    for (int index = 31; index < 60; ++index)
        push(buffer, index);
    EXPECT_EQ(imageByteCount(*item(0)), 0);
    EXPECT_NE(imageByteCount(*item(30)), 0);
}

} // namespace
