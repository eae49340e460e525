#include "e2e/Program.h"

#include <QJsonArray>

using e2e::State;

namespace {

class MarksRunTest : public e2e::ProgramTest {
protected:
    /// Stars and flag of an image on show, as "4+" for a flagged one; empty for one that is not.
    static QString marksOf(const State& state, const QString& name) {
        for (const QJsonValue& group : state.browser(u"groups"_s).toArray())
            for (const QJsonValue& item : group[u"items"_s].toArray())
                if (item[u"name"_s].toString() == name)
                    return QString::number(item[u"stars"_s].toInt()) +
                           (item[u"flagged"_s].toBool() ? u"+"_s : QString());
        return {};
    }
    auto waitForMarks(const QString& name, const QString& marks) {
        return waitFor([=](const State& s) { return marksOf(s, name) == marks; });
    }
    /// The same of the photograph in the large view.
    auto waitForLargeMarks(int stars, bool isFlagged) {
        return waitFor([=](const State& s) {
            return s.large(u"stars"_s) == stars && s.large(u"flagged"_s) == isFlagged;
        });
    }
    /// As they stand in the panel.
    auto waitForTags(const QString& tags) {
        return waitFor([=](const State& s) {
            const auto field = s.control(u"PBTagTokenField"_s);
            return field && (*field)[u"text"_s] == tags;
        });
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

TEST_F(MarksRunTest, marksFromKeysMenuAndToolbarFollowFilterUndoAndTheNextStart) {
    paintPhotographs();
    start();
    const QList<e2e::Item> items = state().items();
    ASSERT_GE(items.size(), 3);
    const QString first = items[0].name;
    const QString second = items[1].name;
    click(first);
    desktop.key(u"4"_s);
    EXPECT_TRUE(waitForMarks(first, u"4"_s));
    desktop.key(u"ctrl+3"_s);
    EXPECT_TRUE(waitForMarks(first, u"3"_s));
    choose({u"Image"_s, u"Rating"_s, u"2 Stars"_s});
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    desktop.key(u"space"_s);
    EXPECT_TRUE(waitForMarks(first, u"2+"_s));
    clickPlace(u"flag"_s);
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
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
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    desktop.key(u"ctrl+shift+z"_s);
    EXPECT_TRUE(shows(1));
    choose({u"View"_s, u"Filter"_s, u"Rated Only"_s});
    EXPECT_TRUE(shows(92));
    choose({u"Edit"_s, u"Undo Rating of 1 Photograph"_s});
    EXPECT_TRUE(waitForMarks(first, u"2"_s)) << "over another tree";

    quit();
    startAgain();
    EXPECT_TRUE(waitFor([&](const State& s) { return s.isAtRest(); }));
    EXPECT_TRUE(waitForMarks(first, u"2"_s));
    EXPECT_TRUE(waitForMarks(second, u"5+"_s));
}

TEST_F(MarksRunTest, thePanelMarksInBothViewsAndARenameToATakenNameLosesNothing) {
    const QString a = u"a.png"_s;
    const QString b = u"b.png"_s;
    support::writePicture(photo(a), {400, 300});
    support::writePicture(photo(b), {300, 400});
    const QByteArray pictures[] = {support::readFile(photo(a)), support::readFile(photo(b))};
    start();
    click(a);
    ASSERT_TRUE(waitForSelection(a));
    clickPlace(u"infoFlag"_s);
    EXPECT_TRUE(waitForMarks(a, u"0+"_s));
    clickPanelStars();
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));
    typeTags(u"sea, lake"_s);
    EXPECT_TRUE(waitForTags(u"sea, lake"_s));
    click(b);
    EXPECT_TRUE(waitForTags({}));

    desktop.doubleClick(item(a).picture.center());
    ASSERT_TRUE(waitFor([&](const State& s) { return s.large(u"image"_s) == a; }));
    ASSERT_TRUE(waitFor([](const State& s) {
        const QString focus = s.json()[u"focus"_s].toString();
        return focus == u"PBThumbnailView" || focus == u"PBImageView";
    }));
    desktop.key(u"5"_s);
    EXPECT_TRUE(waitForLargeMarks(5, true));
    desktop.key(u"ctrl+4"_s);
    EXPECT_TRUE(waitForLargeMarks(4, true));
    choose({u"Image"_s, u"Rating"_s, u"2 Stars"_s});
    EXPECT_TRUE(waitForLargeMarks(2, true));
    clickPlace(u"imageFlag"_s);
    EXPECT_TRUE(waitForLargeMarks(2, false));
    clickPlace(u"imageRating"_s);
    chooseInMenu({u"1 Star"_s});
    EXPECT_TRUE(waitForLargeMarks(1, false));
    choose({u"View"_s, u"Panes"_s, u"Show Information"_s});
    EXPECT_TRUE(waitForTags(u"sea, lake"_s));
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest(); }));
    clickPanelStars();
    EXPECT_TRUE(waitForLargeMarks(3, false));
    clickPlace(u"infoFlag"_s);
    EXPECT_TRUE(waitForLargeMarks(3, true));
    typeTags(u"city"_s);
    EXPECT_TRUE(waitForTags(u"sea, lake, city"_s));
    clickPlace(u"thumbnails"_s);
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));

    // The name in the panel, which is taken.
    waitForFocus(u"PBImageBrowserView"_s);
    click(b);
    ASSERT_TRUE(waitForSelection(b));
    QRect name;
    ASSERT_TRUE(waitFor([&](const State& s) {
        name = s.place(u"Name: "_s + b, u"PBGeneralInfoView"_s);
        return !name.isEmpty();
    }));
    desktop.click({name.center().x(), name.bottom() - 10});
    waitForFocus(u"PBModalTextField"_s);
    desktop.type(u"a"_s); // in place of the name without its extension
    desktop.key(u"Return"_s);
    QRect button;
    ASSERT_TRUE(waitFor([&](const State& s) {
        button = s.button(u"OK"_s);
        return !button.isEmpty();
    }));
    desktop.click(button.center());
    waitForFocus(u"PBModalTextField"_s);
    EXPECT_TRUE(waitFor([&](const State& s) {
        const auto field = s.control(u"PBModalTextField"_s);
        return field && (*field)[u"text"_s] == a;
    })) << "what was typed can be mended";
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(shows(2));
    EXPECT_EQ(support::readFile(photo(a)), pictures[0]);
    EXPECT_EQ(support::readFile(photo(b)), pictures[1]);

    quit();
    startAgain();
    EXPECT_TRUE(waitForMarks(a, u"3+"_s));
    click(a);
    EXPECT_TRUE(waitForTags(u"sea, lake, city"_s));
}

} // namespace
