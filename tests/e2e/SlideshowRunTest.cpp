#include "e2e/Program.h"
#include "support/ToldDesktop.h"

namespace {

using e2e::State;

class SlideshowRunTest : public e2e::ProgramTest {
protected:
    static QJsonValue show(const State& s, const QString& name) {
        return s.json()[u"slideshow"_s].toObject()[name];
    }
    testing::AssertionResult waitForShow(const QString& state, int index) {
        return waitFor([=](const State& s) {
            return show(s, u"state"_s) == state && show(s, u"index"_s).toInt(-1) == index;
        });
    }
};

TEST_F(SlideshowRunTest, playsPausesStepsAndLeavesTheWindowAsItWas) {
    support::ToldDesktop services;
    if (services.isRunning()) desktop.setBus(services.address());
    paintPhotographs();
    keep(u"SlideshowInterval"_s, 5); // a busy machine looks before the next one comes
    start();
    const QString name = state().items().at(1).name;
    click(name);
    ASSERT_TRUE(waitForSelection(name));
    const State before = state();

    desktop.key(u"F5"_s);
    ASSERT_TRUE(waitForShow(u"playing"_s, 1));
    ASSERT_TRUE(waitFor([](const State& s) { return show(s, u"fullScreen"_s).toBool(); }));
    EXPECT_EQ(show(state(), u"name"_s), name);
    EXPECT_FALSE(show(state(), u"engine"_s).toString().isEmpty());
    EXPECT_TRUE(state().json()[u"largeView"_s].toBool());
    if (services.isRunning()) {
        EXPECT_EQ(services.toldCalls(1), u"portal Inhibit 8"_s);
    }
    waitForFocus(u"PBSlideshowContainerView"_s);
    for (int seconds = 5; seconds > 1; --seconds)
        desktop.key(u"minus"_s);
    const int count = state().large(u"count"_s).toInt();
    ASSERT_GT(count, 7);
    ASSERT_TRUE(waitFor([](const State& s) { return show(s, u"index"_s).toInt() >= 4; }));

    desktop.key(u"space"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return show(s, u"state"_s) == u"paused"_s; }));
    if (services.isRunning()) {
        EXPECT_EQ(services.toldCalls(1), u"portal Close /request/7"_s);
    }
    const int paused = show(state(), u"index"_s).toInt();
    desktop.key(u"Left"_s);
    ASSERT_TRUE(waitForShow(u"paused"_s, paused - 1));
    const QString last = show(state(), u"name"_s).toString();
    EXPECT_NE(last, name);
    EXPECT_TRUE(waitFor([](const State& s) { return !show(s, u"controls"_s).toBool(); }));

    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return show(s, u"state"_s) == u"stopped"_s && s.large(u"image"_s) == last &&
               s.large(u"index"_s) == paused - 1 && s.json()[u"focus"_s] == u"PBThumbnailView"_s &&
               s.isAtRest();
    }));
    EXPECT_EQ(state().window(), before.window());
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.json()[u"largeView"_s] == false && s.selected() == last && s.isAtRest();
    }));
    EXPECT_EQ(state().json()[u"splits"_s], before.json()[u"splits"_s]);
}

TEST_F(SlideshowRunTest, withNothingSelectedItBeginsWithTheFirstOnShow) {
    paintPhotographs();
    keep(u"SlideshowInterval"_s, 5);
    start();
    waitForFocus(u"PBImageBrowserView"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && !s.items().isEmpty(); }));
    desktop.wheel(state().items().first().picture.center(), -10);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    const QString first = state().items().first().name;
    ASSERT_TRUE(waitForSelection({}));
    desktop.key(u"F5"_s);
    ASSERT_TRUE(waitFor([&](const State& s) {
        return show(s, u"state"_s) == u"playing"_s && show(s, u"name"_s) == first;
    }));
    waitForFocus(u"PBSlideshowContainerView"_s);
    desktop.key(u"q"_s);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return show(s, u"state"_s) == u"stopped"_s && s.large(u"image"_s) == first;
    }));
}

} // namespace
