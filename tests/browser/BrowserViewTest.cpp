#include "BrowserViewFixture.h"

#include "browser/PBImageBrowserSelectView.h"
#include "support/FakeFiles.h"
#include "ui/PBThemes.h"

#include <QStyleHints>

#include <future>

TEST_F(BrowserViewTest, returnAndClicksElsewhereTakeANewNameButNeitherEscapeNorAnImageThatGoes) {
    show({9});
    on(&View::renameRequested,
       [&](const auto& item, const QString& text) { told += item->fileName() + u'>' + text; });
    const auto begin = [&](int item, const QString& text = {}) {
        send(QEvent::MouseButtonPress, nameAt({0, item}));
        const QString selected = nameField()->selectedText();
        if (!text.isEmpty()) nameField()->setText(text);
        return selected;
    };
    const QString odd = u"two\nlines\u2028.jpg"_s;
    tree->item(0, 0)->setFileName(u"sea.shore.jpg"_s);
    tree->item(0, 3)->setFileName(odd);
    EXPECT_EQ(begin(0, u"new.jpg"_s), u"sea.shore");
    press(*nameField(), Qt::Key_Return);
    begin(3); // and it stays as it was
    press(*nameField(), Qt::Key_Enter);
    begin(1, u"lost.jpg"_s);
    press(*nameField(), Qt::Key_Escape);
    begin(2, u"kept.jpg"_s);
    click(at({0, 4}));
    const QStringList names{u"sea.shore.jpg>new.jpg"_s, odd + u'>' + odd, u"a2>kept.jpg"_s};
    EXPECT_EQ(told, names);
    view->renameIndex(view->currentIndex()); // the click counts as well
    EXPECT_EQ(nameField()->text(), u"a4");
    press(*nameField(), Qt::Key_Escape);
    EXPECT_EQ(view->window()->focusWidget(), view.get());
    view->renameIndex({0, 8}); // out of sight
    finishMotion();
    EXPECT_TRUE(view->rect().contains(nameField()->geometry()));
    EXPECT_EQ(view->currentIndex(), (Index{0, 4}));
    // The field follows its image and goes with it.
    const QPointer field = nameField();
    tree->remove(0, {tree->item(0, 0)});
    view->reloadData();
    EXPECT_NEAR(field->geometry().center().x(), nameAt({0, 7}).x(), 1);
    tree->swapForCopy();
    tree->remove(0, {tree->item(0, 7)});
    showLeaves(tree->leaves());
    EXPECT_FALSE(nameField());
    EXPECT_TRUE(support::spinUntil([&] { return !field; }));
    EXPECT_EQ(told, names);
    press(*view, Qt::Key_End);
    EXPECT_EQ(tree->selected(), u"a7");
}

/// The same photographs come again as other items, in another order and not all at once.
TEST_F(BrowserViewTest, aSheetThatIsFilledAnewKeepsSelectionCurrentImageAndPlace) {
    show({40, 40});
    const Index current{1, 9};
    view->GotoIndex(current);
    finishMotion();
    tree->item(1, 30)->setIsSelected(true);
    view->selectDidChange();
    const int place = view->widgetRect(current).center().y();
    const BrowserTree former = std::exchange(*tree, BrowserTree({40, 40}));
    qint64 selected = 0;
    on(&View::selectionDidChange, [&](qint64 count) { selected = count; });
    const auto beginAnew = [&] {
        view->resetForSamePhotographs();
        showLeaves({});
        EXPECT_EQ(position(), 0);
        std::swap(tree->tree[0], tree->tree[1]);
        showLeaves({tree->leaves()[1]}); // the others
        EXPECT_EQ(tree->selected(), u""_s);
    };
    beginAnew();
    showLeaves(tree->leaves());
    view->allCame();
    EXPECT_EQ(tree->selected(), u"b9 b30"_s);
    EXPECT_EQ(selected, 2);
    const Index found = view->currentIndex();
    EXPECT_EQ(found, (Index{0, 9}));
    EXPECT_EQ(view->widgetRect(found).center().y(), place);
    // Once more, and those that have gone take nothing along.
    *tree = BrowserTree({40, 40});
    beginAnew();
    view->allCame();
    showLeaves(tree->leaves());
    EXPECT_EQ(tree->selected(), u""_s);
    EXPECT_FALSE(view->currentIndex().isValid());
}

TEST_F(BrowserViewTest, whatTheSelectedImagesLeaveIsTakenByTheirNeighbour) {
    show({6, 2, 0, 1});
    qint64 toldCount = -1;
    on(&View::selectionDidChange, [&](qint64 count) { toldCount = count; });
    const auto takeAway = [&](std::initializer_list<Index> gone, bool inPlace) {
        toldCount = -1;
        for (const Index& index : gone) {
            const auto item = view->leaves().imageFileAtIndex(index);
            tree->remove(static_cast<int>(index.group), {item});
            item->setIsSelected(false); // as an edit does that the filter does not let through
        }
        if (!inPlace) tree->swapForCopy();
        inPlace ? view->reloadData() : showLeaves(tree->leaves());
        const auto current = view->leaves().imageFileAtIndex(view->currentIndex());
        return tree->selected() + (current ? u" at "_s + current->fileName() : QString());
    };
    view->GotoIndex({0, 2});
    for (const int other : {0, 3})
        tree->item(0, other)->setIsSelected(true);
    EXPECT_EQ(takeAway({{0, 3}, {0, 2}, {0, 0}}, false), u"a4 at a4"_s) << "with all selected";
    view->GotoIndex({0, 1});
    EXPECT_EQ(takeAway({{0, 2}, {0, 1}}, true), u"a1 at a1"_s) << "none follows in its group";
    EXPECT_EQ(toldCount, 1);
    tree->item(1, 0)->setIsSelected(true);
    EXPECT_EQ(takeAway({{0, 0}}, false), u"b0 at b0"_s) << "the group is empty";
    view->toggleIndex({1, 0});
    EXPECT_EQ(takeAway({{1, 0}}, false), u" at b1"_s) << "it was not selected";
    view->GotoIndex({1, 0});
    services.largeView = true;
    EXPECT_EQ(takeAway({{1, 0}}, false), u""_s) << "the large view has a focus of its own";
    services.largeView = false;
    // The same photograph as another item, elsewhere.
    view->GotoIndex({3, 0});
    const auto same =
        PBImageFileItem::imageFileItemWithId(tree->item(3, 0)->fileId(), 1, u"again"_s, 1, 1);
    tree->add(3, u"d1"_s);
    tree->node(3).sortAddImageFileItem(same, 0, false);
    EXPECT_EQ(takeAway({{3, 0}}, false), u"again at again"_s);
    // Its file was written anew.
    view->GotoIndex({3, 1});
    tree->add(1, u"again"_s);
    EXPECT_EQ(takeAway({{3, 1}}, false), u"again at again"_s);
}

TEST_F(BrowserViewTest, theImageInTheMiddleStaysWhenATreeIsSwappedInOrTheSizeChanges) {
    show({40, 40});
    scrollView.scrollToPosition(1500, false);
    const auto anchor = tree->item(0, 28);
    const auto top = [&] {
        return view->widgetRect(view->leaves().indexForImageFile(*anchor)).center().y();
    };
    const int before = top();
    for (int more = 0; more < 12; ++more)
        tree->add(1, u"new"_s);
    std::swap(tree->tree[0], tree->tree[1]);
    tree->swapForCopy();
    showLeaves(tree->leaves());
    EXPECT_EQ(top(), before);
    EXPECT_NE(position(), 1500);
    resizeThumbnails(100);
    EXPECT_NEAR(top(), before, 1);
    EXPECT_EQ(scrollView.scrollLine(), 100.0 / 3);
    scrollView.resize(660, 500);
    EXPECT_NEAR(top(), before, 1);
    view->renameIndex({0, 20});
    view->reset();
    EXPECT_FALSE(nameField() || view->currentIndex().isValid());
    std::swap(tree->tree[0], tree->tree[1]);
    showLeaves(tree->leaves());
    EXPECT_EQ(position(), 0); // the way to the top is not to be kept
}

TEST_F(BrowserViewTest, whatIsClickedOrSelectedStaysAtItsPlaceAndAMotionGoesOnFromThere) {
    show({60, 60});
    view->GotoIndex({1, 20});
    finishMotion();
    const auto moved = tree->item(1, 20);
    const int top = view->widgetRect({1, 20}).top();
    view->captureScrollOfSelection();
    tree->remove(1, {moved});
    tree->node(0).sortAddImageFileItem(moved, 0, false);
    showLeaves(tree->leaves());
    const Index index = view->leaves().indexForImageFile(moved);
    EXPECT_EQ(view->widgetRect(index).top(), top);
    // Out of sight it is none of the edit's business.
    scrollView.scrollToPosition(300, false);
    view->captureScrollOfSelection();
    view->reloadData();
    EXPECT_EQ(position(), 300);
    scrollView.scrollToPosition(0, false);
    click(at({0, 4}));
    const int held = view->widgetRect({0, 4}).top();
    std::swap(tree->tree[0], tree->tree[1]);
    showLeaves(tree->leaves());
    EXPECT_EQ(view->widgetRect({1, 4}).top(), held);
    scrollView.scrollBy(300);
    const double end = scrollView.motion().scrollStopPos();
    now += 0.3;
    scrollView.motion().tick();
    const double before = position();
    std::swap(tree->tree[0], tree->tree[1]);
    showLeaves(tree->leaves());
    const double way = position() - before;
    EXPECT_LT(way, -1000);
    scrollView.motion().tick();
    EXPECT_EQ(position(), before + way);
    finishMotion();
    EXPECT_EQ(position(), end + way);
}

TEST_F(BrowserViewTest, whatChangesIsToldOnce) {
    show({30});
    const auto counts = [&](auto signal, const QString& name) {
        on(signal, [this, name](qint64 count) { told += name + QString::number(count); });
    };
    counts(&View::selectionDidChange, u"selected "_s);
    counts(&View::itemCountDidChange, u"items "_s);
    counts(&View::pageItemCountDidChange, u"page "_s);
    on(&View::flagToggleRequested, [&] { told += u"flag"_s; });
    const auto expectTold = [&](const QString& texts) {
        EXPECT_EQ(told.join(u", "), texts);
        told.clear();
    };
    EXPECT_TRUE(view->selection().selectAll(FoldedLeaves::Included));
    view->selectDidChange();
    expectTold(u"selected 30"_s);
    paints.take();
    view->GotoIndex({0, 1});
    EXPECT_EQ(paints.take(), view->rect());
    press(*view, Qt::Key_Space);
    expectTold(u"selected 1, flag"_s);
    resizeThumbnails(250); // two columns of two rows
    expectTold(u"page 4, items 30"_s);
    const double tall = scrollView.documentSize().height();
    view->setStyle(0);
    expectTold(u"items 30"_s);
    EXPECT_EQ(scrollView.documentSize().height(), tall - 15 * 45);
    view->setStyle(BrowserMetrics::Shadow);
    press(*view, Qt::Key_Space, {}, Qt::AltModifier);
    EXPECT_FALSE(press(*view, Qt::Key_Left, {}, Qt::MetaModifier));
    expectTold({});
}

TEST_F(BrowserViewTest, lettersMakeOneBeginningUntilTheKeyboardsPause) {
    show({12});
    tree->item(0, 5)->setFileName(u"a b"_s);
    const double pause = QGuiApplication::styleHints()->keyboardInputInterval() / 1000.0;
    const std::tuple<double, char, QString> keys[] = {
        {0, 'A', u"a0"_s},      {pause - 0.001, '1', u"a1"_s}, {pause - 0.001, '1', u"a11"_s},
        {pause, '1', u"a11"_s}, {pause, 'a', u"a0"_s},         {0.1, 'a', u"a1"_s},
        {0.1, '1', u"a1"_s},    {pause, 'a', u"a2"_s},         {pause - 0.001, ' ', u"a b"_s}};
    for (const auto& [wait, letter, name] : keys) {
        now += wait;
        press(*view, letter == ' ' ? Qt::Key_Space : 0, QString(QLatin1Char(letter)));
        EXPECT_EQ(tree->selected(), name) << wait << letter;
    }
}

TEST_F(BrowserViewTest, whatAKeyThatIsHeldLeadsToStaysInSight) {
    show({3000});
    on(&View::flagToggleRequested, [&] { told += u"flag"_s; });
    const auto isInSight = [&] {
        return view->rect().contains(view->widgetRect(view->currentIndex()));
    };
    const auto hold = [&](int key, double rate) {
        for (double held = 0; held < 2; held += rate) {
            press(*view, key, {}, {}, held > 0);
            EXPECT_TRUE(held == 0 || isInSight()) << held;
            for (const double frame : {0.25, 0.5, 0.75, 1.0}) { // a pause before the first repeat
                now += (held == 0 ? 0.4 : rate) * frame;
                scrollView.motion().tick();
            }
        }
    };
    for (const int key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_End})
        hold(key, 1 / 30.0);
    hold(Qt::Key_Space, 0.1);
    EXPECT_EQ(told, QStringList{u"flag"_s});
    press(*view, Qt::Key_Home);
    finishMotion();
    // Steps that are eased are measured from where the motion ends, not from where it is.
    for (const int key : {Qt::Key_Down, Qt::Key_Up}) {
        for (int step = 0; step < 4; ++step)
            press(*view, key);
        EXPECT_TRUE(scrollView.motion().isRunning());
    }
    finishMotion();
    EXPECT_TRUE(isInSight());
}

TEST_F(BrowserViewTest, aBandScrollsWhileTheMouseStandsStillAndEndsWhereItsReleaseIsNotHeard) {
    show({60});
    const auto* band = view->findChild<PBImageBrowserSelectView*>();
    const platform::MainLoop& loop = *platform::MainLoop::instance(); // swaps no tree then
    const auto held = [&] {
        return std::tuple(view->isDragging(), loop.isTracking(), band->isVisible());
    };
    constexpr std::tuple over(false, false, false);
    const auto begin = [&] {
        view->GotoIndex({0, 4});
        send(QEvent::MouseButtonPress, {4, 60}, Qt::ShiftModifier);
        EXPECT_EQ(held(), std::tuple(true, true, false));
        send(QEvent::MouseMove, {300, 200}, Qt::ShiftModifier);
        EXPECT_EQ(held(), std::tuple(true, true, true));
        EXPECT_EQ(band->geometry(), QRect(4, 60, 296, 140));
        EXPECT_EQ(tree->selected(), u"a0 a1 a4");
    };
    begin();
    EXPECT_TRUE(support::claimsShortcut(*view, Qt::Key_Escape)); // before any menu's
    press(*view, Qt::Key_Escape);
    EXPECT_EQ(held(), over);
    EXPECT_EQ(tree->selected(), u"a4"); // what it had changed is given back
    send(QEvent::MouseMove, {400, 210}, Qt::ShiftModifier);
    EXPECT_EQ(held(), over); // although the button is down still
    EXPECT_FALSE(press(*view, Qt::Key_Escape));
    begin();
    QWidget popup(nullptr, Qt::Popup);
    popup.show();
    support::sendMouse(popup, QEvent::MouseButtonRelease, {1, 1});
    EXPECT_EQ(held(), over);
    popup.close();
    begin();
    QWidget modal;
    modal.setWindowModality(Qt::ApplicationModal);
    modal.show();
    EXPECT_EQ(held(), over);
    EXPECT_EQ(tree->selected(), u"a0 a1 a4");
    modal.close();
    begin();
    send(QEvent::MouseMove, {100, view->height() + 10}); // 15 points a frame
    EXPECT_TRUE(support::spinUntil([&] { return position() >= 300; }));
    EXPECT_EQ(position(), std::rint(position() / 15) * 15);
    EXPECT_EQ(band->geometry(), QRect(4, 0, 96, view->height()));
    EXPECT_TRUE(tree->item(0, 9)->isSelected());
    support::sendMouse(*view, QEvent::MouseMove, {9, 9}, {}, Qt::NoButton); // was let go elsewhere
    EXPECT_EQ(held(), over);
    scrollView.scrollToPosition(0, false);
    begin();
    scrollView.hide(); // the release will never come
    EXPECT_EQ(held(), over);
}

TEST_F(BrowserViewTest, paintsThumbnailsTurnedOnWhiteWithFrames) {
    show({4});
    PBThemes::apply(PBThemes::Scheme::Light);
    services.thumbnails.insert(tree->item(0, 0)->fileId(), redAndBlue({300, 200}));
    tree->item(0, 0)->setRotateAngle(90); // counter-clockwise: what was right is on top
    services.thumbnails.insert(tree->item(0, 1)->fileId(), plain(QColor(0, 0, 0, 0)));
    tree->item(0, 1)->setIsSelected(true);
    tree->item(0, 2)->setIsSelected(true); // no thumbnail
    view->setStyle(0);
    QImage shown = picture();
    const auto placed = [&](int item) {
        const QRect cell = view->widgetRect({0, item});
        return view->browserLayout().hitTarget(cell, {0, item}).toRect();
    };
    const QColor background = PBThemes::imageBrowserBackgroundColor();
    const QColor frame = PBThemes::imageBrowserSelectColor(view->hasFocus());
    const QRect white = placed(1);
    const std::tuple<const char*, QPoint, QColor> pixels[] = {
        {"what was right", placed(0).center() - QPoint(0, 60), Qt::blue},
        {"what was left", placed(0).center() + QPoint(0, 60), Qt::red},
        {"behind the clear picture", white.center(), Qt::white},
        {"its edge", white.topLeft(), Qt::white},
        {"no frame", placed(0).topLeft() + QPoint(-2, 20), background},
        {"the placeholder's frame", {placed(2).left() - 2, placed(2).center().y()}, frame},
        {"inside the placeholder", placed(2).center(), background}};
    for (const auto& [name, point, color] : pixels)
        EXPECT_EQ(shown.pixelColor(point), color) << name;
    tree->item(0, 0)->setIsAway(true);
    EXPECT_LT(picture().pixelColor(std::get<1>(pixels[0])).saturation(), 128) << "grey";
    tree->item(0, 0)->setIsAway(false);
    // Dashes of 10 points and gaps of 5.
    int dashes = 0;
    for (int x = placed(2).left() + 10; x < placed(2).left() + 130; ++x)
        dashes += shown.pixelColor(x, placed(2).top() + 1) != background ? 1 : 0;
    EXPECT_NEAR(dashes, 80, 12);
    // Without time there is a quiet shape instead.
    tick = 0.009;
    EXPECT_NE(picture().pixelColor(placed(2).center()), background);
    tick = 0;
    // A shadow lies below the picture, and only with its bit.
    const QPoint below = QPoint(white.center().x(), white.bottom() + 5);
    tree->item(0, 1)->setIsSelected(false);
    for (const std::uint64_t style : {0, 1}) {
        view->setStyle(style * BrowserMetrics::Shadow);
        EXPECT_EQ(picture().pixelColor(below).lightness() < background.lightness(), style == 1);
    }
    // Each text in its row, and only with its bit.
    const auto inked = [&](const QRectF& row) {
        const QImage line = picture().copy(row.toRect());
        return line != support::filled(line.size(), background);
    };
    for (const std::uint64_t style : {2, 4, 8, 14}) {
        view->setStyle(style);
        const QRectF cell = view->widgetRect({0, 3});
        const QRectF lowest = view->browserLayout().fileSizeRectWithCellRect(cell);
        EXPECT_TRUE(inked(view->browserLayout().fileNameRectWithCellRect(cell))) << style;
        EXPECT_TRUE(inked(lowest) && !inked(lowest.translated(0, 15))) << style;
    }
}

TEST_F(BrowserViewTest, picturesAndTheirFramesLieOnWholePixelsAtAnyScale) {
    show({12});
    for (const auto& item : tree->tree[0]->imageFiles()) {
        item->setImageSize({2, item->fileId() % 3 == 0 ? 3.0 : 1.0});
        item->setThumbnailRef(plain(Qt::green));
        item->setIsSelected(true);
    }
    view->setStyle(BrowserMetrics::EnlargeSmallPhoto);
    const QColor background = PBThemes::imageBrowserBackgroundColor();
    const QColor frame = PBThemes::imageBrowserSelectColor(view->hasFocus());
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        const QImage image = picture(ratio);
        const auto gap = static_cast<int>(std::lround(ratio));
        const auto line = static_cast<int>(std::lround(2 * ratio));
        for (int item = 0; item < 6; ++item)
            for (const QPoint way : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
                QPoint at = (QPointF(view->widgetRect({0, item}).center()) * ratio).toPoint();
                const auto passed = [&](const QColor& color) {
                    int count = 0;
                    for (; image.pixelColor(at) == color; at += way)
                        ++count;
                    return count;
                };
                EXPECT_GT(passed(Qt::green), 30);
                EXPECT_EQ(passed(background), gap) << ratio << ' ' << item;
                EXPECT_EQ(passed(frame), line) << ratio << ' ' << item;
            }
    }
}

TEST_F(BrowserViewTest, aScrollStepOfWholePixelsMovesAllThatWasDrawn) {
    show({60});
    for (const auto& item : tree->tree[0]->imageFiles())
        item->setThumbnailRef(plain(QColor::fromHsv(static_cast<int>(item->fileId() * 5), 99, 99)));
    const auto drawnAt = [&](double y) {
        scrollView.scrollToPosition(y, false);
        const QImage image = picture(1.5);
        return image.copy(0, 36, image.width(), image.height() - 36); // without the head
    };
    for (const int from : {24, 25}) {
        const QImage before = drawnAt(from), after = drawnAt(from + 100);
        const QSize kept(after.width(), after.height() - 150);
        EXPECT_EQ(after.copy(QRect({}, kept)), before.copy(QRect({0, 150}, kept))) << from;
    }
}

TEST_F(BrowserViewTest, aNameIsShortenedWhereItsNeighboursHaveTheSame) {
    show({3});
    view->setStyle(BrowserMetrics::FileName);
    tree->item(0, 1)->setFileName(u"Norway in the autumn first tour and some more.jpg"_s);
    const auto shown = [&](const QString& before, const QString& behind) {
        tree->item(0, 0)->setFileName(before);
        tree->item(0, 2)->setFileName(behind);
        return picture().copy(QRect(nameAt({0, 1}) - QPoint(83, 7), QSize(166, 14)));
    };
    const QImage alone = shown(u"Sea"_s, u"Lake"_s);
    EXPECT_NE(shown(u"Norway in the autumn of last year"_s, u"Lake"_s), alone);
    EXPECT_NE(shown(u"Sea"_s, u"Norway in the autumn on foot"_s), alone);
}

TEST_F(BrowserViewTest, aPaintLoadsForEightMillisecondsAndTheQueueTheRest) {
    show({12});
    // The clock is looked at when a paint begins and twice for each cell without a thumbnail.
    for (const auto& [look, most] : {std::pair(0.00114, 4), {0.00115, 3}, {0.009, 0}}) {
        services.thumbnails.takeAsked();
        tick = look;
        picture();
        EXPECT_EQ(services.thumbnails.takeAsked().size(), most) << look;
        for (const int row : {60, 300}) // its parts have no more together
            view->update(0, row, view->width(), 9);
        paints.take();
        EXPECT_EQ(services.thumbnails.takeAsked().size(), most) << look;
    }
    // What it misses is drawn when it comes from the preload queue.
    tick = 0.009;
    for (const auto& item : tree->tree[0]->imageFiles())
        services.preloaded.insert(item->fileId(), plain(Qt::green));
    picture();
    paints.region = {};
    EXPECT_TRUE(support::spinUntil([&] { return tree->item(0, 0)->hasThumbnail(); }));
    EXPECT_TRUE(paints.take().contains(at({0, 0})));
    EXPECT_EQ(picture().pixelColor(at({0, 0})), QColor(Qt::green));
}

TEST_F(BrowserViewTest, onlyThePixelsThatCellsNeedAreKept) {
    show({12});
    const auto& item = tree->item(0, 0);
    const auto& turned = tree->item(0, 1);
    turned->setRotateAngle(90);
    for (const auto& each : tree->tree[0]->imageFiles()) {
        services.thumbnails.insert(each->fileId(), plain(Qt::red, {240, 160}));
        services.preloaded.insert(each->fileId(), plain(Qt::green, {240, 160}));
    }
    resizeThumbnails(90);
    picture();
    for (const auto& each : {item, turned})
        EXPECT_EQ(each->thumbnailRef().size(), QSize(90, 60));
    // Those of larger cells come when they are there; until then there are the smaller ones.
    resizeThumbnails(150);
    EXPECT_EQ(picture().pixelColor(at({0, 0})), QColor(Qt::red));
    for (const auto& each : {item, turned})
        EXPECT_TRUE(support::spinUntil([&] { return each->thumbnailRef().width() == 150; }));
    EXPECT_EQ(picture().pixelColor(at({0, 0})), QColor(Qt::green));
    resizeThumbnails(90);
    picture();
    EXPECT_EQ(item->thumbnailRef().width(), 150); // they are as good for smaller ones
    resizeThumbnails(256);
    picture();
    EXPECT_TRUE(support::spinUntil([&] { return turned->thumbnailRef().width() == 240; }));
}

TEST_F(BrowserViewTest, imagesOnShowAreDecodedWhereThereIsNoThumbnailOrATooSmallOne) {
    std::map<qint64, int> made; // importers by file id
    services.makeImporter = [&](const PBImageFileItem& item) {
        ++made[item.fileId()];
        const bool isGood = item.fileId() != 2;
        const auto read = [isGood](const codec::DecodeRequest& request, const std::stop_token&) {
            if (!isGood) return codec::ReadResult();
            const QSize size(request.maxSize, request.maxSize * 2 / 3);
            return codec::ReadResult{codec::ReadStatus::Decoded, {.image = plain(Qt::blue, size)}};
        };
        auto importer = std::make_unique<support::FakeImporter>(read);
        if (isGood) importer->embedded = plain(Qt::green, {150, 100});
        return importer;
    };
    const auto counts = [&] {
        return std::vector{made[1], made[2], made[3], made[4], made[6], made[60]};
    };
    show({60});
    // A step that shows nothing but space between rows drops what is being read.
    const QRectF row = view->browserLayout().cellRectAtIndex({0, 30});
    services.preloadQueue.setSuspended(true);
    scrollView.scrollToPosition(row.top() - 8 - view->height(), false);
    ASSERT_TRUE(support::spinUntil([&] { return made[30] == 1; }));
    scrollView.scrollToPosition(position() + 1, false);
    EXPECT_TRUE(support::spinUntil([&] { return made[30] == 2; })) << "it is asked for again";
    services.preloadQueue.setSuspended(false);
    made.clear();
    scrollView.scrollToPosition(0, false);
    const auto& first = tree->item(0, 0);
    const auto& last = tree->item(0, 5); // of those on show
    const auto colour = [&](std::int64_t item) { return picture().pixelColor(at({0, item})); };
    // The camera's small pictures stand in until thumbnails are there.
    EXPECT_NE(colour(0), QColor(Qt::green));
    ASSERT_TRUE(support::spinUntil([&] { return colour(5) == QColor(Qt::green); }));
    EXPECT_EQ(colour(0), QColor(Qt::green));
    EXPECT_NE(colour(1), QColor(Qt::green)) << "its file holds none";
    EXPECT_FALSE(first->hasThumbnail()) << "it is no thumbnail";
    EXPECT_EQ(counts(), (std::vector{1, 1, 1, 1, 1, 0}));
    tree->item(0, 2)->setImageSize({120, 80}); // no more pixels than are stored
    for (const auto& each : tree->tree[0]->imageFiles()) {
        const QSize stored = each->fileId() == 4 ? QSize(160, 107) : QSize(120, 80);
        services.thumbnails.insert(each->fileId(), plain(Qt::red, stored));
        view->buildThumbDidFinish(each->fileId());
    }
    EXPECT_EQ(colour(0), QColor(Qt::red));
    const auto isSharp = [](const auto& item) { return item->thumbnailRef().width() == 160; };
    EXPECT_TRUE(support::spinUntil([&] { return isSharp(first) && isSharp(last); }));
    EXPECT_EQ(colour(0), QColor(Qt::blue));
    // One that was dropped comes from the catalogue, and is decoded again.
    last->clearThumbnailRef();
    EXPECT_EQ(colour(5), QColor(Qt::red));
    EXPECT_TRUE(support::spinUntil([&] { return isSharp(last); }));
    EXPECT_EQ(counts(), (std::vector{2, 2, 1, 1, 3, 0})) << "what is unreadable is tried once";
}

TEST_F(BrowserViewTest, whatIsInTheWayOfTravelIsPreloadedFirstAndWhatAPaintMissedBeforeIt) {
    show({300});
    platform::OperationQueue& queue = services.preloadQueue;
    const auto asked = [&] {
        queue.setSuspended(false);
        queue.waitUntilAllOperationsAreFinished();
        queue.setSuspended(true);
        return services.preloaded.takeAsked();
    };
    asked();
    const auto idsBetween = [&](double top, double bottom) {
        QList<qint64> ids;
        view->browserLayout().forEachVisible(top, bottom, [&](Index index) {
            ids += view->leaves().imageFileAtIndex(index)->fileId();
        });
        return ids;
    };
    const double half = scrollView.viewport()->height() / 2.0;
    for (const int way : {9, -9}) {            // down, then up
        for (int step = -2; step <= 0; ++step) // each drops the earlier wishes
            scrollView.scrollToPosition(3000 + step * way, false);
        auto ahead = idsBetween(3000 + 2 * half, 3000 + 3 * half);
        auto behind = idsBetween(3000 - half, 3000);
        if (way < 0) std::swap(ahead, behind);
        EXPECT_EQ(asked(), ahead + behind);
        picture();
        EXPECT_EQ(queue.operationCount(), 0U); // nothing was missed
        tick = 0.009;
        picture();
        tick = 0;
        EXPECT_EQ(asked(), idsBetween(3000, 3000 + 2 * half) + ahead);
    }
    services.largeView = true;
    scrollView.scrollToPosition(3200, false);
    EXPECT_EQ(queue.operationCount(), 0U); // nothing new is wished for
    services.largeView = false;
    for (const auto& item : tree->tree[0]->imageFiles())
        item->setThumbnailRef(plain(Qt::green));
    scrollView.scrollToPosition(3300, false);
    EXPECT_EQ(queue.operationCount(), 0U);
}

TEST_F(BrowserViewTest, buildsOfWhatIsOnShowComeFirstAndThenThePageAhead) {
    show({300});
    using enum platform::QueuePriority;
    for (const auto& item : tree->tree[0]->imageFiles())
        services.buildQueue.addOperation(std::make_shared<FakeBuild>(item->fileId()));
    scrollView.scrollToPosition(3000, false);
    const BrowserRange shown = view->browserLayout().visibleRange(3000, 3500);
    const std::int64_t middle = (shown.begin.item + shown.end.item) / 2;
    const std::int64_t page = shown.end.item - shown.begin.item + 1;
    // Of an image a page above, one on show, and one a page below.
    const auto priorities = [&] {
        QList<platform::QueuePriority> found;
        for (const std::int64_t item : {middle - page, middle, middle + page})
            for (const auto& operation : services.buildQueue.operations())
                if (operation->keys()[0] == tree->item(0, static_cast<int>(item))->fileId())
                    found += operation->queuePriority();
        return found;
    };
    EXPECT_EQ(priorities(), (QList{Normal, Normal, Normal})); // soon after the step, not within it
    EXPECT_TRUE(support::spinUntil([&] { return priorities() == QList{Normal, VeryHigh, High}; }));
    scrollView.scrollToPosition(2990, false); // upwards
    view->adjustBuildThumb();
    EXPECT_EQ(priorities(), (QList{High, VeryHigh, Normal}));
    services.largeView = true;
    scrollView.scrollToPosition(3000, false);
    view->adjustBuildThumb();
    EXPECT_EQ(priorities(), (QList{High, VeryHigh, Normal}));
    services.largeView = false;
    services.buildQueue.cancelAllOperations();
    std::promise<void> end;
    services.buildQueue.addOperation([&] { end.get_future().wait(); });
    services.buildQueue.setSuspended(false);
    view->adjustBuildThumb();
    EXPECT_FALSE(services.buildQueue.isSuspended());
    scrollView.scrollToPosition(900, true);
    EXPECT_TRUE(services.buildQueue.isSuspended()); // during a motion
    finishMotion();
    EXPECT_FALSE(services.buildQueue.isSuspended());
    end.set_value();
    services.buildQueue.waitUntilAllOperationsAreFinished();
}

TEST_F(BrowserViewTest, onlyWhatIsNewIsPainted) {
    show({300});
    paints.take();
    view->buildThumbDidFinish(tree->item(0, 299)->fileId());
    services.largeView = true;
    view->buildThumbDidFinish(tree->item(0, 1)->fileId());
    EXPECT_TRUE(paints.take().isEmpty());
    services.largeView = false;
    services.thumbnails.insert(tree->item(0, 1)->fileId(), plain(Qt::green));
    view->buildThumbDidFinish(tree->item(0, 1)->fileId());
    EXPECT_EQ(paints.take(), view->widgetRect({0, 1}).adjusted(-7, -7, 7, 7)); // with its shadow
    // Scaled in a hurry, it is painted once more as soon as there is time.
    tree->item(0, 1)->setThumbnailRef(plain(Qt::red));
    tick = 0.009;
    picture();
    tick = 0;
    paints.region = {};
    EXPECT_TRUE(paints.take().contains(at({0, 1})));
    picture();
    paints.region = {};
    EXPECT_TRUE(paints.take().isEmpty());
    // There is room for all of a page at another screen's scale, too.
    for (int item = 0; item < 12; ++item) {
        tree->item(0, item)->setImageSize({200, 200});
        tree->item(0, item)->setThumbnailRef(plain(Qt::red, {200, 200}));
    }
    view->reloadData();
    paints.take();
    for (const double look : {0.0, 0.009}) {
        tick = look;
        picture(2);
    }
    tick = 0;
    paints.region = {};
    EXPECT_TRUE(paints.take().isEmpty()) << "nothing was drawn in a hurry";
    // A step of the scroller paints what comes into view, and the head.
    scrollView.scrollToPosition(20, false);
    const QRect all = view->rect();
    const QRegion head(0, 0, all.width(), 23), strip(0, all.height() - 20, all.width(), 20);
    EXPECT_EQ(paints.take(), head + strip);
    scrollView.scrollToPosition(5000, false);
    EXPECT_EQ(paints.take(), all);
}

TEST_F(BrowserViewTest, whatIsShortenedHasAToolTipAndAnotherFontIsTakenAtOnce) {
    show({2});
    tree->item(0, 0)->setFileName(u"a name that is longer than its cell <b>.jpg"_s);
    tree->item(0, 1)->setFileName(u"fits_with_little_room.jpg"_s);
    EXPECT_EQ(view->toolTipAt(nameAt({0, 0})), tree->item(0, 0)->fileName());
    for (const QPoint place : {nameAt({0, 1}), at({0, 0}), QPoint(90, 9)})
        EXPECT_EQ(view->toolTipAt(place), QString());
    services.rootTitle = u"Pictures"_s;
    EXPECT_EQ(view->toolTipAt({90, 9}), u"/photos/a"_s) << "the head begins at the root";
    services.rootTitle.clear();
    scrollView.resize(60, 300);
    EXPECT_EQ(view->toolTipAt({40, 9}), view->headText(0));
    scrollView.resize(600, 500);
    QApplication::processEvents();
    const QFont before = QApplication::font();
    QFont wide = before;
    wide.setLetterSpacing(QFont::AbsoluteSpacing, 3);
    for (const auto& [font, name] :
         {std::pair(wide, tree->item(0, 1)->fileName()), {before, QString()}}) {
        QApplication::setFont(font);
        QApplication::processEvents();
        EXPECT_EQ(view->toolTipAt(nameAt({0, 1})), name);
    }
}

TEST_F(BrowserViewTest, wheelAndFingersZoomAndTwoFingersTurnOnceAsTheyClearlyMean) {
    show({30});
    const auto turned = [&](int angle, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        support::sendWheel(*view, {}, {0, angle}, modifiers);
        return view->thumbnailSize();
    };
    EXPECT_EQ(turned(120), 176);
    EXPECT_EQ(turned(-120), 160);
    for (int step = 0; step < 60; ++step)
        turned(2); // of a touchpad
    EXPECT_EQ(turned(0), 176);
    EXPECT_EQ(turned(9 * 120), 256);
    EXPECT_EQ(turned(-99 * 120), 64);
    EXPECT_FALSE(scrollView.isScrolling());
    EXPECT_EQ(turned(120, Qt::NoModifier), 64);
    EXPECT_FALSE(scrollView.isScrolling()) << "upwards at the top";
    on(&View::rotateLeftRequested, [&] { told += u"left"_s; });
    on(&View::rotateRightRequested, [&] { told += u"right"_s; });
    // How many updates, with the turn and the zoom of each, in this order; what is 0 is not sent.
    using Updates = std::tuple<int, double, double>;
    const std::tuple<std::vector<Updates>, QString, double> gestures[] = {
        {{{25, 0.5, 0.01}}, {}, 200},          // a pinch with a turn by accident
        {{{1, -30, 0.25}}, {}, 200},           // at once
        {{{2, -7.4, 0.02}}, {}, 160},          // neither
        {{{20, -2, 0.003}}, u"left"_s, 160},   // clockwise is positive
        {{{8, 1.9, -0.003}}, u"right"_s, 160}, // decided by its end only
        {{{10, 3, 0}, {20, 0, 0.05}, {10, -9, 0}}, u"right"_s, 160},
        {{{9, 0, 0.25}, {1, 0, -2}, {9, 20, 0}}, {}, 200}, // beyond the largest and back
        {{{9, 0, -0.1}}, {}, 64}};
    for (const auto& [updates, turns, size] : gestures) {
        resizeThumbnails(160);
        const int anchor = view->widgetRect({0, 4}).center().y();
        support::sendGesture(*view, Qt::BeginNativeGesture);
        for (const auto& [count, turn, zoom] : updates)
            for (int update = 0; update < count; ++update) {
                if (turn != 0) support::sendGesture(*view, Qt::RotateNativeGesture, turn);
                if (zoom != 0) support::sendGesture(*view, Qt::ZoomNativeGesture, zoom);
            }
        support::sendGesture(*view, Qt::EndNativeGesture);
        support::sendGesture(*view, Qt::RotateNativeGesture, 90); // outside of a gesture
        support::sendGesture(*view, Qt::ZoomNativeGesture, 9);
        EXPECT_EQ(std::exchange(told, {}).join(u' '), turns) << std::get<1>(updates[0]);
        EXPECT_EQ(view->thumbnailSize(), size) << std::get<1>(updates[0]);
        if (size > 64) { // else all of them fit
            EXPECT_NEAR(view->widgetRect({0, 4}).center().y(), anchor, 1);
        }
    }
}
