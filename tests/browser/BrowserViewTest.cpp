#include "BrowserViewFixture.h"

#include "platform/MainLoop.h"
#include "support/Support.h"
#include "ui/PBThemes.h"

#include <QContextMenuEvent>
#include <QPainter>

using Index = PBImageBrowserIndex;

TEST_F(BrowserViewTest, aDoubleClickEntersTheLargeViewWhenTheButtonGoesUp) {
    show({9});
    Index entered;
    QObject::connect(
        view.get(), &PBImageBrowserView::enterToLargeViewRequested, view.get(),
        [&](Index index) { entered = index; });
    click(at({0, 5}));
    send(QEvent::MouseButtonDblClick, at({0, 5}));
    EXPECT_EQ(entered, Index{});
    send(QEvent::MouseButtonRelease, at({0, 5}));
    EXPECT_EQ(entered, (Index{0, 5}));
}

TEST_F(BrowserViewTest, noTreeIsSwappedWhileTheButtonIsDown) {
    show({9});
    send(QEvent::MouseButtonPress, at({0, 1}));
    EXPECT_TRUE(view->isDragging());
    EXPECT_TRUE(platform::MainLoop::instance()->isTracking());
    scrollView.hide(); // the release will never come
    EXPECT_FALSE(view->isDragging());
    EXPECT_FALSE(platform::MainLoop::instance()->isTracking());
}

TEST_F(BrowserViewTest, returnAndClicksElsewhereTakeANewNameAndEscapeDoesNot) {
    show({9});
    QStringList names;
    QObject::connect(
        view.get(), &PBImageBrowserView::renameRequested, view.get(),
        [&](const auto& item, const QString& text) { names += item->fileName() + u'>' + text; });
    const auto begin = [&](int item) {
        send(QEvent::MouseButtonPress, nameAt({0, item}));
        return QPointer(nameField());
    };
    tree->item(0, 0)->setFileName(u"sea.shore.jpg"_s);
    auto field = begin(0);
    ASSERT_TRUE(field);
    EXPECT_EQ(field->selectedText(), u"sea.shore");
    field->setText(u"new.jpg"_s);
    press(*field, Qt::Key_Return);
    tree->item(0, 3)->setFileName(u"two\nlines\u2028.jpg"_s);
    press(*begin(3), Qt::Key_Return);
    EXPECT_EQ(names.takeLast(), u"two\nlines\u2028.jpg>two\nlines\u2028.jpg") << "as it was";
    field = begin(1);
    ASSERT_TRUE(field);
    field->setText(u"lost.jpg"_s);
    press(*field, Qt::Key_Escape);
    EXPECT_EQ(names, QStringList{u"sea.shore.jpg>new.jpg"_s});
    field = begin(2);
    ASSERT_TRUE(field);
    field->setText(u"kept.jpg"_s);
    click(at({0, 4}));
    EXPECT_EQ(names.last(), u"a2>kept.jpg");
    EXPECT_EQ(tree->selected(), u"a4"); // the click counts as well
    EXPECT_TRUE(support::spinUntil([&] { return !field; }));
}

TEST_F(BrowserViewTest, theImageInTheMiddleStaysWhenATreeIsSwappedInOrTheSizeChanges) {
    show({40, 40});
    scrollView.scrollToPosition(1500, false);
    QPoint middle(view->width() / 2, view->height() / 2);
    std::shared_ptr<PBImageFileItem> anchor;
    for (int item = 0; item < 40; ++item)
        if (view->widgetRect({0, item}).contains(middle)) anchor = tree->item(0, item);
    ASSERT_TRUE(anchor);
    const auto top = [&] {
        return view->widgetRect(view->leaves().indexForImageFile(*anchor)).center().y();
    };
    const int before = top();
    for (int more = 0; more < 12; ++more)
        tree->add(1, u"new"_s);
    std::swap(tree->tree[0], tree->tree[1]);
    tree->swapForCopy();
    view->setLeafGroupItemArray(tree->leaves());
    view->reloadData();
    EXPECT_EQ(top(), before);
    EXPECT_NE(position(), 1500);
    view->setThumbnailSize(100);
    view->reloadData();
    EXPECT_NEAR(top(), before, 1);
    scrollView.resize(660, 500);
    EXPECT_NEAR(top(), before, 1);
    view->reset();
    EXPECT_EQ(position(), 0);
}

TEST_F(BrowserViewTest, aTreeThatGoesAwayLeavesNothingDangling) {
    show({20, 20});
    click(at({0, 1}));
    tree->tree.clear(); // the view has not heard of it yet
    picture();
    press(*view, Qt::Key_Down);
    send(QEvent::MouseButtonPress, {30, 10}); // a head
    view->reloadData();
    picture();
    view->setLeafGroupItemArray({});
    view->reloadData();
    picture();
    press(*view, Qt::Key_Down);
    EXPECT_EQ(position(), 0);
}

TEST_F(BrowserViewTest, aScrollStepPaintsOnlyWhatCameIntoView) {
    show({600});
    picture();
    scrollView.scrollToPosition(1000, false);
    picture();
    int loads = services.thumbnails.loads;
    EXPECT_GT(loads, 0);
    QApplication::processEvents();
    loads = services.thumbnails.loads; // none has a thumbnail: each painted cell asks
    scrollView.scrollToPosition(1020, false);
    QApplication::processEvents();
    EXPECT_LE(services.thumbnails.loads - loads, 6); // two rows of three meet strip and head
    loads = services.thumbnails.loads;
    scrollView.scrollToPosition(5000, false);
    QApplication::processEvents();
    EXPECT_GE(services.thumbnails.loads - loads, 9);
}

TEST_F(BrowserViewTest, clicksOnHeadsScrollToThemAndSelectNothing) {
    show({9, 9, 9});
    const double second = view->browserLayout().groupItemPosition(1);
    scrollView.scrollToPosition(second - 200, false);
    click({300, 205});
    finishMotion();
    EXPECT_EQ(position(), second);
    EXPECT_EQ(tree->selected(), QString());
}

TEST_F(BrowserViewTest, paintsThumbnailsTurnedOnWhiteWithFrames) {
    show({4});
    PBThemes::apply(PBThemes::Scheme::Light);
    QImage halves = plain(Qt::red);
    QPainter(&halves).fillRect(150, 0, 150, 200, Qt::blue);
    services.thumbnails.insert(tree->item(0, 0)->fileId(), halves);
    tree->item(0, 0)->setRotateAngle(90); // counter-clockwise: what was right is on top
    services.thumbnails.insert(tree->item(0, 1)->fileId(), plain(QColor(0, 0, 0, 0)));
    tree->item(0, 1)->setIsSelected(true);
    tree->item(0, 2)->setIsSelected(true); // no thumbnail
    view->setStyle(0);
    QImage shown = picture();
    const auto placed = [&](int item) {
        const QRectF cell = view->widgetRect({0, item});
        return view->browserLayout().hitTarget(cell, {0, item}).toRect();
    };
    EXPECT_EQ(shown.pixelColor(placed(0).center() - QPoint(0, 60)), QColor(Qt::blue));
    EXPECT_EQ(shown.pixelColor(placed(0).center() + QPoint(0, 60)), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(placed(1).center()), QColor(Qt::white));
    const QColor background = PBThemes::imageBrowserBackgroundColor();
    EXPECT_EQ(shown.pixelColor(placed(2).center()), background);
    const QColor frame = PBThemes::imageBrowserSelectColor(view->hasFocus());
    for (const int item : {1, 2})
        EXPECT_EQ(shown.pixelColor(placed(item).topLeft() + QPoint(-2, 20)), frame) << item;
    // A shadow lies below the picture, and only with its bit.
    const QPoint below = QPoint(placed(1).center().x(), placed(1).bottom() + 5);
    tree->item(0, 1)->setIsSelected(false);
    EXPECT_EQ(picture().pixelColor(below), background);
    view->setStyle(BrowserMetrics::Shadow);
    EXPECT_LT(picture().pixelColor(below).lightness(), background.lightness());
}

TEST_F(BrowserViewTest, withoutTimeThumbnailsComeFromThePreloadQueue) {
    show({12});
    view->setPaintBudget(0);
    const int loads = services.thumbnails.loads;
    for (const auto& item : tree->tree[0]->imageFiles())
        services.preloaded.insert(item->fileId(), plain(Qt::green));
    picture();
    EXPECT_EQ(services.thumbnails.loads, loads);
    EXPECT_TRUE(support::spinUntil([&] { return tree->item(0, 0)->hasThumbnail(); }));
    EXPECT_EQ(picture().pixelColor(at({0, 0})), QColor(Qt::green));
}

TEST_F(BrowserViewTest, preloadsAheadFirstAndDropsEarlierWishes) {
    show({300});
    platform::OperationQueue& queue = services.preloadQueue;
    queue.waitUntilAllOperationsAreFinished();
    queue.setSuspended(true);
    scrollView.scrollToPosition(3000, false);
    EXPECT_EQ(queue.operationCount(), 2U);
    scrollView.scrollToPosition(3100, false);
    EXPECT_EQ(queue.operationCount(), 2U);
    services.largeView = true;
    scrollView.scrollToPosition(3200, false);
    EXPECT_EQ(queue.operationCount(), 2U); // nothing new is wished for
    queue.cancelAllOperations();
}

TEST_F(BrowserViewTest, buildsOfWhatIsOnShowComeFirstAndThenThePageAhead) {
    show({300});
    for (const auto& item : tree->tree[0]->imageFiles())
        services.buildQueue.addOperation(std::make_shared<FakeBuild>(item->fileId()));
    scrollView.scrollToPosition(3000, false);
    view->adjustBuildThumb();
    const auto priorityOf = [&](int item) {
        for (const auto& operation : services.buildQueue.operations())
            if (services.fileIdOfBuildThumb(*operation) == tree->item(0, item)->fileId())
                return operation->queuePriority();
        return platform::QueuePriority::VeryLow;
    };
    const BrowserRange shown = view->browserLayout().visibleRange(3000, 3500);
    const auto middle = static_cast<int>(shown.begin.item + shown.end.item) / 2;
    const auto page = static_cast<int>(shown.end.item - shown.begin.item) + 1;
    EXPECT_EQ(priorityOf(middle), platform::QueuePriority::VeryHigh);
    EXPECT_EQ(priorityOf(middle + page), platform::QueuePriority::High);
    EXPECT_EQ(priorityOf(middle - page), platform::QueuePriority::Normal);
    scrollView.scrollToPosition(2990, false); // upwards
    view->adjustBuildThumb();
    EXPECT_EQ(priorityOf(middle + page), platform::QueuePriority::Normal);
    EXPECT_EQ(priorityOf(middle - page), platform::QueuePriority::High);
    EXPECT_TRUE(services.buildQueue.isSuspended()); // as it was
    services.buildQueue.cancelAllOperations();
}

TEST_F(BrowserViewTest, nothingIsBuiltDuringAMotion) {
    show({300});
    services.buildQueue.setSuspended(false);
    scrollView.scrollToPosition(900, true);
    EXPECT_TRUE(services.buildQueue.isSuspended());
    finishMotion();
    EXPECT_FALSE(services.buildQueue.isSuspended());
}

TEST_F(BrowserViewTest, aBuiltThumbnailOutOfSightCausesNoPaint) {
    show({300});
    QApplication::processEvents();
    const int loads = services.thumbnails.loads;
    view->buildThumbDidFinish(tree->item(0, 299)->fileId());
    QApplication::processEvents();
    EXPECT_EQ(services.thumbnails.loads, loads);
    services.thumbnails.insert(tree->item(0, 1)->fileId(), plain(Qt::green));
    view->buildThumbDidFinish(tree->item(0, 1)->fileId());
    QApplication::processEvents();
    EXPECT_TRUE(tree->item(0, 1)->hasThumbnail());
}

TEST_F(BrowserViewTest, gesturesAndMenusReachTheWindow) {
    show({30});
    QStringList told;
    PBImageBrowserView* sheet = view.get();
    QObject::connect(
        sheet, &PBImageBrowserView::rotateLeftRequested, sheet, [&] { told += u"left"_s; });
    QObject::connect(
        sheet, &PBImageBrowserView::contextMenuRequested, sheet,
        [&](bool isOnItem, const QPoint&) { told += isOnItem ? u"item"_s : u"none"_s; });
    for (const double zoom : {0.25, 0.0}) {
        gesture(Qt::BeginNativeGesture, 0);
        if (zoom > 0) gesture(Qt::ZoomNativeGesture, zoom);
        gesture(Qt::RotateNativeGesture, -4); // counter-clockwise; not in a zoom
        gesture(Qt::EndNativeGesture, 0);
        EXPECT_EQ(view->thumbnailSize(), 200);
    }
    for (const QPoint& point : {at({0, 1}), QPoint(3, 60)}) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, view->mapToGlobal(point));
        QApplication::sendEvent(sheet, &event);
    }
    EXPECT_EQ(told.join(u' '), u"left item none"_s);
}
