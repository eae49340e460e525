#include "shell/commands/FullScreenControl.h"

#include "support/Support.h"

#include <QCursor>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>

namespace {

struct FullScreenControlTest : testing::Test {
    FullScreenControlTest() {
        menuBar.addMenu(u"&File"_s)->addAction(u"Open"_s);
        window.addToolBar(&toolbar);
        toolbar.addWidget(&field);
        window.setCentralWidget(new QWidget);
        window.centralWidget()->setFocusPolicy(Qt::StrongFocus);
        window.centralWidget()->setFocus();
        window.show();
    }
    QString shown() {
        return (menuBar.isVisible() ? u"menus "_s : QString()) +
               (toolbar.isVisible() ? u"tools"_s : QString());
    }
    void moveMouseTo(const QPoint& point) { QCursor::setPos(window.mapToGlobal(point)); }
    [[nodiscard]] bool staysShown() {
        // Looks at the mouse, which it does a few times a second.
        QSignalSpy looks(control.findChild<QTimer*>(), &QTimer::timeout);
        return support::spinUntil([&] { return looks.size() >= 2; }) && shown() != QString();
    }

    bool hideToolbar = false;
    QMainWindow window;
    QMenuBar& menuBar = *window.menuBar();
    QToolBar toolbar;
    QLineEdit field;
    FullScreenControl control{
        {.window = window, .toolbar = toolbar, .hideToolbar = [this] { return hideToolbar; }},
        nullptr};
};

TEST_F(FullScreenControlTest, theBarsGoWithTheWholeScreenAndComeAtItsEdge) {
    QSignalSpy changes(&control, &FullScreenControl::fullScreenDidChange);
    control.showBars(); // of no effect in a window
    hideToolbar = true;
    control.updateBars();
    EXPECT_EQ(shown(), u"menus "_s);
    control.toggle();
    EXPECT_EQ(shown(), QString());
    control.showBars();
    EXPECT_EQ(shown(), u"menus "_s);
    hideToolbar = false;
    moveMouseTo({300, 400});
    EXPECT_TRUE(support::spinUntil([&] { return shown() == QString(); }));
    const QRect content = window.centralWidget()->geometry();
    EXPECT_EQ(content, window.rect());
    QWidget* edge = window.childAt(5, 1);
    ASSERT_TRUE(edge && edge->geometry() == QRect(0, 0, window.width(), 2));
    QEnterEvent enter({5, 1}, {5, 1}, {5, 1});
    QCoreApplication::sendEvent(edge, &enter);
    EXPECT_TRUE(shown() == u"menus tools"_s && edge->isHidden());
    EXPECT_EQ(window.centralWidget()->geometry(), content) << "the bars lie over it";
    moveMouseTo(toolbar.mapTo(&window, toolbar.rect().bottomLeft()));
    EXPECT_TRUE(staysShown());

    moveMouseTo({300, 400});
    EXPECT_TRUE(support::spinUntil([&] { return shown() == QString(); }));
    window.activateWindow();
    QTest::keyClick(&window, Qt::Key_X, Qt::AltModifier);
    EXPECT_EQ(shown(), QString());
    QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier);
    EXPECT_EQ(shown(), u"menus tools"_s);
    ASSERT_TRUE(QApplication::activePopupWidget());
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    EXPECT_TRUE(!QApplication::activePopupWidget() && control.isFullScreen());
    QTest::keyClick(&menuBar, Qt::Key_Escape); // its keys are on until then

    control.showBars();
    window.activateWindow();
    field.setFocus();
    ASSERT_TRUE(support::spinUntil([&] { return field.hasFocus(); }));
    EXPECT_TRUE(staysShown()) << "somebody types";
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_Escape, Qt::Key_Escape}) { // the last is nobody's
        QTest::keyClick(&window, key);
        EXPECT_EQ(control.isFullScreen(), key == Qt::Key_A);
    }
    EXPECT_EQ(changes, (QList<QList<QVariant>>{{true}, {false}}));
    EXPECT_EQ(shown(), u"menus tools"_s);
    EXPECT_GT(window.centralWidget()->y(), menuBar.height());
}

} // namespace
