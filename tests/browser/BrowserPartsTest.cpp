#include "BrowserViewFixture.h"

#include "browser/PBImageBrowserTipView.h"
#include "browser/painting/MovableRows.h"
#include "ui/DragOut.h"

#include <QElapsedTimer>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>

namespace {

TEST(TipViewTest, whatCoversTheBrowserFitsTheWindowAndOffersWhatHelps) {
    using View = PBImageBrowserTipView;
    View view;
    QStringList asked;
    QObject::connect(
        &view, &View::suggestedFolderRequested, &view, [&](const QString& path) { asked += path; });
    auto* add = view.findChild<QPushButton*>(u"addFolder"_s);
    auto* suggestion = view.findChild<QPushButton*>(u"addSuggestedFolder"_s);
    const auto shown = [&] { return std::pair(add->isVisible(), suggestion->isVisible()); };
    view.setTipKind(1);
    EXPECT_EQ(shown(), std::pair(true, false));
    view.setSuggestedFolder(u"/home/me/Pictures"_s);
    EXPECT_EQ(shown(), std::pair(true, true));
    EXPECT_EQ(view.focusWidget(), suggestion);
    EXPECT_TRUE(suggestion->text().contains(u"Pictures") && !suggestion->text().contains(u'/'));
    EXPECT_EQ(suggestion->toolTip(), u"/home/me/Pictures");
    suggestion->click();
    EXPECT_EQ(asked, QStringList{u"/home/me/Pictures"_s});
    const auto* indicator = view.findChild<QProgressBar*>();
    EXPECT_TRUE(support::spinUntil([&] { return indicator->isHidden(); }));
    QElapsedTimer elapsed;
    elapsed.start();
    view.setTipKind(4);
    EXPECT_EQ(shown(), std::pair(false, false));
    EXPECT_TRUE(support::spinUntil([&] { return indicator->isVisible(); }));
    EXPECT_GE(elapsed.elapsed(), 235); // a quarter of a second, less what timers may be early
    view.setTipKind(3);
    EXPECT_TRUE(support::spinUntil([&] { return indicator->isHidden(); }));
    auto* clear = view.findChild<QPushButton*>(u"ClearSearch"_s);
    view.setReason({u"None of them"_s, {View::Remedy::ClearSearch}});
    EXPECT_TRUE(clear->isVisible() && view.findChild<QPushButton*>(u"ShowAll"_s)->isHidden());
    view.setTipKind(2); // where a reason of the former folder says nothing
    EXPECT_TRUE(clear->isHidden());
}

TEST(DragOutTest, carriesFilesAndTextUnderATurnedPictureWithTheCountOfMany) {
    const auto data = DragOut::mimeData({u"/a b"_s, u"/c"_s});
    EXPECT_EQ(data->text(), u"/a b\n/c");
    EXPECT_EQ(data->urls().constFirst(), QUrl(u"file:///a%20b"_s));
    const QImage turned = DragOut::picture(redAndBlue({40, 20}), {60, 120}, 90, 1, 1);
    EXPECT_GT(turned.pixelColor(30, 4).blue(), 200); // counter-clockwise: the right is on top
    EXPECT_GT(turned.pixelColor(4, 115).red(), 200);
    const auto badge = [](qsizetype count) {
        return DragOut::picture(plain(Qt::green), {60, 60}, 0, count, 1).pixelColor(40, 8);
    };
    EXPECT_GT(badge(1).green(), 200);
    EXPECT_LT(badge(2).green(), 120);
}

TEST(PreparedThumbnailsTest, keepsOnePictureForEachSizeAndTurn) {
    PreparedThumbnails prepared;
    const QImage thumbnail = redAndBlue({40, 20});
    const auto kept = [&](QSize size, double angle) {
        return !prepared.picture(thumbnail, size, angle, false).isNull();
    };
    EXPECT_TRUE(prepared.picture(thumbnail, {0, 5}, 0, true).isNull());
    const QImage first = prepared.picture(thumbnail, {20, 10}, 0, true);
    EXPECT_EQ(prepared.picture(thumbnail, {20, 10}, 360, true).cacheKey(), first.cacheKey());
    EXPECT_FALSE(kept({20, 10}, 180) || kept({10, 20}, 90));
    const QImage turned = prepared.picture(thumbnail, {10, 20}, -270, true);
    EXPECT_EQ(turned.size(), QSize(10, 20));
    EXPECT_EQ(turned.pixelColor(5, 2), QColor(Qt::blue));
    EXPECT_TRUE(kept({10, 20}, 90));
    EXPECT_EQ(quarterTurns(135), 0); // other angles are the painter's
    prepared.setCapacity(8 << 20);
    static_cast<void>(prepared.picture(thumbnail, {1000, 1000}, 0, true));
    EXPECT_TRUE(kept({20, 10}, 0) && kept({1000, 1000}, 0));
    prepared.setCapacity(0); // one mebibyte is left in any case
    EXPECT_FALSE(kept({1000, 1000}, 0));
}

TEST(MovableRowsTest, aStepOfWholePixelsMovesWhatLiesBelowTheHeadAtAnyScale) {
    const struct {
        double distance, ratio;
        int top, row; // 0: all is painted
    } steps[] = {{20, 1, 0, 23}, {3, 1, 7, 23},     {20, 1.5, 0, 24}, {-20, 1.5, 1, 23},
                 {3, 1.5, 0, 0}, {20, 1.25, 0, 24}, {8, 1.25, 2, 26}, {6, 1.25, 0, 0},
                 {7, 2, 0, 23},  {0.5, 2, 0, 0},    {10, 1.1, 4, 26}, {276, 1, 0, 23},
                 {277, 1, 0, 0}, {-277, 1, 0, 0},   {276, 1.5, 0, 0}};
    for (const auto& [distance, ratio, top, row] : steps) {
        EXPECT_EQ(firstMovableRow(distance, ratio, top, 300).value_or(0), row)
            << distance << ' ' << ratio << ' ' << top;
    }
}

} // namespace

TEST_F(BrowserViewTest, keysAndButtonsMeanNoMoreThanTheirOwn) {
    show({9, 9, 90});
    on(&View::contextMenuRequested, [&](bool isOnItem, const QPoint& point) {
        const QPoint place = view->mapFromGlobal(point);
        told += u"%1 %2 %3"_s.arg(isOnItem).arg(place.x()).arg(place.y());
    });
    askForMenu(QContextMenuEvent::Keyboard, {7, 8});
    click(at({0, 1}));
    click(at({0, 2}), Qt::ShiftModifier);
    EXPECT_EQ(tree->selected(), u"a1 a2");
    const QPoint centre = view->widgetRect({0, 2}).center();
    askForMenu(QContextMenuEvent::Keyboard, {7, 8});
    askForMenu(QContextMenuEvent::Mouse, {200, 10}); // a head has none
    const QStringList menus{u"0 7 8"_s, u"1 %1 %2"_s.arg(centre.x()).arg(centre.y())};
    EXPECT_EQ(std::exchange(told, {}), menus);
    support::sendMouse(*view, QEvent::MouseButtonPress, at({0, 4}), {}, Qt::RightButton);
    EXPECT_EQ(tree->selected(), u"a1 a2");
    press(*view, Qt::Key_B, u"b"_s, Qt::ControlModifier);
    // A menu takes what is under it, if that is not selected; shift goes on from there.
    askForMenu(QContextMenuEvent::Mouse, at({0, 2}));
    EXPECT_EQ(tree->selected(), u"a1 a2");
    askForMenu(QContextMenuEvent::Mouse, at({0, 4}));
    click(at({0, 6}), Qt::ShiftModifier);
    EXPECT_EQ(tree->selected(), u"a4 a5 a6");
    askForMenu(QContextMenuEvent::Mouse, {3, 60});
    EXPECT_EQ(tree->selected(), u"");
    EXPECT_EQ(told.takeLast(), u"0 3 60"_s);
    EXPECT_TRUE(told.size() == 2 && told[0].startsWith(u'1') && told[1].startsWith(u'1'));
    press(*view, Qt::Key_End);
    finishMotion();
    EXPECT_EQ(position(), scrollView.maxScrollPoint().y());
    press(*view, Qt::Key_Home);
    EXPECT_TRUE(scrollView.isScrolling()); // near enough
    finishMotion();
    EXPECT_EQ(position(), 0);
    view->scrollToGroup(-1);
    view->scrollToGroup(9);
    EXPECT_FALSE(scrollView.isScrolling());
    const double second = view->browserLayout().groupItemPosition(1);
    scrollView.scrollToPosition(second - 200, false);
    click({300, 205}); // the head
    EXPECT_TRUE(scrollView.isScrolling());
    finishMotion();
    EXPECT_EQ(position(), second);
    EXPECT_EQ(tree->selected(), u"a0");
    scrollView.scroller().triggerAction(QAbstractSlider::SliderPageStepAdd);
    const double page = scrollView.viewport()->height();
    EXPECT_EQ(scrollView.motion().scrollStopPos(), position() + std::rint(page * 0.75));
}
