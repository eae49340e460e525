#include "e2e/Program.h"

namespace {

using e2e::State;

class ToolbarRunTest : public e2e::ProgramTest {};

TEST_F(ToolbarRunTest, everyKeyInTheSearchFieldNarrowsAndEscapeGoesBackToAll) {
    makePictures(u"sea"_s, numbered(u"a"_s, 30));
    makePictures(u"woods"_s, {u"birch.png"_s, u"oak.png"_s});
    start();
    EXPECT_TRUE(shows(32));
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"a1"_s);
    EXPECT_TRUE(shows(10));
    desktop.type(u"7"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(shows(32));
    // The keys are the browser's again.
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(u"a00.png"_s));

    desktop.key(u"ctrl+f"_s);
    desktop.type(u"OAK"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"Return"_s);
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(u"oak.png"_s));
    quit();
}

TEST_F(ToolbarRunTest, filterAndRecursionAreShownWhereTheyAreChosen) {
    makePictures(u"."_s, {u"top.png"_s});
    makePictures(u"sea"_s, numbered(u"a"_s, 3));
    start();
    EXPECT_TRUE(shows(4));
    clickPlace(u"Show only flagged photographs"_s);
    EXPECT_TRUE(shows(0));
    const auto filter = [](const State& s) { return s.json()[u"filter"_s].toInt(); };
    EXPECT_TRUE(waitFor([&](const State& s) { return filter(s) == 1; }));
    clickPlace(u"Show only photographs with stars"_s);
    EXPECT_TRUE(waitFor([&](const State& s) { return filter(s) == 3; }));
    clickPlace(u"Show only flagged photographs"_s);
    clickPlace(u"Show only photographs with stars"_s);
    EXPECT_TRUE(shows(4));

    clickPlace(u"subFolder"_s);
    EXPECT_TRUE(shows(1));
    clickPlace(u"subFolder"_s);
    EXPECT_TRUE(shows(4));
    quit();
}

} // namespace
