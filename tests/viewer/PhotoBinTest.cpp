#include "viewer/bin/PhotoBin.h"

#include "support/Support.h"
#include "viewer/bin/PhotoBinHost.h"
#include "viewer/bin/StripGeometry.h"

namespace {

TEST(StripGeometryTest, anyCellCanStandInTheMiddleAndOnlyThere) {
    for (const double height : {40.0, 61.0, 92.0}) {
        const StripGeometry strip(height, 1001, 7);
        const double last = strip.contentWidth() - 1001;
        EXPECT_EQ(strip.positionOfIndex(0), 0);
        EXPECT_EQ(strip.positionOfIndex(6), last);
        for (std::int64_t index = 0; index < 7; ++index) {
            const double position = strip.positionOfIndex(index);
            const double half = (height + 2) / 2;
            EXPECT_EQ(strip.rectOfIndex(index).center().x() - position, 500.5);
            for (const double off : {-half + 0.1, 0.0, half - 0.1}) {
                EXPECT_EQ(strip.roundPosition(position + off), position);
                EXPECT_EQ(strip.indexAtPosition(position + off), index);
            }
        }
        EXPECT_EQ(strip.indexAtPosition(-500), 0);
        EXPECT_EQ(strip.indexAtPosition(last + 500), 6);
        EXPECT_EQ(strip.indexAtPoint(strip.rectOfIndex(3).center()), 3);
        EXPECT_EQ(strip.indexAtPoint(strip.rectOfIndex(3).topRight() + QPointF(1, 5)), -1);
        EXPECT_EQ(strip.indexAtPoint({strip.contentOffset() - 1, 5}), -1);
        EXPECT_EQ(strip.indexAtPoint(strip.rectOfIndex(7).center()), -1);
    }
    EXPECT_EQ(StripGeometry(60, 1001, 0).indexAtPosition(0), -1);
    EXPECT_EQ(StripGeometry(60, 1001, 0).indexAtPoint({500, 5}), -1);
}

TEST(StripGeometryTest, visibleCellsAreThoseOnShowAndNeverMoreThanFortyPointCells) {
    using Row = std::tuple<double, double, std::int64_t, std::pair<std::int64_t, std::int64_t>>;
    // Cells of 60 begin at 370; each takes 62. The part on show is 800 wide.
    for (const auto& [height, x, count, visible] : {
             Row(60, 0, 100, {0, 6}),
             Row(60, 620, 100, {4, 16}),
             Row(60, 371, 100, {0, 12}),
             Row(60, 431, 100, {1, 13}), // the first has just gone
             Row(60, 0, 3, {0, 2}),
             Row(60, 0, 0, {0, -1}),
             // Cells of 20: 36 would be on show, of which 19 are taken from the middle.
             Row(20, 2200, 1000, {91, 109}),
         }) {
        const StripGeometry strip(height, 800, count);
        const auto [first, last] = strip.calcVisibleForRect({x, 0, 800, height});
        EXPECT_EQ(std::pair(first, last), visible) << height << ' ' << x << ' ' << count;
    }
}

/// Notes what the bin asks for, in order: "c" scrolled, "j" jumped, "s" shown, "S" selection told,
/// "p" preloaded, "l" left the focus, "r" replaced.
struct PhotoBinTest : ::testing::Test, PhotoBinHost, PhotoBinStrip {
    void showImageAtIndex(std::int64_t index) override { note(u's', index); }
    void selectDidChange() override { log += u'S'; }
    void tryPreloadNextOrPrevImage() override { log += u'p'; }
    void focusDidLeave(PBImageFileItem&) override { log += u'l'; }
    void focusWasReplaced(
        const std::shared_ptr<PBImageFileItem>&, const std::shared_ptr<PBImageFileItem>&) override {
        log += u'r';
    }
    void listDidReload() override {}
    void stopProgress() override {}
    void keyDown(QKeyEvent&) override {}
    void popUpContextMenu(const QPoint&) override {}
    bool isSlideShowMode() const override { return false; }
    QString filePath(const PBImageFileItem&) const override { return {}; }
    void scrollIndexToCenter(std::int64_t index, bool animation) override {
        note(animation ? u'c' : u'j', index);
    }
    void focusDidChange() override { strip = bin.focusIndex(); }

    void note(QChar what, std::int64_t index) { log += what + QString::number(index); }
    QString take() { return std::exchange(log, {}); }
    static std::shared_ptr<PBImageFileItem> item(qint64 id) {
        return PBImageFileItem::imageFileItemWithId(id, 1, QString::number(id), 1, 1);
    }
    /// The selected ones among all, as digits.
    QString selected() const {
        QString ids;
        for (const auto& each : items)
            if (each->isSelected()) ids += each->fileName();
        return ids;
    }
    /// What another list has it ask for, then its focus, then what is selected.
    QString reloaded(const PBImageFileList& list) {
        PBImageFileArray array;
        for (const auto& each : list)
            array.push_back(each);
        bin.setFileItemArray(array);
        bin.refreshFocusIndex();
        return take() + u" @%1 "_s.arg(bin.focusIndex()) + selected();
    }
    QString begin(qint64 count) {
        for (qint64 id = 0; id < count; ++id)
            items.push_back(item(id));
        return reloaded(items);
    }
    bool cannotMove() const {
        return !(bin.canPrev() || bin.canNext() || bin.canFirst() || bin.canLast());
    }

    PBImageFileList items;
    PhotoBin bin{*this, *this};
    QString log;
    std::int64_t strip = -1; ///< what it was told
};

TEST_F(PhotoBinTest, everyMoveScrollsThenChangesTheFocusAndTellsInOneOrder) {
    EXPECT_EQ(begin(120), u"s0S @0 0");
    EXPECT_FALSE(bin.canPrev() || bin.canFirst());
    bin.navigateToPreviousImage();
    EXPECT_EQ(take(), QString()) << "nothing before the first";
    bin.navigateToNextImage();
    EXPECT_EQ(take(), u"c1ls1Sp");
    EXPECT_EQ(selected(), u"1");
    EXPECT_EQ(strip, 1) << "screen readers hear of it there";
    bin.navigateToLastImage();
    EXPECT_EQ(take(), u"j119ls119Sp") << "too far for a motion";
    EXPECT_FALSE(bin.canNext() || bin.canLast());
    bin.goTo(70);
    EXPECT_EQ(take(), u"c70ls70Sp");
    bin.navigateToLastImage();
    EXPECT_EQ(take(), u"c119ls119Sp") << "49 cells";
    bin.goTo(50);
    bin.goTo(50);
    bin.goTo(-1);
    EXPECT_EQ(take(), u"c50ls50Sp");
    bin.navigateToFirstImage();
    EXPECT_EQ(take(), u"j0ls0Sp") << "50 cells";
    bin.stoppedAt(3, -1);
    EXPECT_EQ(take(), u"ls3Sp") << "it stands in the middle already";
    EXPECT_EQ(selected(), u"3");
    EXPECT_EQ(strip, 3);

    const auto ahead = [&](std::int64_t count) {
        const auto told = [](const IndexedImage& each) {
            EXPECT_EQ(each.item->fileId(), each.index);
            return each.item->fileName();
        };
        return support::listed(bin.preloadImageFileItemWithCount(count), told).join(u' ');
    };
    EXPECT_EQ(ahead(2), u"1 2");
    EXPECT_EQ(ahead(7), u"0 1 2");
    bin.setLoadDirection(0);
    EXPECT_EQ(ahead(2), u"4 5");
    bin.goTo(2);
    EXPECT_EQ(ahead(2), u"0 1");
    bin.navigateToFirstImage();
    EXPECT_EQ(ahead(2), u"1 2") << "back from the end";
    bin.navigateToLastImage();
    EXPECT_EQ(ahead(2), u"117 118");
}

TEST_F(PhotoBinTest, aNewListKeepsThePhotographThatIsShownWhereverItIs) {
    begin(6);
    bin.goTo(2);
    (void)take();

    EXPECT_EQ(reloaded({items[5], items[4], items[3], items[2]}), u" @3 2") << "not shown anew";
    // Gone: the one that took its index, or the last.
    EXPECT_EQ(reloaded({items[5], items[4], items[3], items[1]}), u"ls3S @3 1");
    EXPECT_EQ(reloaded({items[5], items[4]}), u"ls1S @1 4");
    // A scan made other items of the same photographs: what was loaded is handed on.
    const PBImageFileList again{item(4), item(5)};
    EXPECT_EQ(reloaded(again), u"rS @0 ");
    EXPECT_EQ(bin.focusImageFileItem(), again[0]);
    EXPECT_TRUE(again[0]->isSelected());
    // Its file was written anew: nothing that was loaded is of use.
    const auto anew = PBImageFileItem::imageFileItemWithId(9, 1, u"4"_s, 1, 1);
    EXPECT_EQ(reloaded({item(5), item(6), anew}), u"ls2S @2 ");
    EXPECT_TRUE(anew->isSelected());

    EXPECT_EQ(reloaded({}), u"ls-1S @-1 ");
    EXPECT_TRUE(cannotMove());
    EXPECT_EQ(reloaded({}), u" @-1 ");
    EXPECT_EQ(reloaded({items[0]}), u"s0S @0 0");
    EXPECT_TRUE(cannotMove());
}

} // namespace
