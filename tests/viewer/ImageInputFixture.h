#pragma once

#include "support/Support.h"
#include "viewer/input/ImageInput.h"
#include "viewer/input/ImageTouch.h"

/// The input on a picture of its own, with a clock that the test turns. Notes what is asked for.
struct ImageInputTest : ::testing::Test, ImageInputHost {
    using Phase = WheelMove::Phase;
    static constexpr QSizeF large{4000, 3000};

    SwipeNeighbours neighbours() const override { return there; }
    void step(ImageStep step) override {
        asked += support::words("next previous first last").at(static_cast<int>(step));
    }
    void perform(ImageCommand command) override {
        asked += support::words("left right flag leave").at(static_cast<int>(command));
    }
    void beginFileDrag() override { asked += u"drag"_s; }

    /// On a view of 800 x 600.
    void show(const QSizeF& size) {
        geometry.setViewport(ImageViewport(QSizeF(800, 600)));
        geometry.showImage(size, 0);
    }
    /// At actual size, in its middle.
    void showActual(const QSizeF& size) {
        show(size);
        motions.start(geometry.actualSize());
        wait(1);
    }
    /// Time goes by in frames.
    void wait(double seconds) {
        for (const double end = now + seconds; now < end - 1e-9;) {
            now = std::min(end, now + 1.0 / 60);
            input.tick();
        }
    }
    void wheel(QPointF turns, bool isZoom = false) { send(Phase::None, {}, turns, isZoom); }
    void send(Phase phase, QPointF pixels, QPointF turns, bool isZoom) {
        input.wheel().wheel({phase, {200, 150}, pixels, turns, isZoom, now});
    }
    void touchpad(Phase phase, QPointF pixels, double seconds = 0.01) {
        wait(seconds);
        send(phase, pixels, {}, false);
    }
    /// Since the last call, and after so much more time.
    QString askedAfter(double seconds) {
        wait(seconds);
        return takeAsked();
    }
    QString takeAsked() { return std::exchange(asked, {}).join(u' '); }
    /// Where all motions have ended.
    double settledScale() {
        wait(1);
        return scale();
    }
    [[nodiscard]] QPointF corner() const { return geometry.placement().pointFromImage({}); }
    [[nodiscard]] double scale() const { return geometry.placement().pixelScale(); }

    double now = 100;
    SwipeNeighbours there{.hasNext = true, .hasPrevious = true};
    QStringList asked;
    ImageGeometry geometry;
    ImageMotions motions{geometry, [this] { return now; }};
    ImageInput input{geometry, motions, *this};
    ImageTouch touch{geometry, motions, input};
};
