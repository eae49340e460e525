#include "ImageViewFixture.h"

#include "image/large/ImageVersions.h"
#include "ui/DropTip.h"
#include "ui/FolderDropTarget.h"
#include "ui/PBThemes.h"
#include "viewer/PBNavigationImageView.h"
#include "viewer/StepButtons.h"
#include "viewer/slideshow/LoadedSlideshowPictures.h"

#include <QAbstractButton>
#include <QAccessible>

using Painted = PBImageView::Painted;

TEST_F(PBImageViewTest, theThumbnailIsStretchedInPlaceUntilThePictureIsThere) {
    add(u"one.jpg"_s);
    files.setOpen(false);
    show();
    // Never the ground, and never another size.
    for (const QPoint at : {QPoint(102, 102), QPoint(697, 497), QPoint(400, 300)})
        EXPECT_EQ(colorAt(at.x(), at.y()), QColor(Qt::yellow)) << at.x();
    EXPECT_EQ(colorAt(98, 300), ImagePainter::groundColor());
    EXPECT_EQ(view.painted(), Painted::Thumbnail);
    files.setOpen(true);
    EXPECT_TRUE(isSharp());
    EXPECT_EQ(colorAt(102, 102), QColor(Qt::red));
    EXPECT_EQ(colorAt(98, 300), ImagePainter::groundColor());
    EXPECT_EQ(view.painted(), Painted::Original); // it is smaller than the screen
    view.setGround(QColor(Qt::white));
    EXPECT_EQ(colorAt(98, 300), QColor(Qt::white));
    view.setGround({});
    EXPECT_EQ(colorAt(98, 300), PBThemes::imageBrowserBackgroundColor());
}

TEST_F(PBImageViewTest, aStepShowsTheNeighbourThatWasLoadedAheadAtOnce) {
    showRedAndGreen();
    view.tryPreloadNextOrPrevImage();
    EXPECT_TRUE(isSharp());
    EXPECT_TRUE(isLoaded());
    files.setOpen(false);
    items[1]->setRotateAngle(90);
    press(Qt::Key_Right);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(colorAt(198, 300), ImagePainter::groundColor()); // it stands upright
    EXPECT_EQ(colorAt(201, 300), QColor(Qt::green));
    EXPECT_EQ(view.angle(), -90);
    press(Qt::Key_Right);
    EXPECT_EQ(index, 1);
    press(Qt::Key_Home);
    support::sendMouse(view, QEvent::MouseButtonPress, {5, 5}, {}, Qt::ForwardButton);
    EXPECT_EQ(index, 1);
    support::sendMouse(view, QEvent::MouseButtonPress, {5, 5}, {}, Qt::BackButton);
    EXPECT_EQ(index, 0);
    press(Qt::Key_Space);
    press(Qt::Key_Space, {}, true); // held
    EXPECT_EQ(asked, u"flag"_s.split(u' '));
}

TEST_F(PBImageViewTest, aPhotographThatIsNotThereBeginsBeforeItsNeighboursTheNearestOfThemNext) {
    for (const QString& name : support::words("0.jpg 1.jpg 2.jpg 3.jpg"))
        add(name);
    show();
    EXPECT_TRUE(isSharp());
    files.setOpen(false);
    isBackward = true;
    moveTo(3);
    EXPECT_TRUE(manager.loadImageOperationOfContextObj(*items[3], 1).isLoading);
    const auto nameOf = [](const auto& operation) { return operation->contextObj()->fileName(); };
    EXPECT_EQ(support::listed(manager.waitingOperations(), nameOf), support::words("2.jpg 1.jpg"));
}

TEST_F(PBImageViewTest, whatCannotBeShownSaysSoOverItsThumbnail) {
    add(u"one.jpg"_s, {.size = {600, 400}, .status = codec::ReadStatus::Refused});
    files.setOpen(false);
    show();
    const QImage before = view.grab().toImage();
    files.setOpen(true);
    EXPECT_TRUE(support::spinUntil([this, &before] { return view.grab().toImage() != before; }));
    EXPECT_EQ(view.painted(), Painted::Thumbnail);
    EXPECT_EQ(colorAt(102, 102), QColor(Qt::yellow));
    EXPECT_FALSE(view.isProgressIndicatorShown());
    // A file that can't be reached is not damaged, and is not waited for.
    add(u"two.jpg"_s, {{6000, 4000}});
    folder.clear();
    press(Qt::Key_Right);
    const QImage plain = view.grab().toImage();
    EXPECT_FALSE(view.isProgressIndicatorShown());
    EXPECT_EQ(manager.operationCount(), 0);
    folder = u"/photos"_s;
    files.setOpen(false);
    EXPECT_NE(view.grab().toImage(), plain);
    EXPECT_TRUE(view.isProgressIndicatorShown());
    EXPECT_EQ(manager.operationCount(), 1);
    // Nothing focused.
    items.clear();
    view.showImage();
    EXPECT_FALSE(view.isProgressIndicatorShown());
    const QImage without = view.grab().toImage();
    EXPECT_EQ(view.painted(), Painted::Nothing);
    view.startProgressIndicator(); // photographs may still come
    EXPECT_NE(view.grab().toImage(), without);
}

TEST_F(PBImageViewTest, aPanPaintsStripsAndWhatLiesOnThePicture) {
    showActual();
    const auto* miniature = view.findChild<NavigationView*>();
    ASSERT_TRUE(miniature->isVisible());
    const QRect panel = miniature->geometry();
    static_cast<void>(paints.take());
    support::sendMouse(view, QEvent::MouseButtonPress, {400, 300});
    support::sendMouse(view, QEvent::MouseMove, {390, 293});
    const QRegion strips =
        QRegion(790, 0, 10, 600) + QRegion(0, 593, 800, 7) + panel.adjusted(-10, -7, 10, 7);
    const QRegion painted = paints.take();
    EXPECT_TRUE((painted - strips).isEmpty());
    // Nothing of the panel stays where it was scrolled to.
    EXPECT_TRUE(painted.contains(panel.translated(-10, -7).topLeft()));
    EXPECT_TRUE(painted.contains(panel.bottomRight()));
    EXPECT_EQ(placement().pointFromImage({}), QPointF(-610, -707));
    support::sendMouse(view, QEvent::MouseButtonRelease, {390, 293});
    EXPECT_TRUE(paints.take().contains(QPoint(200, 200))); // at rest, for the eye
    // No further than the edge.
    view.scrollByDelta({5000, 5000});
    EXPECT_TRUE(rests());
    EXPECT_EQ(placement().pointFromImage({}), QPointF(0, 0));
    press(Qt::Key_X);
    EXPECT_TRUE(rests());
    EXPECT_TRUE(view.isFitIn() && !miniature->isVisible());
    EXPECT_GT(validations, 1);
}

TEST_F(PBImageViewTest, theMiniatureMovesThePictureByItsMark) {
    thumbnail = support::filled({200, 200}, Qt::yellow);
    showActual();
    auto* miniature = view.findChild<PBNavigationImageView*>();
    const QPointF middle = QRectF(miniature->rect()).center();
    const double scale = std::min(miniature->width(), miniature->height()) / 2000.0;
    const QPointF before = placement().pointFromImage({});
    support::sendMouse(*miniature, QEvent::MouseButtonPress, middle);
    support::sendMouse(*miniature, QEvent::MouseMove, middle + QPointF(10, 0));
    EXPECT_NEAR(placement().pointFromImage({}).x(), before.x() - 10 / scale, 1);
    support::sendMouse(*miniature, QEvent::MouseButtonRelease, middle);
    const QImage seen = miniature->grab().toImage();
    EXPECT_EQ(seen.pixelColor(middle.toPoint()), QColor(Qt::yellow));
    EXPECT_LT(seen.pixelColor(QPoint(seen.width() / 2, 3)).red(), 160); // dimmed outside the mark
    support::sendMouse(*miniature, QEvent::MouseButtonPress, middle);
    EXPECT_FALSE(view.isAtRest());
    view.setNavigationEnabled(false); // under the hand, as where a step leads to another picture
    EXPECT_TRUE(view.isAtRest() && !miniature->isVisible());
}

TEST_F(PBImageViewTest, wheelAndGesturesArriveFromTheirEvents) {
    showRedAndGreen({2000, 2000});
    const auto wheel = [&](QPoint angle, Qt::KeyboardModifiers modifiers) {
        support::sendWheel(view, {}, angle, modifiers);
        EXPECT_TRUE(rests());
        return view.scale();
    };
    EXPECT_NEAR(wheel({120, 0}, Qt::AltModifier), 0.5, 1e-6);
    EXPECT_NEAR(wheel({0, 120}, Qt::ControlModifier), 0.6667, 1e-6);
    view.fitInWithAnimation(false);
    const auto gesture = [&](double turn, double zoom) {
        support::sendGesture(view, Qt::BeginNativeGesture);
        for (int update = 0; update < 10; ++update) {
            support::sendGesture(view, Qt::RotateNativeGesture, turn);
            support::sendGesture(view, Qt::ZoomNativeGesture, zoom);
        }
        support::sendGesture(view, Qt::EndNativeGesture);
        EXPECT_TRUE(rests());
        return std::exchange(asked, {}).join(u' ');
    };
    const double fitted = view.scale();
    EXPECT_EQ(gesture(-3, 0.001), u"left"_s) << "clockwise is positive there";
    EXPECT_NEAR(view.scale(), fitted, 1e-6);
    EXPECT_EQ(gesture(0.1, 0.05), QString());
    EXPECT_GT(view.scale(), fitted * 1.3);
    view.fitInWithAnimation(false);
    wheel({0, -120}, {});
    EXPECT_TRUE(support::spinUntil([this] { return index == 1; }));
    EXPECT_TRUE(support::claimsShortcut(view, Qt::Key_Z));
    EXPECT_FALSE(support::claimsShortcut(view, Qt::Key_Left));
    QFocusEvent tab(QEvent::FocusIn, Qt::TabFocusReason);
    const QImage unfocused = view.grab().toImage();
    QApplication::sendEvent(&view, &tab);
    EXPECT_NE(view.grab().toImage(), unfocused); // the focus is seen
}

TEST_F(PBImageViewTest, aFileThatChangedIsShownInItsPlaceAndTurnsToItsRotation) {
    const auto item = add(u"one.jpg"_s);
    item->setImageSize({}); // not known: it has that of its picture
    show();
    EXPECT_TRUE(isSharp());
    EXPECT_EQ(placement().imageSize(), QSizeF(600, 400));
    item->setRotateAngle(180);
    item->setImageSize({400, 400});
    view.imageDidChange();
    EXPECT_TRUE(view.isRotating());
    EXPECT_TRUE(rests());
    EXPECT_EQ(view.angle(), 180);
    EXPECT_TRUE(view.isFitIn());
    EXPECT_EQ(placement().imageSize(), QSizeF(400, 400));
    for (const double angle : {90, 0}) { // the second while it turns to the first
        item->setRotateAngle(angle);
        view.imageDidChange();
    }
    EXPECT_TRUE(rests());
    EXPECT_EQ(view.angle(), 0);
}

TEST_F(PBImageViewTest, theButtonsFadeInNearThemAndStep) {
    showRedAndGreen();
    auto* buttons = view.findChild<StepButtons*>();
    const auto found = view.findChildren<QAbstractButton*>();
    ASSERT_EQ(found.size(), 2);
    support::sendMouse(view, QEvent::MouseMove, {400, 300}, {}, Qt::NoButton);
    EXPECT_FALSE(buttons->isShown());
    support::sendMouse(view, QEvent::MouseMove, {20, 380}, {}, Qt::NoButton);
    EXPECT_TRUE(buttons->isShown() && found[0]->isVisible() && found[1]->isVisible());
    EXPECT_FALSE(found[0]->isEnabled()); // there is nothing before the first
    found[1]->click();
    EXPECT_EQ(index, 1);
    EXPECT_FALSE(found[1]->isEnabled());
    press(Qt::Key_Left);
    EXPECT_FALSE(buttons->isShown());
    view.leave();
    EXPECT_FALSE(found[0]->isVisible() || view.findChild<NavigationView*>()->isVisible());
}

TEST_F(PBImageViewTest, filesThatAreDroppedAreOpened) {
    show();
    auto* target = view.findChild<FolderDropTarget*>();
    auto* tip = view.findChild<DropTip*>();
    Q_EMIT target->draggingChanged(true);
    EXPECT_TRUE(tip->isVisible() && tip->geometry() == view.rect());
    Q_EMIT target->draggingChanged(false);
    EXPECT_FALSE(tip->isVisible());
    Q_EMIT target->dropped({u"/a.jpg"_s});
    EXPECT_EQ(asked, QStringList{u"/a.jpg"_s});
}

TEST_F(PBImageViewTest, screenReadersHearNameSizeAndMarks) {
    const auto item = add(u"one.jpg"_s);
    item->setStar(3);
    item->setFlagged(true);
    item->setRotateAngle(90);
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(interface->role(), QAccessible::Graphic);
    EXPECT_EQ(interface->text(QAccessible::Name), u"one.jpg"_s);
    EXPECT_EQ(interface->text(QAccessible::Description), u"400 × 600 pixels, 3 stars, flagged"_s);
    items.clear();
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty());
}

TEST_F(PBImageViewTest, nothingIsPaintedOrAskedForDuringASlideshow) {
    add(u"one.jpg"_s);
    isSlideShow = true;
    show();
    view.tryPreloadNextOrPrevImage();
    EXPECT_EQ(colorAt(400, 300), ImagePainter::groundColor());
    EXPECT_EQ(manager.operationCount(), 0);
}

TEST_F(PBImageViewTest, onAScreenOfOtherColoursPicturesAreAskedForAnewByThoseThatShowThem) {
    const QStringList names = support::words("focus.jpg next.jpg show.jpg");
    for (const QString& name : names)
        add(name);
    const auto shown = items.back();
    items.pop_back();
    LargeImageRequests requests(manager, buffer, importers, [](const PBImageFileItem& item) {
        return u"/photos/"_s + item.fileName();
    });
    LoadedSlideshowPictures show(requests, manager);
    this->show();
    view.tryPreloadNextOrPrevImage();
    show.preload(std::vector{IndexedImage{shown, 70}}, 70);
    const std::array all{items[0], items[1], shown};
    const auto areAll = [&](QColor color) {
        return support::spinUntil([&] {
            return std::ranges::all_of(all, [&](const auto& item) {
                const auto found = appropriateImageForScale(*item, 1);
                return found.images && found.isMatched &&
                       found.images->firstImage().pixelColor(0, 0) == color;
            });
        });
    };
    ASSERT_TRUE(areAll(Qt::red));
    for (const QString& name : names)
        files.set(name, {{600, 400}, Qt::blue});
    LargeImageScreen other = manager.screen();
    other.colorSpace = QColorSpace(QColorSpace::AdobeRgb);
    manager.setScreen(other);
    EXPECT_TRUE(areAll(Qt::blue));
    EXPECT_TRUE(support::spinUntil([this] { return colorAt(400, 300) == QColor(Qt::blue); }));
    // Moved to a larger screen, what was loaded for the former one has too few pixels.
    manager.setScreen({.maxScreenSize = 60, .colorSpace = other.colorSpace});
    buffer.clearBuffer();
    view.tryPreloadNextOrPrevImage();
    ASSERT_TRUE(isLoaded());
    QEvent moved(QEvent::ScreenChangeInternal);
    QApplication::sendEvent(&view, &moved);
    EXPECT_TRUE(
        support::spinUntil([this] { return appropriateImageForScale(*items[1], 1).isMatched; }));
}
