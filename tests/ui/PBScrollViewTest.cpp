#include "ui/PBScrollView.h"
#include "support/Support.h"
#include "ui/PBScroller.h"
#include "ui/PBThemes.h"
#include "ui/PBThumbnailScrollView.h"

#include <QApplication>
#include <QWheelEvent>

namespace {

struct LineScrollView final : PBScrollView {
    using PBScrollView::PBScrollView;
    double scrollLine() const override { return 50; }
};

struct Wheel {
    QPoint pixels;
    QPoint angle;
    Qt::ScrollPhase phase = Qt::NoScrollPhase;
};

void sendWheel(PBScrollView& view, const Wheel& wheel) {
    const QPointF middle = QRectF(view.viewport()->rect()).center();
    QWheelEvent event(
        middle, view.viewport()->mapToGlobal(middle), wheel.pixels, wheel.angle, Qt::NoButton,
        Qt::NoModifier, wheel.phase, false);
    QApplication::sendEvent(view.viewport(), &event);
}

struct PBScrollViewTest : ::testing::Test {
    PBScrollViewTest() {
        view.setClock([this] { return now; });
        view.resize(300, 400);
        view.show();
        view.setDocumentSize({280, 10000});
    }
    void finishMotion() {
        now += 1;
        view.motion().tick();
    }

    double now = 100;
    LineScrollView view;
};

TEST_F(PBScrollViewTest, keepsWholePositionsWithinTheDocument) {
    int scrolls = 0;
    QObject::connect(&view, &PBScrollView::didScroll, &view, [&] { ++scrolls; });
    view.setPbScrollPoint({-5, 1.6});
    EXPECT_EQ(view.pbScrollPoint(), QPointF(0, 2));
    view.setPbScrollPoint({0, 1e9});
    EXPECT_EQ(view.pbScrollPoint(), QPointF(0, 9600));
    EXPECT_EQ(scrolls, 2);
    view.setDocumentSize({280, 1000});
    EXPECT_EQ(view.pbScrollPoint(), QPointF(0, 600));
    view.setDocumentSize({280, 10});
    EXPECT_EQ(view.pbScrollPoint(), QPointF(0, 0));
}

TEST_F(PBScrollViewTest, theWheelMovesByLinesAndPreciseDevicesByPixels) {
    sendWheel(view, {.pixels = {}, .angle = {0, -120}});
    EXPECT_TRUE(view.isScrolling());
    finishMotion();
    EXPECT_EQ(view.pbScrollPoint().y(), 50);
    EXPECT_FALSE(view.isScrolling());
    sendWheel(view, {.pixels = {0, -7}, .angle = {0, -60}});
    finishMotion();
    EXPECT_EQ(view.pbScrollPoint().y(), 57);
}

TEST_F(PBScrollViewTest, aGestureWithPhasesMovesAtOnceAndCountsAsScrollingUntilItsMomentumEnds) {
    sendWheel(view, {{0, 0}, {0, 0}, Qt::ScrollBegin});
    sendWheel(view, {{0, -30}, {0, -30}, Qt::ScrollUpdate});
    EXPECT_EQ(view.pbScrollPoint().y(), 30);
    sendWheel(view, {{0, 0}, {0, 0}, Qt::ScrollEnd});
    now += 0.05;
    EXPECT_TRUE(view.isScrolling());
    sendWheel(view, {{0, -20}, {0, -20}, Qt::ScrollMomentum});
    now += 1;
    EXPECT_TRUE(view.isScrolling());
    sendWheel(view, {{0, 0}, {0, 0}, Qt::ScrollEnd});
    now += 0.11;
    EXPECT_FALSE(view.isScrolling());
    EXPECT_EQ(view.pbScrollPoint().y(), 50);
}

TEST_F(PBScrollViewTest, theScrollerReachesEveryPartOfADocumentTallerThanAnInt) {
    constexpr double height = 1e11;
    view.setDocumentSize({280, height});
    view.scroller().setSliderPosition(view.scroller().maximum());
    view.scroller().triggerAction(QAbstractSlider::SliderToMaximum);
    finishMotion();
    EXPECT_EQ(view.pbScrollPoint().y(), height - 400);
    EXPECT_EQ(view.scroller().value(), view.scroller().maximum());
    view.scrollToPosition(height / 2, false);
    EXPECT_NEAR(view.scroller().value(), view.scroller().maximum() / 2.0, 4);
}

TEST_F(PBScrollViewTest, pagesAndArrowsOfTheScrollerAreEasedAndAddUp) {
    view.scroller().setPageScroll(100);
    view.scroller().triggerAction(QAbstractSlider::SliderPageStepAdd);
    EXPECT_EQ(view.pbScrollPoint().y(), 0);
    view.scroller().triggerAction(QAbstractSlider::SliderSingleStepAdd);
    view.scroller().triggerAction(QAbstractSlider::SliderSingleStepAdd);
    finishMotion();
    EXPECT_EQ(view.pbScrollPoint().y(), 300 + 50 + 50);
    view.scroller().triggerAction(QAbstractSlider::SliderPageStepSub);
    finishMotion();
    EXPECT_EQ(view.pbScrollPoint().y(), 100);
}

TEST_F(PBScrollViewTest, theKnobFollowsTheMouseAndWithTheOptionKeyAtAQuarter) {
    PBThemes::apply(PBThemes::Scheme::Light);
    view.setDocumentSize({280, 100000});
    PBScroller& scroller = view.scroller();
    scroller.resize(scroller.width(), 400);
    const auto send = [&](QEvent::Type type, QPointF point, Qt::KeyboardModifiers modifiers) {
        const bool isUp = type == QEvent::MouseButtonRelease;
        QMouseEvent event(
            type, point, scroller.mapToGlobal(point),
            type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
            isUp ? Qt::NoButton : Qt::LeftButton, modifiers);
        QApplication::sendEvent(&scroller, &event);
    };
    const auto dragged = [&](Qt::KeyboardModifiers modifiers) {
        view.scrollToPosition(0, false);
        const QPointF knob(scroller.width() / 2.0, 10);
        send(QEvent::MouseButtonPress, knob, modifiers);
        for (int step = 1; step <= 8; ++step)
            send(QEvent::MouseMove, knob + QPointF(0, 20 * step), modifiers);
        send(QEvent::MouseButtonRelease, knob + QPointF(0, 160), modifiers);
        finishMotion();
        return view.pbScrollPoint().y();
    };
    // 160 of the way that the shortest knob, 36 high, has in 400.
    const double whole = dragged(Qt::NoModifier);
    EXPECT_NEAR(whole, 160.0 / 364 * (100000 - 400), 300);
    EXPECT_NEAR(dragged(Qt::AltModifier), whole / 4, 300);
}

TEST_F(PBScrollViewTest, aKnobInSlideModeSetsTheSpeedAtMostOnceAFrame) {
    PBScroller& scroller = view.scroller();
    scroller.setSlideMode(true);
    const auto pull = [&](int to) {
        scroller.setSliderPosition(to);
        scroller.triggerAction(QAbstractSlider::SliderMove);
    };
    pull(1000);
    EXPECT_EQ(view.motion().scrollStopPos(), 30);
    pull(1000); // within the same frame
    EXPECT_EQ(view.motion().scrollStopPos(), 30);
    now += 0.02;
    pull(750);
    EXPECT_EQ(view.motion().scrollStopPos(), 45);
}

struct FakeStrip final : ThumbnailStrip {
    double itemSize() const override { return 80; }
    double roundPosition(double position) const override {
        return std::rint(position / itemSize()) * itemSize();
    }
    void scrollTimeDidEnd(std::int64_t direction) override { ended.push_back(direction); }
    std::vector<std::int64_t> ended;
};

TEST(PBThumbnailScrollViewTest, stopsAtThumbnailsAndIgnoresMomentum) {
    double now = 0;
    FakeStrip strip;
    QWidget parent;
    parent.resize(404, 104);
    PBThumbnailScrollView view(Qt::Horizontal, &parent);
    view.setClock([&] { return now; });
    view.setStrip(&strip);
    view.layoutThumbnailView();
    EXPECT_EQ(view.geometry(), QRect(2, 2, 400, 100));
    parent.show();
    view.setDocumentSize({4000, 80});
    sendWheel(view, {.pixels = {0, -100}, .angle = {0, -120}, .phase = Qt::ScrollUpdate});
    sendWheel(view, {.pixels = {0, -900}, .angle = {0, -120}, .phase = Qt::ScrollMomentum});
    EXPECT_EQ(view.pbScrollPoint().x(), 0);
    now = 1;
    view.motion().tick();
    EXPECT_EQ(view.pbScrollPoint().x(), 80);
    EXPECT_EQ(strip.ended, std::vector<std::int64_t>{1});
    sendWheel(view, {.pixels = {}, .angle = {0, -120}});
    EXPECT_EQ(view.motion().scrollStopPos(), 80 + 80); // 40 more, to the nearest thumbnail
}

} // namespace
