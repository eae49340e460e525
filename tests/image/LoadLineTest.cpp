#include "group/PBImageFileItem.h"
#include "image/large/LargeImageRequests.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainLoop.h"
#include "support/FakeFiles.h"

using codec::ReadStatus;
using support::spinUntil;

namespace {

struct LoadLineTest : testing::Test {
    LoadLineTest() {
        line.setScreen({.maxScreenSize = 10, .backingScaleFactor = 1, .colorSpace = {}});
        for (int index = 0; index < 40; ++index)
            items.push_back(itemOf(index, 1000));
    }
    ~LoadLineTest() override { disk.setOpen(true); }

    static std::shared_ptr<PBImageFileItem> itemOf(int index, double date) {
        auto item = PBImageFileItem::imageFileItemWithId(
            index, 1, QStringLiteral("%1.jpg").arg(index), 5000, date);
        item->setImageSize({40, 40});
        return item;
    }
    IndexedImage image(int index) const { return {items[static_cast<std::size_t>(index)], index}; }
    std::vector<IndexedImage> images(auto... indices) const { return {image(indices)...}; }
    /// As a display does when the focus moves: a zoom at which the picture fits in, neighbours.
    void show(int index, int neighbours = 7) {
        std::vector kept{image(index).item};
        std::vector<IndexedImage> ahead;
        for (int next = index + 1; next <= std::min(index + neighbours, 39); ++next) {
            ahead.push_back(image(next));
            kept.push_back(ahead.back().item);
        }
        line.cancelAllOperationExceptContextObjs(kept, index);
        requests.requestForZoom(image(index), 0.25, display);
        requests.tryPreloadNextOrPrevImage(ahead, display);
    }
    /// All that was asked for comes.
    [[nodiscard]] bool finishes() {
        disk.setOpen(true);
        return spinUntil([this] { return line.operationCount() == 0; });
    }

    struct Display final : PBLoadImageDelegate {
        explicit Display(LoadLineTest& owner) : test(owner) {}
        void loadImageFinished(
            const PBLoadImageOperation&, const LoadedImages& images, double scale,
            const std::shared_ptr<PBImageFileItem>& item, std::int64_t index) override {
            static const QString kinds[] = {u"-"_s, u"x"_s, u"?"_s, {}};
            told += QString::number(item->fileId()) + kinds[static_cast<std::size_t>(images.kind)];
            test.requests.keepLoadedImages(images, scale, {item, index});
        }
        LoadLineTest& test;
        QStringList told;
    };

    platform::MainLoop loop;
    support::FakeFiles disk;
    support::FakeImporters importers{disk};
    LoadPace::Time now{};
    PBLoadImageManager line{[this] { return now; }};
    PBImageBufferManager buffer{{.loadImageManager = line}};
    LargeImageRequests requests{line, buffer, importers, [](const PBImageFileItem& item) {
                                    return item.fileId() == 13 ? QString()
                                                               : u"/p/"_s + item.fileName();
                                }};
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    Display display{*this};
};

} // namespace

TEST_F(LoadLineTest, TheFocusComesFirstTheNeighboursBehindIt) {
    disk.setOpen(false);
    requests.tryPreloadNextOrPrevImage(images(1, 2, 13, 3), display); // 13 can't be reached
    disk.waitUntilReading();
    requests.tryPreloadNextOrPrevImage(images(2, 1), display); // joined, not moved
    requests.requestForZoom(image(4), 0.25, display);
    requests.requestForZoom(image(3), 0.2, display); // waits: goes to the head
    requests.requestForZoom(image(3), 0.9, display); // needs the original
    requests.tryPreloadOriginalImage(image(4), display);
    ASSERT_TRUE(finishes());
    EXPECT_EQ(
        disk.asked().join(u' '),
        u"1.jpg@10 3.jpg@0! 3.jpg@10! 4.jpg@10! 2.jpg@10 1.jpg@10 4.jpg@0");
    EXPECT_EQ(display.told.join(u' '), u"3 3 4 2 1 4");
    EXPECT_EQ(disk.mostAtATime(), 1);
    // All are there: nothing is asked for again.
    requests.requestForZoom(image(3), 0.9, display);
    requests.tryPreloadNextOrPrevImage(images(1, 2, 3, 4), display);
    EXPECT_EQ(line.operationCount(), 0U);
}

TEST_F(LoadLineTest, TheSlideshowPutsTheNearestFirst) {
    disk.setOpen(false);
    requests.tryPreloadImages(images(5, 4, 3, 2, 1, 0), 0, display);
    // The farthest has begun, and gives way to the one that the user waits for.
    ASSERT_TRUE(spinUntil([this] { return disk.asked().contains(u"0.jpg@10!"_s); }));
    requests.tryPreloadImages(images(6, 5, 4, 3, 2), 2, display); // 2 is now the current one
    ASSERT_TRUE(finishes());
    EXPECT_EQ(display.told.join(u' '), u"0 2 6 1 3 4 5");
}

TEST_F(LoadLineTest, DisplaysShareADecodeAndMayGoAway) {
    disk.setOpen(false);
    Display second(*this);
    auto third = std::make_unique<Display>(*this);
    for (int i = 0; i < 2; ++i)
        for (const Display* each : {&display, third.get(), &second})
            requests.requestForZoom(image(1), 0.25, *each);
    third.reset();
    ASSERT_TRUE(finishes());
    EXPECT_EQ(disk.asked().size(), 1);
    EXPECT_EQ(display.told, support::words("1"));
    EXPECT_EQ(second.told, display.told);
    EXPECT_EQ(imageByteCount(*items[1]), 10 * 10 * 4); // one picture, not two
}

TEST_F(LoadLineTest, ANewFocusEndsWhatIsFarAndTheLineGoesOn) {
    disk.setOpen(false);
    requests.requestForZoom(image(1), 0.25, display);
    disk.waitUntilReading();
    requests.tryPreloadNextOrPrevImage(images(2, 3, 4), display);
    const std::array kept{items[3]};
    line.cancelAllOperationExceptContextObjs(kept);
    // What was cancelled brings nothing, so one who wants it again gets a job of his own.
    EXPECT_EQ(line.loadImageOperationOfContextObj(*items[1], 0.25).operation, nullptr);
    requests.requestForZoom(image(1), 0.25, display);
    ASSERT_TRUE(spinUntil([this] { return display.told.contains(u"1-"_s); }));
    ASSERT_TRUE(finishes());
    EXPECT_EQ(display.told.join(u' '), u"1- 1 3");
}

TEST_F(LoadLineTest, WhatIsLoadedFollowsThePhotographToTheItemThatAScanMadeOfIt) {
    disk.setOpen(false);
    requests.requestForZoom(image(1), 0.25, display);
    disk.waitUntilReading();
    requests.requestForZoom(image(1), 0.9, display);
    const auto replace = [this](double date) {
        const auto former = std::exchange(items[1], itemOf(1, date));
        buffer.itemWasReplaced(former, items[1]);
    };
    replace(1000);
    EXPECT_TRUE(line.loadImageOperationOfContextObj(*items[1], 0.25).isLoading);
    EXPECT_NE(line.loadImageOperationOfContextObj(*items[1], 1).operation, nullptr);
    requests.requestForZoom(image(1), 0.25, display);
    EXPECT_EQ(line.operationCount(), 2U) << "joined";
    ASSERT_TRUE(finishes());
    EXPECT_EQ(imageByteCount(*items[1]), (10 * 10 + 40 * 40) * 4);

    disk.setOpen(false);
    replace(1001); // its file has changed
    requests.requestForZoom(image(1), 0.25, display);
    requests.requestForZoom(image(1), 0.9, display);
    replace(1002);
    ASSERT_TRUE(spinUntil([this] { return line.operationCount() == 0; })) << "not wanted any more";
    EXPECT_EQ(display.told.join(u' '), u"1 1 1-");
}

TEST_F(LoadLineTest, AFailureIsRememberedOnlyWhereItIsTheFiles) {
    disk.set(u"1.jpg"_s, {.status = ReadStatus::Refused});
    disk.set(u"2.jpg"_s, {.status = ReadStatus::NotNow});
    for (int visit = 0; visit < 2; ++visit) {
        for (const int index : {1, 2}) {
            now += std::chrono::seconds(1);
            show(index, 0);
            ASSERT_TRUE(finishes());
            requests.requestForZoom(image(index), 0.25, display); // the next paint
            requests.tryPreloadNextOrPrevImage(images(index), display);
            EXPECT_EQ(line.operationCount(), 0U);
        }
    }
    EXPECT_EQ(display.told.join(u' '), u"1x 2? 2?");

    // The file changes: a scan makes another item of it.
    disk.set(u"1.jpg"_s, {});
    const auto changed = itemOf(1, 2000);
    buffer.itemWasReplaced(items[1], changed);
    EXPECT_TRUE(requests.requestForZoom({changed, 1}, 0.25, display).needsLoad());
    ASSERT_TRUE(finishes());
    EXPECT_TRUE(requests.imageForZoom(*changed, 0.25).isMatched);
    // On another screen the picture is shown until it is there in the new colours.
    line.setScreen({10, 1, QColorSpace(QColorSpace::DisplayP3)});
    const AppropriateImage old = requests.requestForZoom({changed, 1}, 0.25, display);
    EXPECT_TRUE(old.images && old.needsLoad());
    ASSERT_TRUE(finishes());
    const AppropriateImage made = requests.imageForZoom(*changed, 0.25);
    EXPECT_TRUE(made.isMatched && made.images != old.images);
}

TEST_F(LoadLineTest, WhileAKeyIsHeldThePassedPicturesAreNotBegun) {
    using namespace std::chrono_literals;
    for (const auto& item : items)
        item->setImageSize({24000, 1000}); // takes long by the first guess
    line.setScreen({.maxScreenSize = 6000, .colorSpace = {}});
    for (const auto& each : {u"0.jpg"_s, u"9.jpg"_s}) // says nothing of the time
        disk.set(each, {.status = ReadStatus::Refused});
    disk.set(u"11.jpg"_s, {{24000, 1000}});
    for (int index = 0; index < 10; ++index) {
        show(index, 0);
        ASSERT_TRUE(index == 0 ? finishes() : true);
        now += 33ms;
    }
    EXPECT_EQ(disk.asked().join(u' '), u"0.jpg@6000!");
    EXPECT_EQ(line.operationCount(), 1U);
    line.steppingDidEnd();
    ASSERT_TRUE(finishes());
    EXPECT_EQ(disk.asked().join(u' '), u"9.jpg@6000!");
    // Without the word of the key a pause does it.
    show(10, 0);
    now += 33ms;
    show(11, 0);
    EXPECT_EQ(line.operationCount(), 1U);
    now += 300ms;
    ASSERT_TRUE(finishes());
    EXPECT_EQ(disk.asked().back(), u"11.jpg@6000!");
}

TEST_F(LoadLineTest, ALineThatIsFullDropsItsHead) {
    disk.setOpen(false);
    requests.requestForZoom(image(0), 0.25, display);
    for (std::size_t job = 0; job <= PBLoadImageManager::mostWaiting; ++job)
        line.addLoadImageOperation(
            std::make_shared<PBLoadImageOperation>(
                PBLoadImageOperation::Job{u"/p/1.jpg"_s, {}, double(job), items[1], 1, {}},
                importers),
            true);
    EXPECT_EQ(line.waitingOperations().size(), PBLoadImageManager::mostWaiting);
    EXPECT_EQ(line.waitingOperations().front()->scale(), 1.0);
    line.finish();
    EXPECT_EQ(line.operationCount(), 0U);
    show(1);
    EXPECT_EQ(line.operationCount(), 0U);
}

TEST_F(LoadLineTest, AStormOfStepsEndsWithTheFocusReadyAndNothingLeftBehind) {
    std::mt19937 random(11);
    const auto any = [&](int below) { return static_cast<int>(random() % unsigned(below)); };
    int focus = 0;
    for (int step = 0; step < 3000; ++step) {
        disk.setOpen(any(4) != 0);
        const int before = focus;
        focus = any(8) == 0 ? any(40) : std::clamp(focus + any(3) - 1, 0, 39);
        if (focus != before) clearUnFitInImages(*items[std::size_t(before)], 10);
        if (focus == 13) continue;
        show(focus);
        if (any(3) == 0) requests.requestForZoom(image(focus), 1.0, display);
        if (any(50) == 0) {
            auto& item = items[std::size_t(any(40))];
            auto changed = itemOf(int(item->fileId()), step);
            buffer.itemWasReplaced(item, changed);
            item = changed;
        }
        now += std::chrono::milliseconds(any(300));
        QCoreApplication::processEvents();
    }
    now += std::chrono::seconds(1);
    show(20);
    ASSERT_TRUE(finishes());
    for (int index = 20; index <= 27; ++index)
        EXPECT_TRUE(requests.imageForZoom(*items[std::size_t(index)], 0.25).isMatched) << index;
    EXPECT_EQ(disk.mostAtATime(), 1);
    const auto hasPicture = [](const auto& item) { return fitInByteCount(*item, 10) > 0; };
    EXPECT_LE(std::ranges::count_if(items, hasPicture), 15);
}
