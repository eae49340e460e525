#include "e2e/Program.h"

namespace {

using e2e::State;

class ToolbarRunTest : public e2e::ProgramTest {};

TEST_F(ToolbarRunTest, everyKeyInTheSearchFieldNarrowsAndEscapeGoesBackToAll) {
    makePictures(QStringLiteral("sea"), numbered(QStringLiteral("a"), 30));
    makePictures(QStringLiteral("woods"), {QStringLiteral("birch.png"), QStringLiteral("oak.png")});
    start();
    EXPECT_TRUE(shows(32));
    desktop.key(QStringLiteral("ctrl+f"));
    desktop.type(QStringLiteral("a1"));
    EXPECT_TRUE(shows(10));
    desktop.type(QStringLiteral("7"));
    EXPECT_TRUE(shows(1));
    desktop.key(QStringLiteral("Escape"));
    EXPECT_TRUE(shows(32));
    // The keys are the browser's again.
    desktop.key(QStringLiteral("Home"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("a00.png")));

    desktop.key(QStringLiteral("ctrl+f"));
    desktop.type(QStringLiteral("OAK"));
    EXPECT_TRUE(shows(1));
    desktop.key(QStringLiteral("Return"));
    desktop.key(QStringLiteral("Home"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("oak.png")));
    quit();
}

TEST_F(ToolbarRunTest, filterAndRecursionAreShownWhereTheyAreChosen) {
    makePictures(QStringLiteral("."), {QStringLiteral("top.png")});
    makePictures(QStringLiteral("sea"), numbered(QStringLiteral("a"), 3));
    start();
    EXPECT_TRUE(shows(4));
    clickPlace(QStringLiteral("Show only flagged photographs"));
    EXPECT_TRUE(shows(0));
    const auto filter = [](const State& s) { return s.json()[QStringLiteral("filter")].toInt(); };
    EXPECT_TRUE(waitFor([&](const State& s) { return filter(s) == 1; }));
    clickPlace(QStringLiteral("Show only photographs with stars"));
    EXPECT_TRUE(waitFor([&](const State& s) { return filter(s) == 3; }));
    clickPlace(QStringLiteral("Show only flagged photographs"));
    clickPlace(QStringLiteral("Show only photographs with stars"));
    EXPECT_TRUE(shows(4));

    clickPlace(QStringLiteral("subFolder"));
    EXPECT_TRUE(shows(1));
    clickPlace(QStringLiteral("subFolder"));
    EXPECT_TRUE(shows(4));
    quit();
}

} // namespace
