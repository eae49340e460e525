#include "ui/PBScrollView.h"
#include "platform/tasks/MainLoop.h"
#include "support/Mouse.h"
#include "ui/PBScroller.h"
#include "ui/PBThemes.h"

#include <QSignalSpy>
#include <QTest>

namespace {

struct LineScrollView final : PBScrollView {
    double scrollLine() const override { return 50; }
    double roundPosition(double wanted) const override { return std::rint(wanted / step) * step; }
    void scrollTimeWillBegin() override {
        ++begun;
        PBScrollView::scrollTimeWillBegin();
    }
    void scrollTimeDidEnd(std::int64_t direction) override {
        ended.push_back(direction);
        PBScrollView::scrollTimeDidEnd(direction);
    }
    double step = 1;
    int begun = 0;
    std::vector<std::int64_t> ended;
};

void sendWheel(
    PBScrollView& view, QPoint pixels, QPoint angle, Qt::ScrollPhase phase = Qt::NoScrollPhase) {
    support::sendWheel(*view.viewport(), pixels, angle, {}, phase);
}

struct PBScrollViewTest : ::testing::Test {
    PBScrollViewTest() {
        view.setClock([this] { return now; });
        view.resize(300, 400);
        view.show();
        view.setDocumentSize({280, 10000});
    }
    double y() const { return view.pbScrollPoint().y(); }
    /// Where the motion ends.
    double finished() {
        now += 1;
        view.motion().tick();
        return y();
    }
    /// Where the motion leads after a turn of the wheel.
    double turned(double delta, double later = 0) {
        now += later;
        view.motion().wheel(delta);
        return view.motion().scrollStopPos();
    }

    double now = 100;
    LineScrollView view;
};

TEST_F(PBScrollViewTest, keepsWholePositionsWithinTheDocument) {
    const QSignalSpy scrolls(&view, &PBScrollView::didScroll);
    view.setPbScrollPoint({-5, 1.6});
    EXPECT_EQ(view.pbScrollPoint(), QPointF(0, 2));
    view.setPbScrollPoint({0, 1e9});
    EXPECT_EQ(std::pair(y(), scrolls.size()), std::pair(9600.0, 2LL));
    view.setDocumentSize({280, 1000.2});
    EXPECT_EQ(y(), 601);
    auto* document = new QWidget;
    view.setDocumentView(document);
    view.resize(320, 450);
    EXPECT_EQ(y(), 551);
    EXPECT_EQ(document->geometry(), view.viewport()->rect());
    view.setDocumentSize({280, 10});
    EXPECT_EQ(y(), 0);
    constexpr double tall = 1e11; // more than an int holds
    view.setDocumentSize({280, tall});
    PBScroller& scroller = view.scroller();
    scroller.setSliderPosition(scroller.maximum());
    scroller.triggerAction(QAbstractSlider::SliderToMaximum);
    EXPECT_EQ(finished(), tall - 450);
    EXPECT_EQ(scroller.value(), scroller.maximum());
    view.scrollToPosition(tall / 2, false);
    EXPECT_NEAR(scroller.value(), scroller.maximum() / 2.0, 4);
}

TEST_F(PBScrollViewTest, theKnobRestsWhileItIsHeldAndShowsThePositionAfterwards) {
    const platform::MainLoop& loop = *platform::MainLoop::instance();
    QCoreApplication::processEvents();
    PBScroller& scroller = view.scroller();
    scroller.setSliderDown(true);
    EXPECT_TRUE(loop.isTracking());
    view.setPbScrollPoint({0, 500});
    EXPECT_EQ(scroller.value(), 0);
    view.hide(); // and the mouse lets go elsewhere
    EXPECT_FALSE(loop.isTracking());
    EXPECT_EQ(scroller.value(), 500);
    view.show();
    view.setClock([this] { return now += 0.05; });
    view.scrollToPosition(700, true);
    // Frames come by themselves.
    EXPECT_TRUE(support::spinUntil([&] { return !view.isScrolling(); }));
    EXPECT_EQ(std::pair(y(), scroller.value()), std::pair(700.0, 700));
}

TEST_F(PBScrollViewTest, turnsOfTheWheelAddUpAndTheFirstTwoAgainstThemAreSwallowedUntilARest) {
    view.setPbScrollPoint({0, 100});
    for (int turn = 0; turn < 4; ++turn)
        turned(-10);
    now += 0.1;
    for (const double delta : {-10, 10, 10})
        EXPECT_EQ(turned(delta), 150);
    // Against a motion the way counts from where it is now.
    EXPECT_EQ(turned(10), y() - 10);
    EXPECT_EQ(view.motion().scrollPosFlag(), -1);
    finished();
    EXPECT_EQ(view.ended, std::vector<std::int64_t>{-1});
    view.setPbScrollPoint({0, 100});
    turned(-10);
    EXPECT_EQ(turned(-10, 0.7), 120); // the motion is over, but no tick came: the loop was busy
    EXPECT_EQ(turned(-10, 0.1), 130);
    finished();
    for (const double delta : {10, 0})
        EXPECT_EQ(turned(delta), 120);
}

TEST_F(PBScrollViewTest, aNewTargetStartsFromWhereTheMotionIsAndEndsWhereItMayRest) {
    view.setPbScrollPoint({0, 100});
    view.scrollToPosition(1100, true);
    now += 0.3; // not ticked yet
    view.step = 80;
    view.scrollToPosition(110, true);
    EXPECT_EQ(y(), 850);
    EXPECT_EQ(view.begun, 1);
    EXPECT_EQ(finished(), 80);
    view.scrollToPosition(400, true);
    view.scrollToPosition(210, false);
    EXPECT_TRUE(y() == 240 && !view.motion().isRunning());
    EXPECT_EQ(view.ended, (std::vector<std::int64_t>{0, 0}));
}

TEST_F(PBScrollViewTest, linesAndPagesAreEasedAndAddUpAndPreciseDevicesMoveByPixels) {
    const std::tuple<QPoint, QPoint, double> turns[] = {
        {{}, {0, -120}, 50},
        {{0, -7}, {0, -60}, 57},
        {{}, {-120, 60}, 107}}; // the larger of the two counts
    for (const auto& [pixels, angle, end] : turns) {
        sendWheel(view, pixels, angle);
        EXPECT_TRUE(view.isScrolling());
        EXPECT_EQ(finished(), end);
    }
    EXPECT_FALSE(view.isScrolling());
    sendWheel(view, {0, -9}, {}, Qt::ScrollMomentum);
    EXPECT_EQ(y(), 116);
    PBScroller& scroller = view.scroller();
    scroller.setPageScroll(100);
    using enum QAbstractSlider::SliderAction;
    for (const auto action : {SliderPageStepAdd, SliderSingleStepAdd, SliderSingleStepAdd})
        scroller.triggerAction(action);
    EXPECT_EQ(y(), 116);
    EXPECT_EQ(finished(), 116 + 300 + 50 + 50);
    scroller.triggerAction(SliderPageStepSub);
    EXPECT_EQ(finished(), 216);
    support::sendWheel(scroller, {}, {0, -120});
    EXPECT_EQ(finished(), 266); // a line, as anywhere
}

TEST_F(PBScrollViewTest, aGestureWithPhasesMovesAtOnceAndCountsAsScrollingUntilItsMomentumEnds) {
    sendWheel(view, {}, {}, Qt::ScrollEnd); // of nothing
    EXPECT_FALSE(view.isScrolling());
    view.scrollToPosition(900, true);
    sendWheel(view, {}, {}, Qt::ScrollBegin); // a finger that rests stops no motion
    EXPECT_TRUE(view.motion().isRunning());
    sendWheel(view, {0, -30}, {0, -30}, Qt::ScrollUpdate);
    EXPECT_TRUE(y() == 30 && !view.motion().isRunning());
    const std::tuple<Qt::ScrollPhase, int, double, bool> steps[] = {
        {Qt::ScrollEnd, 0, 0.05, true}, // it scrolls so many seconds later
        {Qt::ScrollMomentum, -20, 1, true},
        {Qt::ScrollEnd, 0, 0.099, true},
        {Qt::ScrollEnd, 0, 0.0011, false}}; // told twice
    for (const auto& [phase, way, later, isScrolling] : steps) {
        sendWheel(view, {0, way}, {0, way}, phase);
        now += later;
        EXPECT_EQ(view.isScrolling(), isScrolling) << later;
    }
    EXPECT_EQ(y(), 50);
}

TEST_F(PBScrollViewTest, slowFingersMoveByTheirPixelsAndTheFractionsComeOnce) {
    view.setPbScrollPoint({0, 1000});
    // As Wayland tells them: 0.4 of a point each, and the fractions with the whole ones.
    sendWheel(view, {}, {}, Qt::ScrollBegin);
    for (int step = 0; step < 50; ++step)
        sendWheel(view, {0, step % 5 == 1 || step % 5 == 3 ? -1 : 0}, {0, -5}, Qt::ScrollUpdate);
    EXPECT_EQ(y(), 1020);
    sendWheel(view, {}, {}, Qt::ScrollEnd);
    now += 1;
    // A touchpad of an X server: parts of a turn, now and then a whole one.
    for (const int angle : {-7, -7, -120, -7, -3})
        sendWheel(view, {}, {0, angle});
    EXPECT_TRUE(view.isScrolling() && !view.motion().isRunning());
    EXPECT_EQ(y(), 1020 + std::rint(144 * 50 / 120.0));
    now += 0.2;
    EXPECT_FALSE(view.isScrolling());
    sendWheel(view, {}, {0, -120});
    EXPECT_TRUE(view.motion().isRunning()); // a wheel
}

TEST_F(PBScrollViewTest, whatFingersLetGoGoesOnUntilItRestsOrIsTouchedAgain) {
    /// Steps of 10 points, 100 a second, and a rest before the end.
    const auto swipe = [&](double rest, int way = -10) {
        sendWheel(view, {}, {}, Qt::ScrollBegin);
        for (int step = 0; step < 20; ++step) {
            now += 0.01;
            sendWheel(view, {0, way}, {0, 12 * way}, Qt::ScrollUpdate);
        }
        now += rest;
        sendWheel(view, {}, {}, Qt::ScrollEnd);
    };
    swipe(0.2);
    EXPECT_EQ(y(), 200);
    EXPECT_FALSE(view.motion().isRunning()); // the fingers had come to rest
    swipe(0.01);
    EXPECT_TRUE(view.motion().isFling());
    EXPECT_NEAR(view.motion().scrollStopPos(), 400 + 1000 * 0.325, 1);
    now += 0.05;
    view.motion().tick();
    EXPECT_NEAR(y(), 400 + 1000 * 0.05, 8); // as fast as before at first
    sendWheel(view, {}, {}, Qt::ScrollBegin);
    EXPECT_FALSE(view.motion().isRunning());
    swipe(0.01);
    sendWheel(view, {0, -3}, {0, -36}, Qt::ScrollMomentum); // the platform's own
    EXPECT_FALSE(view.motion().isRunning());
    swipe(0.01, 40); // beyond the start
    EXPECT_EQ(y(), 0);
    EXPECT_TRUE(support::spinUntil([&] { return !view.motion().isRunning(); }));
}

TEST_F(PBScrollViewTest, aGestureWhoseEndNeverComesEndsByAPauseOrWhenTheWindowIsLeft) {
    const auto begin = [&] {
        sendWheel(view, {}, {}, Qt::ScrollBegin);
        now += 0.01;
        sendWheel(view, {0, -5}, {0, -60}, Qt::ScrollUpdate);
        return view.isScrolling();
    };
    EXPECT_TRUE(begin());
    now += 1.5;
    EXPECT_FALSE(view.isScrolling());
    sendWheel(view, {0, -5}, {0, -60}, Qt::ScrollUpdate); // it had only rested
    EXPECT_TRUE(view.isScrolling());
    for (const auto type : {QEvent::Leave, QEvent::WindowDeactivate, QEvent::Hide}) {
        EXPECT_TRUE(begin());
        QEvent event(type);
        QApplication::sendEvent(&view, &event);
        EXPECT_FALSE(view.isScrolling());
        sendWheel(view, {}, {}, Qt::ScrollEnd);
        EXPECT_FALSE(view.isScrolling());
    }
}

/// Notes what the mouse does to it.
struct Sheet final : QWidget {
    void mousePressEvent(QMouseEvent*) override { told += u"press"_s; }
    void mouseDoubleClickEvent(QMouseEvent*) override { told += u"double"_s; }
    void mouseMoveEvent(QMouseEvent*) override { told += u"move"_s; }
    void mouseReleaseEvent(QMouseEvent*) override { told += u"release"_s; }
    QStringList told;
};

TEST_F(PBScrollViewTest, aFingerOnATouchScreenPushesTheSheetOrClicks) {
    auto* sheet = new Sheet;
    view.setDocumentView(sheet);
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    const auto touch = [&](auto step, int at) {
        auto sequence = QTest::touchEvent(view.windowHandle(), screen.get(), false);
        (sequence.*step)(0, {100, at}, static_cast<QWindow*>(nullptr));
        sequence.commit();
    };
    using Sequence = QTest::QTouchEventSequence;
    touch(&Sequence::press, 300);
    touch(&Sequence::move, 295); // trembles
    touch(&Sequence::release, 295);
    EXPECT_EQ(std::exchange(sheet->told, {}).join(u' '), u"press release");
    touch(&Sequence::press, 300);
    for (const int at : {280, 260, 200})
        touch(&Sequence::move, at);
    EXPECT_EQ(y(), 80);
    EXPECT_TRUE(view.isScrolling());
    touch(&Sequence::release, 200);
    EXPECT_EQ(sheet->told, QStringList());
    support::sendMouse(*sheet, QEvent::MouseButtonPress, {9, 9}); // a mouse is one
    EXPECT_EQ(sheet->told, QStringList{u"press"_s});
}

TEST_F(PBScrollViewTest, theKnobFollowsTheMouseAndWithTheOptionKeyAtAQuarter) {
    PBThemes::apply(PBThemes::Scheme::Light); // the style with it
    view.setDocumentSize({280, 100000});
    PBScroller& scroller = view.scroller();
    scroller.resize(scroller.width(), 400);
    const auto dragged = [&](Qt::KeyboardModifiers modifiers) {
        view.scrollToPosition(0, false);
        const auto send = [&](QEvent::Type type, int way) {
            support::sendMouse(scroller, type, {scroller.width() / 2.0, 10.0 + way}, modifiers);
        };
        send(QEvent::MouseButtonPress, 0);
        for (int way = 20; way <= 160; way += 20)
            send(QEvent::MouseMove, way);
        send(QEvent::MouseButtonRelease, 160);
        return finished();
    };
    // 160 of the way that the shortest knob, 36 high, has in 400.
    const double whole = dragged(Qt::NoModifier);
    EXPECT_NEAR(whole, 160.0 / 364 * (100000 - 400), 300);
    EXPECT_NEAR(dragged(Qt::AltModifier), whole / 4, 300);
}

} // namespace
