#include "e2e/Program.h"
#include "support/ToldDesktop.h"

namespace {

using e2e::State;

class SlideshowRunTest : public e2e::ProgramTest {
protected:
    [[nodiscard]] QString shownName() const {
        return state().value(u"slideshow.name"_s).toString();
    }
    testing::AssertionResult waitForShow(const QString& state, int index) {
        return becomes({{u"slideshow.state"_s, state}, {u"slideshow.index"_s, index}});
    }
};

TEST_F(SlideshowRunTest, playsPausesStepsAndLeavesTheWindowAsItWas) {
    support::ToldDesktop services;
    if (services.isRunning()) desktop.setBus(services.address());
    paintPhotographs();
    keep(u"SlideshowInterval"_s, 5); // a busy machine looks before the next one comes
    start();
    const QString name = state().items().at(1).name;
    select(name);
    const State before = state();

    desktop.key(u"F5"_s);
    ASSERT_TRUE(waitForShow(u"playing"_s, 1));
    ASSERT_TRUE(becomes({{u"slideshow.fullScreen"_s, true}}));
    EXPECT_EQ(shownName(), name);
    EXPECT_FALSE(state().value(u"slideshow.engine"_s).toString().isEmpty());
    EXPECT_TRUE(state().value(u"largeView"_s).toBool());
    if (services.isRunning()) {
        EXPECT_EQ(services.toldCalls(1), u"portal Inhibit 8"_s);
    }
    waitForFocus(u"PBSlideshowContainerView"_s);
    for (int seconds = 5; seconds > 1; --seconds)
        desktop.key(u"minus"_s);
    const int count = state().large(u"count"_s).toInt();
    ASSERT_GT(count, 7);
    ASSERT_TRUE(waitFor([](const State& s) { return s.value(u"slideshow.index"_s).toInt() >= 4; }));

    desktop.key(u"space"_s);
    ASSERT_TRUE(becomes({{u"slideshow.state"_s, u"paused"_s}}));
    if (services.isRunning()) {
        EXPECT_EQ(services.toldCalls(1), u"portal Close /request/7"_s);
    }
    const int paused = state().value(u"slideshow.index"_s).toInt();
    desktop.key(u"Left"_s);
    ASSERT_TRUE(waitForShow(u"paused"_s, paused - 1));
    const QString last = shownName();
    EXPECT_NE(last, name);
    EXPECT_TRUE(becomes({{u"slideshow.controls"_s, false}}));

    desktop.key(u"Escape"_s);
    EXPECT_TRUE(rests(
        {{u"slideshow.state"_s, u"stopped"_s},
         {u"large.image"_s, last},
         {u"large.index"_s, paused - 1},
         {u"focus"_s, u"PBThumbnailView"_s}}));
    EXPECT_EQ(state().window(), before.window());
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.isAtRest() && s.has({{u"largeView"_s, false}}) && s.selected() == last;
    }));
    EXPECT_EQ(state().value(u"splits"_s), before.value(u"splits"_s));
}

TEST_F(SlideshowRunTest, withNothingSelectedItBeginsWithTheFirstOnShow) {
    paintPhotographs();
    keep(u"SlideshowInterval"_s, 5);
    start();
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.wheel(state().items().first().picture.center(), -10);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    const QString first = state().items().first().name;
    ASSERT_TRUE(waitForSelection({}));
    desktop.key(u"F5"_s);
    ASSERT_TRUE(becomes({{u"slideshow.state"_s, u"playing"_s}, {u"slideshow.name"_s, first}}));
    waitForFocus(u"PBSlideshowContainerView"_s);
    desktop.key(u"q"_s);
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"stopped"_s}, {u"large.image"_s, first}}));
}

} // namespace
