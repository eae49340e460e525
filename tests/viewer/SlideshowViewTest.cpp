#include "support/Images.h"
#include "support/Support.h"
#include "viewer/slideshow/PBSlideshowView.h"
#include "viewer/slideshow/surfaces/RasterSurface.h"
#include "viewer/slideshow/surfaces/TransitionEngine.h"
#include "viewer/slideshow/transitions/PlainPicture.h"

namespace {

QImage picture(const QColor& colour) {
    return support::filled({300, 200}, colour);
}

struct SlideshowViewTest : testing::Test {
    PBSlideshowView view{TransitionEngine{}};
    std::vector<bool> ends;

    SlideshowViewTest() {
        view.resize(120, 90);
        view.show();
        view.setTransitionDuration(0.1);
        view.setAnimationDidStop([this](bool finished) { ends.push_back(finished); });
    }
    bool waitForEnds(std::size_t count) {
        return support::spinUntil([&] { return ends.size() >= count; });
    }
    QImage shown() { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }
};

TEST_F(SlideshowViewTest, everyTransitionEndsAtThePlainPictureWhateverSizeTheViewGets) {
    for (int style = 0; style < transitionStyleCount; ++style) {
        view.setTransitionStyle(static_cast<TransitionStyle>(style));
        const QImage next = picture(QColor::fromHsv(style * 30, 200, 200));
        const double angle = style % 2 * 90;
        const auto& surface = dynamic_cast<RasterSurface&>(view.surface());
        const int before = surface.frameCount();
        const std::size_t end = ends.size() + 1;
        view.transitionToImage(next, angle);
        if (style > 8) {
            ASSERT_TRUE(support::spinUntil([&] { return surface.frameCount() > before; }));
            view.resize(120 + style, 90);
        }
        ASSERT_TRUE(waitForEnds(end)) << style;
        EXPECT_TRUE(ends.back());
        EXPECT_GT(surface.frameCount(), before + 1) << style;
        const QImage plain = plainPicture(next, angle, view.size());
        EXPECT_TRUE(support::spinUntil([&] { return shown() == plain; })) << style;
    }
    // At rest it follows the size, too.
    view.resize(90, 120);
    const QImage plain = plainPicture(picture(QColor::fromHsv(330, 200, 200)), 90, view.size());
    EXPECT_TRUE(support::spinUntil([&] { return shown() == plain; }));
}

TEST_F(SlideshowViewTest, blackIsGoneThroughOnceAndEndsAtOnceBetweenNothings) {
    view.transitionToImage({}, 0);
    EXPECT_EQ(ends, std::vector({true}));
    view.transitionToImage(picture(Qt::red), 0);
    ASSERT_TRUE(waitForEnds(2));
    view.transitionToImage({}, 0);
    EXPECT_EQ(ends.size(), 2U);
    ASSERT_TRUE(waitForEnds(3));
    EXPECT_EQ(shown(), plainPicture({}, 0, view.size()));
    view.transitionToImage({}, 0);
    EXPECT_EQ(ends.size(), 4U);
    // Two that can't be loaded, the second while the way to the first is not over.
    view.transitionToImage(picture(Qt::red), 0);
    ASSERT_TRUE(waitForEnds(5));
    view.setTransitionDuration(1000);
    const auto& surface = dynamic_cast<RasterSurface&>(view.surface());
    const int before = surface.frameCount();
    view.transitionToImage({}, 0);
    ASSERT_TRUE(support::spinUntil([&] { return surface.frameCount() > before; }));
    view.transitionToImage({}, 0);
    EXPECT_EQ(ends.size(), 7U);
    EXPECT_EQ(shown(), plainPicture({}, 0, view.size()));
}

TEST_F(SlideshowViewTest, aTransitionInTheMiddleOfAnotherTakesOverAndClearingIsSilent) {
    view.transitionToImage(picture(Qt::red), 0);
    view.transitionToImage(picture(Qt::green), 0);
    EXPECT_EQ(ends, std::vector({false}));
    ASSERT_TRUE(waitForEnds(2));
    EXPECT_EQ(shown(), plainPicture(picture(Qt::green), 0, view.size()));
    view.transitionToImage(picture(Qt::blue), 0);
    view.clearTransition();
    EXPECT_EQ(shown(), plainPicture({}, 0, view.size()));
    view.transitionToImage(picture(Qt::red), 0);
    ASSERT_TRUE(waitForEnds(3));
    EXPECT_EQ(ends, std::vector({false, true, true}));
}

} // namespace
