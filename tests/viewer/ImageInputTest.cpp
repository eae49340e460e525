#include "ImageInputFixture.h"
#include "PointsNear.h"

TEST_F(ImageInputTest, notchesOfOneTurnMakeOneStepOnAPictureThatFits) {
    // Each turn is the seconds before it, and notches.
    using Turns = std::vector<std::pair<double, double>>;
    const std::tuple<const char*, Turns, const char*, bool> cases[] = {
        {"the other way", {{0, 1}}, "previous", true},
        {"a burst", {{0, -1}, {0.05, -1}, {0.05, -1}}, "next", true},
        {"two turns", {{0, -1}, {0.2, -1}}, "next next", true},
        {"parts that make a notch", {{0, -0.5}, {0.05, -0.5}}, "next", true},
        {"parts that make none", {{0, -0.4}, {0.05, -0.4}}, "", true},
        {"parts with a pause between", {{0, -0.6}, {0.5, -0.6}}, "", true},
        {"back and forth", {{0, -0.6}, {0.05, 0.6}}, "", true},
        {"at the end", {{0, -1}}, "", false},
    };
    for (const auto& [name, turns, expected, hasNext] : cases) {
        show(large);
        there.hasNext = hasNext;
        for (const auto& [pause, notches] : turns) {
            wait(pause);
            wheel({0, notches});
        }
        wait(0.07);
        EXPECT_LE(asked.size(), turns.size() - 1) << name;
        EXPECT_EQ(askedAfter(0.5), QString::fromUtf8(expected)) << name;
        wait(1);
    }
}

TEST_F(ImageInputTest, swipesFlyOutOrSpringBack) {
    // To the right, in points; the last steps, in points a second; is there a next one.
    const std::tuple<double, double, bool, const char*> cases[] = {
        {-300, 0, true, ""},        {-301, 0, true, "next"},   {-301, 0, false, ""},
        {301, 0, true, "previous"}, {-60, -900, true, "next"}, {-50, -900, true, ""},
        {-200, 900, true, ""},      {-20000, 0, true, "next"}, {-30, -500, true, ""},
    };
    for (const auto& [way, fling, hasNext, expected] : cases) {
        const std::string name = std::to_string(way) + " " + std::to_string(fling);
        show(large);
        there.hasNext = hasNext;
        touchpad(Phase::Begin, {});
        const double flung = fling * 0.01;
        for (const double step : {way - 2 * flung, flung, flung})
            touchpad(Phase::Update, {step, 0});
        if (fling == 0) wait(0.2); // the fingers rest
        EXPECT_NEAR(geometry.placement().swapOffset(), std::min(-way, 16000.0), 1e-9) << name;
        touchpad(Phase::End, {}, 0);
        wait(0.05);
        const double moved = geometry.placement().swapOffset() * (way > 0 ? -1 : 1);
        EXPECT_EQ(moved > std::abs(way) || moved > 700, *expected != 0) << name;
        EXPECT_GT(moved, 0) << name;
        EXPECT_EQ(askedAfter(0.6), QString::fromUtf8(expected)) << name;
        EXPECT_EQ(geometry.placement().swapOffset(), 0) << name;
    }
}

TEST_F(ImageInputTest, aSwipeThatBeginsFinishesTheOneThatFliesOut) {
    show(large);
    touchpad(Phase::Begin, {});
    touchpad(Phase::Update, {-400, 0});
    wait(0.2);
    touchpad(Phase::End, {}, 0);
    EXPECT_EQ(askedAfter(0.1), u""_s);
    touchpad(Phase::Begin, {-10, 0}, 0);
    EXPECT_EQ(takeAsked(), u"next"_s);
    EXPECT_EQ(geometry.placement().swapOffset(), 10);
    EXPECT_EQ(askedAfter(1), u""_s);
    input.cancel(); // the end is never heard
    wait(1);
    EXPECT_EQ(geometry.placement().swapOffset(), 0);
    EXPECT_FALSE(motions.isRunning());
}

TEST_F(ImageInputTest, aLargerPictureIsMovedByWheelAndFingersAndFlung) {
    showActual(large);
    const QPointF before = corner();
    wheel({0, -1});
    wait(0.1);
    wheel({0, -1}); // lengthens the motion from where the first one ends
    wait(1);
    expectNear(corner(), before + QPointF(0, -100));
    wheel({0.25, 0}); // a touchpad of an X server: at once
    expectNear(corner(), before + QPointF(12, -100));
    wait(1);
    touchpad(Phase::Begin, {});
    for (int step = 0; step < 10; ++step)
        touchpad(Phase::Update, {-10.25, 0});
    expectNear(corner(), before + QPointF(12 - 103, -100)); // parts of pixels add up
    send(Phase::Update, {}, {-0.05, 0}, false);             // half a point: with a later step
    expectNear(corner(), before + QPointF(12 - 103, -100));
    touchpad(Phase::End, {});
    wait(0.2);
    const double flown = corner().x();
    EXPECT_LT(flown, before.x() - 150);
    touchpad(Phase::Begin, {}); // catches it
    wait(1);
    EXPECT_NEAR(corner().x(), flown, 12);
    EXPECT_EQ(takeAsked(), u""_s);
}

TEST_F(ImageInputTest, wheelsZoomAtThePointerByTheirKeyOrWithoutItAndFingersSwipeAsEver) {
    for (const QPointF turns : {QPointF(0, 1), QPointF(1, 0)}) {
        show(large); // 0.2
        const QPointF held = geometry.placement().pointToImage({200, 150});
        wheel(turns, true);
        EXPECT_NEAR(settledScale(), 0.3333, 1e-6);
        expectNear(geometry.placement().pointToImage({200, 150}), held, 4);
        EXPECT_EQ(takeAsked(), u""_s);
    }
    send(Phase::Momentum, {}, {0, 1}, true);
    EXPECT_NEAR(settledScale(), 0.3333, 1e-6);
    input.wheel().setZooms(true);
    show(large);
    wheel({0, 1});
    EXPECT_NEAR(settledScale(), 0.3333, 1e-6);
    EXPECT_EQ(takeAsked(), u""_s);
    show(large);
    wheel({0, -1}, true);
    EXPECT_EQ(askedAfter(1), u"next"_s);
    touchpad(Phase::Begin, {-10, 0});
    EXPECT_EQ(geometry.placement().swapOffset(), 10);
    EXPECT_EQ(scale(), 0.2);
}

TEST_F(ImageInputTest, theMouseZoomsPansOrDragsTheFileOut) {
    const ImageModifiers zoom{.command = true};
    ImageMouse& mouse = input.mouse();
    show(large);
    mouse.mouseDown({100, 100}, zoom, 1);
    mouse.mouseDragged({102, 100}); // a hand trembles
    mouse.mouseUp({102, 100}, zoom);
    EXPECT_NEAR(settledScale(), 0.25, 1e-6);
    mouse.mouseDown({100, 100}, {.shift = true, .option = true}, 1);
    mouse.mouseUp({100, 100}, {.shift = true, .option = true});
    EXPECT_NEAR(settledScale(), 0.1667, 1e-6);
    geometry.setScale(0.1);
    mouse.mouseDown({100, 100}, zoom, 1);
    mouse.mouseDragged({250, 100});
    EXPECT_NEAR(scale(), 0.45, 1e-9);
    mouse.mouseDragged({1000, 100});
    EXPECT_NEAR(scale(), 0.8, 1e-9);
    mouse.mouseUp({1000, 100}, zoom);
    EXPECT_FALSE(motions.isRunning()); // no click
    const QPointF before = corner();
    mouse.mouseDown({100, 100}, {}, 1);
    mouse.mouseDragged({97, 90});
    expectNear(corner(), before + QPointF(-3, -10));
    mouse.cancel();
    mouse.mouseDragged({0, 0});
    expectNear(corner(), before + QPointF(-3, -10));
    EXPECT_EQ(takeAsked(), u""_s);
    show(large);
    mouse.mouseDown({100, 100}, {}, 1);
    mouse.mouseDragged({103, 103});
    EXPECT_EQ(takeAsked(), u""_s);
    mouse.mouseDragged({103, 104});
    mouse.mouseDragged({300, 104});
    EXPECT_EQ(takeAsked(), u"drag"_s);
    mouse.mouseDown({0, 0}, {}, 2);
    EXPECT_NEAR(settledScale(), 1, 1e-9);
}

TEST_F(ImageInputTest, keysStepZoomScrollAndLeave) {
    const ImageModifiers shift{.shift = true};
    const ImageModifiers command{.command = true};
    const ImageModifiers option{.option = true};
    // Whether the key is taken, and what it asks for; the scale then, and how far it moved.
    using enum ImageKey;
    using Case = std::tuple<ImageKey, ImageModifiers, bool, const char*, double, QPointF>;
    const Case cases[] = {
        {Left, {}, true, "previous", 1, {}},
        {Right, {}, true, "next", 1, {}},
        {Right, option, false, "", 1, {}}, // a shortcut
        {PageUp, {}, true, "previous", 1, {}},
        {PageDown, {}, true, "next", 1, {}},
        {Backspace, {}, true, "previous", 1, {}},
        {Home, {}, true, "first", 1, {}},
        {End, {}, true, "last", 1, {}},
        {Up, {}, false, "", 1, {}},
        {Up, option, true, "", 2, {}},
        {Down, command, true, "", 0.6667, {}},
        {Up, shift, true, "", 1, {0, 100}},
        {Right, shift, true, "", 1, {-100, 0}},
        {ZoomIn, {}, true, "", 2, {}},
        {ZoomOut, {}, true, "", 0.6667, {}},
        {FitIn, {}, true, "", 0.2, {}},
        {ActualSize, command, false, "", 1, {}}, // a shortcut
        {Space, command, true, "flag", 1, {}},
        {Return, {}, true, "leave", 1, {}},
        {Escape, shift, true, "leave", 1, {}},
    };
    for (const auto& [key, modifiers, isTaken, expected, scaleThen, moved] : cases) {
        const auto name = static_cast<int>(key);
        showActual(large);
        const QPointF before = corner();
        EXPECT_EQ(input.keyDown(key, modifiers), isTaken) << name;
        EXPECT_EQ(askedAfter(1), QString::fromUtf8(expected)) << name;
        EXPECT_NEAR(scale(), scaleThen, 1e-6) << name;
        if (scaleThen == 1) expectNear(corner(), before + moved, 0.01);
    }
}

TEST_F(ImageInputTest, twoFingersZoomOrTurnOnceNeverBoth) {
    showActual(large);
    input.beginGesture();
    input.magnify(0.5, {10, 10});
    input.rotate(40);
    input.magnify(0.5, {10, 10}); // of the first distance: twice as far apart by now
    EXPECT_NEAR(scale(), 2, 1e-9);
    input.endGesture();
    EXPECT_EQ(takeAsked(), u""_s);
    input.beginGesture();
    for (const double degrees : {10.0, 10.0, 90.0})
        input.rotate(degrees);
    input.magnify(3, {10, 10});
    input.endGesture();
    EXPECT_NEAR(scale(), 2, 1e-9);
    EXPECT_EQ(takeAsked(), u"left"_s);
}

TEST_F(ImageInputTest, fingersOnAScreenPinchTapAndPull) {
    const auto put = [&](std::vector<QPointF> points, double seconds = 0.02) {
        wait(seconds);
        touch.touch(points, now);
    };
    show(large);
    for (int tap = 0; tap < 2; ++tap) {
        put({QPointF(200, 200)});
        put({});
    }
    EXPECT_NEAR(settledScale(), 1, 1e-9);
    put({QPointF(300, 300)});
    put({QPointF(300, 300), QPointF(500, 300)});
    put({QPointF(200, 300), QPointF(600, 300)});
    EXPECT_NEAR(scale(), 2, 1e-9);
    const QPointF before = corner();
    put({QPointF(200, 300)}); // what is left of a pinch moves nothing
    put({QPointF(250, 350)});
    expectNear(corner(), before);
    put({});
    // A clockwise turn, across where angles begin anew.
    put({QPointF(300, 305), QPointF(500, 295)});
    put({QPointF(310, 250), QPointF(490, 350)});
    put({QPointF(400, 200), QPointF(400, 400)});
    put({});
    EXPECT_EQ(takeAsked(), u"right"_s);
    show(large);
    put({QPointF(700, 300)});
    for (int x = 650; x >= 50; x -= 60)
        put({QPointF(x, 300)});
    put({});
    EXPECT_EQ(askedAfter(1), u"next"_s);
}

TEST_F(ImageInputTest, aZoomTakesOverFromAScrollThatRuns) {
    showActual(large);
    motions.scrollByDelta({500, 0}, true);
    wait(0.05);
    const QPointF held = geometry.placement().pointToImage({100, 100});
    motions.start(geometry.zoomInAtPoint(QPointF(100, 100)));
    wait(1);
    expectNear(geometry.placement().pointToImage({100, 100}), held);
}
