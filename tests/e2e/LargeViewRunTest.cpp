#include "e2e/Program.h"
#include "formatpictures/FormatPictures.h"

#include <QJsonArray>

namespace {

using e2e::State;

class LargeViewRunTest : public e2e::ProgramTest {
protected:
    using Check = std::function<bool(const State& s)>;

    /// Waits until the photograph at the index is shown sharply, nothing moves, and the rest holds.
    testing::AssertionResult waitForIndex(int index, const Check& check = {}) {
        return waitFor([&](const State& s) {
            return s.isSharp() && s.large(u"index"_s) == index && (!check || check(s));
        });
    }
    testing::AssertionResult waitForIndex(int index, const e2e::Values& values) {
        return waitForIndex(index, [&](const State& s) { return s.has(values); });
    }
    /// Opens an image that is on show; answers its index in its group.
    int open(const QString& name) {
        desktop.doubleClick(item(name).picture.center());
        EXPECT_TRUE(becomes({{u"large.image"_s, name}}));
        return state().large(u"index"_s).toInt(-1);
    }
    static QRect rectOf(const State& s, const QString& name) { return e2e::rectOf(s.large(name)); }
    static bool fillsView(const State& s) {
        return rectOf(s, u"picture"_s).contains(rectOf(s, u"rect"_s));
    }
};

TEST_F(LargeViewRunTest, stepsThroughAGroupAndComesBackToWhereTheBrowserWas) {
    startWithPhotographs();
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"End"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() > 0; }));
    const QString name = state().items().at(3).name;
    select(name);
    ASSERT_TRUE(rests());
    const double scroll = state().scroll();

    const int index = open(name);
    ASSERT_TRUE(waitForIndex(index, {{u"large.fitIn"_s, true}, {u"browser.selectCount"_s, 1}}));
    const int count = state().large(u"count"_s).toInt();
    desktop.key(u"Escape"_s);
    const QJsonValue none = QJsonValue::Undefined;
    EXPECT_TRUE(
        rests({{u"large"_s, none}, {u"browser.scroll"_s, scroll}, {u"browser.focus"_s, true}}));
    EXPECT_TRUE(waitForSelection(name));
    desktop.key(u"Return"_s);
    ASSERT_TRUE(waitForIndex(index));

    // As fast as the keys come, to both ends and no further.
    for (int step = 0; step < count + 2; ++step)
        desktop.key(u"Right"_s);
    EXPECT_TRUE(waitForIndex(count - 1));
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForIndex(0));
    const auto cells = state().large(u"strip"_s)[u"entries"_s].toArray();
    ASSERT_GT(cells.size(), 3);
    desktop.click(e2e::rectOf(cells.at(3)[u"rect"_s]).center());
    EXPECT_TRUE(waitForIndex(3, [](const State& s) {
        // What is shown stands in the middle of the strip.
        const QJsonValue strip = s.large(u"strip"_s);
        const QJsonValue cell = strip[u"entries"_s][3 - strip[u"first"_s].toInt()];
        const QPoint way =
            e2e::rectOf(cell[u"rect"_s]).center() - rectOf(s, u"strip.rect"_s).center();
        return std::abs(way.x()) <= 2;
    }));
    desktop.key(u"End"_s);
    EXPECT_TRUE(waitForIndex(count - 1));
    const QString last = state().large(u"image"_s).toString();
    desktop.key(u"Escape"_s);
    // The one that was shown last is the selected one, and in sight.
    EXPECT_TRUE(waitForSelection(last));
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.isAtRest() && !s.item(last).name.isEmpty() && s.browser(u"focus"_s).toBool();
    }));
}

TEST_F(LargeViewRunTest, turnsZoomsPansAndFollowsTheWindow) {
    startWithPhotographs();
    const int index = open(state().items().at(0).name);
    ASSERT_TRUE(waitForIndex(index));
    const double angle = state().large(u"angle"_s).toDouble();
    desktop.key(u"ctrl+r"_s);
    EXPECT_TRUE(waitForIndex(index, {{u"large.angle"_s, angle == 180 ? -90 : angle + 90}}));
    desktop.key(u"ctrl+shift+r"_s);
    EXPECT_TRUE(waitForIndex(index, {{u"large.angle"_s, angle}}));
    const QRect area = rectOf(state(), u"rect"_s);
    desktop.wheel(area.topLeft() + QPoint(8, 8), 6, u"ctrl"_s);
    ASSERT_TRUE(waitForIndex(index, [](const State& s) {
        return fillsView(s) && s.large(u"painted"_s) == u"original"_s;
    }));
    // To the corner, where the picture stops at that of the view.
    const QPoint middle = area.center();
    const auto isThere = [](const State& s) {
        return fillsView(s) && rectOf(s, u"picture"_s).topLeft() == rectOf(s, u"rect"_s).topLeft();
    };
    for (int drags = 0; drags < 40 && !isThere(state()); ++drags) {
        desktop.drag(middle - QPoint(200, 200), middle + QPoint(200, 200));
        desktop.release();
    }
    EXPECT_TRUE(waitForIndex(index, isThere));
    desktop.key(u"x"_s);
    ASSERT_TRUE(waitForIndex(index, {{u"large.fitIn"_s, true}}));

    // Escape leaves the large view first, then the whole screen.
    desktop.key(u"F11"_s);
    EXPECT_TRUE(waitForIndex(index, [](const State& s) {
        return s.window() == e2e::Desktop::screen && s.large(u"fitIn"_s).toBool();
    }));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.large(u"index"_s).isUndefined() && s.window() == e2e::Desktop::screen;
    }));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([](const State& s) { return s.window().height() <= 800; }));
}

TEST_F(LargeViewRunTest, followsFilesThatGoAndChangeAndPlaysAnimations) {
    for (const QString& name : {u"a.png"_s, u"b.png"_s, u"c.png"_s})
        support::writePicture(photo(name), {400, 300});
    support::writeFile(photo(u"d.gif"_s), formatpictures::file("frames.gif"));
    keep(u"SlideshowInterval"_s, 5);
    start();
    ASSERT_EQ(open(u"b.png"_s), 1);
    ASSERT_TRUE(waitForIndex(1));

    support::writePicture(photo(u"b.png"_s), {200, 500});
    EXPECT_TRUE(waitForIndex(1, [](const State& s) {
        const QSize picture = rectOf(s, u"picture"_s).size();
        return s.large(u"image"_s) == u"b.png"_s && picture.height() > 2 * picture.width();
    }));
    ASSERT_TRUE(QFile::remove(photo(u"b.png"_s)));
    EXPECT_TRUE(waitForIndex(1, {{u"large.image"_s, u"c.png"_s}, {u"large.count"_s, 3}}));
    support::writePicture(photo(u"bb.png"_s), {300, 300});
    EXPECT_TRUE(waitForIndex(2, {{u"large.image"_s, u"c.png"_s}, {u"large.count"_s, 4}}))
        << "what is shown stays";

    desktop.key(u"Right"_s);
    const auto plays = [this] {
        int frames = 0;
        int frame = 0;
        return waitFor([&](const State& s) {
            const int now = s.large(u"frame"_s).toInt();
            frames += std::exchange(frame, now) != now ? 1 : 0;
            return s.large(u"image"_s) == u"d.gif"_s && frames >= 3;
        });
    };
    EXPECT_TRUE(plays());
    desktop.key(u"F5"_s);
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"playing"_s}}));
    waitForFocus(u"PBSlideshowContainerView"_s);
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"stopped"_s}}));
    EXPECT_TRUE(plays()) << "on, behind a show that ended where it began";
    for (const QString& name : {u"a.png"_s, u"bb.png"_s, u"c.png"_s, u"d.gif"_s})
        ASSERT_TRUE(QFile::remove(photo(name)));
    EXPECT_TRUE(becomes({{u"large.count"_s, 0}}));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(becomes({{u"large"_s, QJsonValue::Undefined}}));
}

} // namespace
