#include "e2e/Program.h"

using e2e::State;

namespace {

class MarksRunTest : public e2e::ProgramTest {
protected:
    /// Stars and flag of an image on show, as "4+" for a flagged one.
    auto waitForMarks(const QString& name, const QString& marks) {
        return waitFor([=](const State& s) { return s.item(name).marks == marks; });
    }
    /// The same of the photograph in the large view.
    auto waitForLargeMarks(int stars, bool isFlagged) {
        return becomes({{u"large.stars"_s, stars}, {u"large.flagged"_s, isFlagged}});
    }
    /// As they stand in the panel.
    auto waitForTags(const QString& tags) {
        return waitForControl(u"PBTagTokenField"_s, u"text"_s, tags);
    }
    /// Adds tags in the panel; a comma ends one, Return the edit.
    void typeTags(const QString& tags) {
        clickPlace(u"PBTagTokenField"_s);
        waitForFocus(u"TagEditor"_s);
        desktop.type(tags);
        desktop.key(u"Return"_s);
    }
    /// The third of its stars.
    void clickPanelStars() { clickPlace(u"PBStarRatingCell"_s); }
};

TEST_F(MarksRunTest, marksFromKeysAndToolbarFollowFilterUndoAndTheNextStart) {
    startWithPhotographs();
    const QList<e2e::Item> items = state().items();
    ASSERT_GE(items.size(), 3);
    const QString first = items[0].name;
    const QString second = items[1].name;
    click(first);
    desktop.key(u"4"_s);
    EXPECT_TRUE(waitForMarks(first, u"4"_s));
    desktop.key(u"space"_s);
    EXPECT_TRUE(waitForMarks(first, u"4+"_s));
    click(second);
    clickPlace(u"flag"_s);
    EXPECT_TRUE(waitForMarks(second, u"0+"_s));
    clickPlace(u"rating"_s);
    chooseInMenu({u"5 Stars"_s});
    EXPECT_TRUE(waitForMarks(second, u"5+"_s));

    // What loses its stars leaves a display of rated ones with the key, and comes back.
    choose({u"View"_s, u"Filter"_s, u"Rated Only"_s});
    EXPECT_TRUE(shows(2));
    click(first);
    desktop.key(u"0"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(shows(2));
    EXPECT_TRUE(waitForMarks(first, u"4+"_s));
    desktop.key(u"ctrl+shift+z"_s);
    EXPECT_TRUE(shows(1));
    choose({u"View"_s, u"Filter"_s, u"Rated Only"_s});
    EXPECT_TRUE(shows(92));
    choose({u"Edit"_s, u"Undo Rating of 1 Photograph"_s});
    EXPECT_TRUE(waitForMarks(first, u"4+"_s)) << "over another tree";

    quit();
    startAgain();
    EXPECT_TRUE(waitForMarks(first, u"4+"_s));
    EXPECT_TRUE(waitForMarks(second, u"5+"_s));
}

TEST_F(MarksRunTest, thePanelMarksInBothViewsAndForTheNextStart) {
    const QString a = u"a.png"_s;
    const QString b = u"b.png"_s;
    support::writePicture(photo(a), {400, 300});
    support::writePicture(photo(b), {300, 400});
    start();
    select(a);
    clickPlace(u"infoFlag"_s);
    EXPECT_TRUE(waitForMarks(a, u"0+"_s));
    clickPanelStars();
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));
    typeTags(u"sea, lake"_s);
    EXPECT_TRUE(waitForTags(u"sea, lake"_s));
    click(b);
    EXPECT_TRUE(waitForTags({}));

    desktop.doubleClick(item(a).picture.center());
    ASSERT_TRUE(becomes({{u"large.image"_s, a}}));
    ASSERT_TRUE(waitFor([](const State& s) {
        return s.has({{u"focus"_s, u"PBThumbnailView"_s}}) ||
               s.has({{u"focus"_s, u"PBImageView"_s}});
    }));
    desktop.key(u"5"_s);
    EXPECT_TRUE(waitForLargeMarks(5, true));
    clickPlace(u"imageFlag"_s);
    EXPECT_TRUE(waitForLargeMarks(5, false));
    clickPlace(u"imageRating"_s);
    chooseInMenu({u"1 Star"_s});
    EXPECT_TRUE(waitForLargeMarks(1, false));
    choose({u"View"_s, u"Panes"_s, u"Show Information"_s});
    EXPECT_TRUE(waitForTags(u"sea, lake"_s));
    ASSERT_TRUE(rests());
    clickPanelStars();
    EXPECT_TRUE(waitForLargeMarks(3, false));
    clickPlace(u"infoFlag"_s);
    EXPECT_TRUE(waitForLargeMarks(3, true));
    typeTags(u"city"_s);
    EXPECT_TRUE(waitForTags(u"sea, lake, city"_s));
    clickPlace(u"thumbnails"_s);
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));

    quit();
    startAgain();
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));
    click(a);
    EXPECT_TRUE(waitForTags(u"sea, lake, city"_s));
}

} // namespace
