#include "platform/tasks/MainLoop.h"
#include "support/Mouse.h"
#include "ui/FlagFeedback.h"
#include "ui/PBModalTextField.h"
#include "ui/PBOutlineView.h"
#include "ui/PBSplitView.h"
#include "ui/SearchField.h"

#include <QPointer>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

namespace {

using support::sendMouse;

struct PBSplitViewTest : testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Fixed, PBSplitViewTest, testing::Values(0, 1));

TEST_P(PBSplitViewTest, onePaneKeepsItsSizeUntilTheDividerIsDraggedOrMovesByItself) {
    const int fixed = GetParam();
    PBSplitView view(Qt::Horizontal);
    view.setPanes(new QWidget, new QWidget, fixed, {100, 200}, 150);
    view.resize(600 + view.handleWidth(), 300);
    view.show();
    EXPECT_EQ(view.widget(fixed)->minimumWidth(), 100);
    EXPECT_EQ(view.widget(1 - fixed)->minimumWidth(), 150);
    const std::pair<int, int> sizes[] = {{5000, 200}, {1, 100}, {0, 0}, {120, 120}};
    for (const auto& [wanted, held] : sizes) {
        view.setFixedPaneSize(wanted);
        EXPECT_EQ(std::pair(view.fixedPaneSize(), view.length()), std::pair(held, 600)) << wanted;
        EXPECT_EQ(view.isPaneCollapsed(fixed), held == 0);
    }
    const QSignalSpy resizes(&view, &PBSplitView::splitViewDidResizeSubviews);
    view.resize(view.width() + 90, 300);
    EXPECT_EQ(std::pair(view.fixedPaneSize(), view.length()), std::pair(120, 690));
    EXPECT_GE(resizes.size(), 1);
    // The divider follows the mouse from where it is held, until it is let go.
    const QSignalSpy releases(&view, &PBSplitView::dividerReleased);
    const int before = view.splitPosition();
    const auto send = [&](QEvent::Type type, int distance) {
        QWidget& divider = *view.handle(1);
        sendMouse(divider, type, divider.mapFrom(&view, QPointF(before + distance + 2, 50)));
        return view.splitPosition() - before;
    };
    const platform::MainLoop& loop = *platform::MainLoop::instance();
    send(QEvent::MouseButtonPress, 0);
    EXPECT_TRUE(loop.isTracking());
    for (const int distance : {0, 10})
        EXPECT_EQ(send(QEvent::MouseMove, distance), distance);
    send(QEvent::MouseButtonRelease, 10);
    EXPECT_FALSE(loop.isTracking());
    EXPECT_EQ(send(QEvent::MouseMove, -10), 10);
    EXPECT_EQ(releases.size(), 1);
    // By itself it passes the limits and takes no mouse.
    int ends = 0;
    const int end = fixed == 0 ? 0 : 690;
    view.animateToPosition(end, [&] { ++ends; });
    ASSERT_TRUE(view.isAnimationRunning());
    const int position = send(QEvent::MouseButtonPress, 0);
    EXPECT_EQ(send(QEvent::MouseMove, fixed == 0 ? 30 : -30), position);
    ASSERT_TRUE(support::spinUntil([&] { return ends > 0; }));
    EXPECT_EQ(view.splitPosition(), end);
    view.hide();
    view.animateToPosition(300, [&] { ends += 10; });
    EXPECT_EQ(ends, 11); // at once
}

TEST_P(PBSplitViewTest, onePaneGivesWayWhileTheOtherLacksRoomAndComesBack) {
    const int fixed = GetParam();
    PBSplitView view(Qt::Horizontal);
    view.setPanes(new QWidget, new QWidget, fixed, {100, 200}, 120);
    view.setRoomKept(300);
    view.show();
    const auto sizeAt = [&](int length) {
        view.resize(length + view.handleWidth(), 300);
        return view.fixedPaneSize();
    };
    EXPECT_GT(sizeAt(500), 100) << "nobody asked for anything";
    view.setFixedPaneSize(180);
    for (const auto& [length, size] : {std::pair(480, 180), {450, 150}, {390, 100}, {250, 100}})
        EXPECT_EQ(sizeAt(length), size) << length;
    EXPECT_EQ(view.askedPaneSize(), 180);
    EXPECT_EQ(sizeAt(600), 180);
    view.setSplitPosition(fixed == 0 ? 130 : 470);
    EXPECT_EQ(sizeAt(410), 110);
    view.setFixedPaneSize(0);
    EXPECT_EQ(sizeAt(900), 0);
    EXPECT_EQ(view.askedPaneSize(), 130);
}

TEST(PBModalTextFieldTest, whatIsMeantForOthersEndsNothingAndTheFirstAnswerAll) {
    QWidget window;
    window.resize(300, 200);
    window.show();
    const QPointF place{5, 5};
    QPointer field = new PBModalTextField(7, u".hidden"_s, &window);
    field->setGeometry(100, 100, 80, 20);
    field->show();
    QStringList told;
    QObject::connect(field, &PBModalTextField::ended, &window, [&] { told += u"end"_s; });
    QObject::connect(
        field, &PBModalTextField::textFieldDidFinished, &window,
        [&](int tag, const QString& text) { told += QString::number(tag) + text; });
    field->selectBaseName();
    EXPECT_EQ(field->selectedText(), u".hidden"); // no extension
    QWidget other;
    other.show();
    sendMouse(other, QEvent::MouseButtonPress, other.mapFromGlobal(window.mapToGlobal(place)));
    sendMouse(*field, QEvent::MouseButtonPress, place);
    const auto leave = [&](Qt::FocusReason reason) {
        QFocusEvent event(QEvent::FocusOut, reason);
        QApplication::sendEvent(field, &event);
    };
    leave(Qt::PopupFocusReason);
    leave(Qt::ActiveWindowFocusReason);
    EXPECT_TRUE(support::claimsShortcut(*field, Qt::Key_F2) && told.isEmpty());
    leave(Qt::TabFocusReason);
    EXPECT_EQ(told, (QStringList{u"end"_s, u"7.hidden"_s}));
    sendMouse(window, QEvent::MouseButtonPress, place);
    field->cancel();
    EXPECT_EQ(told.size(), 2); // the first answer is the only one
    EXPECT_TRUE(support::spinUntil([&] { return !field; }));
    sendMouse(window, QEvent::MouseButtonPress, place);
}

TEST(PBOutlineViewTest, titlesAreNeverSelectedAndTheWindowsShortcutsLeftToIt) {
    QStandardItemModel model;
    for (const bool isTitle : {true, false, true, false, false, true}) {
        auto* row = new QStandardItem(u"row"_s);
        if (isTitle) row->setFlags(Qt::ItemIsEnabled);
        model.appendRow(row);
    }
    PBOutlineView view;
    view.setModel(&model);
    view.resize(200, 300);
    view.show();
    view.setCurrentIndex(model.index(1, 0));
    const QSignalSpy pressed(&view, &PBOutlineView::selectedRowPressed);
    const auto press = [&](int row) {
        const QPointF point = view.visualRect(model.index(row, 0)).center();
        sendMouse(*view.viewport(), QEvent::MouseButtonPress, point);
    };
    const std::pair<Qt::Key, int> keys[] = {
        {Qt::Key_Up, 1}, {Qt::Key_Down, 3}, {Qt::Key_Down, 4}, {Qt::Key_Down, 4}, {Qt::Key_Up, 3}};
    for (const auto& [key, row] : keys) {
        QTest::keyClick(&view, key);
        EXPECT_EQ(view.currentIndex().row(), row);
    }
    press(2);
    EXPECT_TRUE(view.selectionModel()->isSelected(model.index(3, 0)));
    for (int times = 0; times < 2; ++times) {
        press(4);
        EXPECT_EQ(pressed.size(), times);
    }
    // A row that goes takes its selection along.
    view.setCurrentIndex(model.index(3, 0));
    model.removeRow(4);
    model.removeRow(0);
    EXPECT_EQ(view.currentIndex().row(), 2);
    model.removeRows(2, 2);
    EXPECT_FALSE(view.currentIndex().isValid() || view.selectionModel()->hasSelection());
    for (const int key : {Qt::Key_C, Qt::Key_V, Qt::Key_A})
        for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
            QKeyEvent event(type, key, Qt::ControlModifier);
            event.accept();
            QApplication::sendEvent(&view, &event);
            EXPECT_FALSE(event.isAccepted()) << key;
        }
}

TEST(SearchFieldTest, tellsOfWhatIsTypedOnlyAndEscapeEmptiesIt) {
    SearchField field(u"Search"_s);
    QStringList told;
    QObject::connect(&field, &SearchField::searchChanged, &field, [&](const QString& text) {
        told += u'>' + text;
    });
    QObject::connect(&field, &SearchField::finished, &field, [&] { told += u"done"_s; });
    field.show();
    field.showText(u"shown"_s);
    field.focusSearch();
    const QAction* clear = field.actions().constFirst();
    EXPECT_TRUE(clear->isVisible() && told.isEmpty());
    QTest::keyClick(&field, Qt::Key_X);
    QTest::keyClick(&field, Qt::Key_Down);
    EXPECT_TRUE(support::claimsShortcut(field, Qt::Key_Escape));
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(told.join(u' '), u">x done > done");
    EXPECT_FALSE(clear->isVisible());
}

TEST(FlagFeedbackTest, theFlagGrowsSlowingDownOrShrinksGatheringSpeedAndGoes) {
    using Row = std::tuple<double, double, double>;
    for (const auto& [seconds, set, cleared] :
         {Row(-1, 0, 60), Row(0.125, 34.6875, 59.0625), Row(0.375, 59.0625, 34.6875),
          Row(9, 60, 0)}) {
        EXPECT_NEAR(FlagFeedback::sideAfter(seconds, true), set, 1e-9) << seconds;
        EXPECT_NEAR(FlagFeedback::sideAfter(seconds, false), cleared, 1e-9) << seconds;
    }
    QWidget view;
    view.resize(201, 100);
    double now = 7;
    const QPointer<QWidget> flag(new FlagFeedback(view, true, [&] { return now; }));
    EXPECT_EQ(flag->geometry(), QRect(70, 20, 60, 60));
    now = 7.5;
    EXPECT_TRUE(support::spinUntil([&] { return !flag; }));
    FlagFeedback::showOver(view, true);
    FlagFeedback::showOver(view, false);
    EXPECT_EQ(view.children().size(), 1) << "the next one takes the place of the last";
}

} // namespace
