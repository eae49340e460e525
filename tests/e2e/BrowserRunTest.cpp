#include "e2e/Program.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

namespace {

using e2e::DragPartner;
using e2e::State;

/// At the right of the program's window.
constexpr QRect besides(1250, 200, 300, 300);

class BrowserRunTest : public e2e::ProgramTest {
protected:
    /// A point of the sheet that no image is at, left of the given one.
    QPoint besidesItem(const QString& name) const {
        const QRect cell = item(name).cell;
        return {state().browserRect().left() + 2, cell.center().y()};
    }
};

TEST_F(BrowserRunTest, clicksAndKeysSelectAndTheSearchFieldNarrows) {
    makePictures(u"sea"_s, numbered(u"a"_s, 40));
    makePictures(u"woods"_s, {u"birch.png"_s, u"oak.png"_s});
    start();
    const auto columns = static_cast<int>(state().browser(u"columns"_s).toInt());
    ASSERT_GE(columns, 3);

    click(u"a01.png"_s);
    EXPECT_TRUE(waitForSelection(u"a01.png"_s));
    click(u"a03.png"_s, {u"shift"_s});
    EXPECT_TRUE(waitForSelection(u"a01.png a02.png a03.png"_s));
    click(u"a02.png"_s, {u"ctrl"_s});
    EXPECT_TRUE(waitForSelection(u"a01.png a03.png"_s));
    desktop.click(besidesItem(u"a01.png"_s));
    EXPECT_TRUE(waitForSelection(QString()));

    click(u"a00.png"_s);
    desktop.key(u"Down"_s);
    const QStringList sea = numbered(u"a"_s, 40);
    EXPECT_TRUE(waitForSelection(sea[columns]));
    desktop.key(u"shift+Right"_s);
    EXPECT_TRUE(waitForSelection(sea[columns] + u' ' + sea[1 + columns]));
    desktop.key(u"End"_s);
    EXPECT_TRUE(waitForSelection(u"oak.png"_s));
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && s.scroll() > 0 && !s.item(u"oak.png"_s).name.isEmpty();
    }));
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(sea.first()));
    EXPECT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() == 0; }));
    desktop.type(u"oa"_s);
    EXPECT_TRUE(waitForSelection(u"oak.png"_s));
    desktop.key(u"ctrl+a"_s);
    EXPECT_TRUE(waitFor([](const State& s) { return s.browser(u"selectCount"_s).toInt() == 42; }));

    // Every key in the search field narrows; Escape goes back to all, and gives the keys back.
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"a1"_s);
    EXPECT_TRUE(shows(10));
    desktop.type(u"7"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(shows(42));
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(sea.first()));
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"OAK"_s);
    EXPECT_TRUE(shows(1));
    desktop.key(u"Return"_s);
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(u"oak.png"_s));
}

TEST_F(BrowserRunTest, aBandSelectsAndScrollsAndTheWheelMovesOn) {
    makePictures(u"sea"_s, numbered(u"a"_s, 60));
    start();
    const QRect browser = state().browserRect();
    desktop.drag(besidesItem(u"a00.png"_s), item(u"a01.png"_s).picture.center());
    EXPECT_TRUE(waitForSelection(u"a00.png a01.png"_s));
    // Below the view the sheet comes up while the mouse lies still.
    desktop.move({browser.right() - 30, browser.bottom() + 60});
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.scroll() > 900 && s.browser(u"selectCount"_s).toInt() > 30;
    }));
    desktop.move({browser.right() - 30, browser.center().y()});
    desktop.release();
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && !s.browser(u"dragging"_s).toBool() &&
               s.browser(u"selectCount"_s).toInt() < 60;
    }));
    const double before = state().scroll();
    desktop.wheel(-3);
    EXPECT_TRUE(waitFor([&](const State& s) { return s.isAtRest() && s.scroll() < before - 100; }));
}

TEST_F(BrowserRunTest, aNameIsEditedInPlace) {
    makePictures(u"sea"_s, {u"first.png"_s, u"second.png"_s});
    start();
    const auto isRenaming = [](const QString& text) {
        return [text](const State& s) { return s.browser(u"renaming"_s).toString() == text; };
    };
    desktop.click(item(u"first.png"_s).label.center());
    ASSERT_TRUE(waitFor(isRenaming(u"first.png"_s)));
    desktop.type(u"third"_s); // in place of the name without its extension
    ASSERT_TRUE(waitFor(isRenaming(u"third.png"_s)));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([](const State& s) { return s.browser(u"renaming"_s).isNull(); }));
    EXPECT_EQ(filesOnDisk(), (QStringList{u"sea/first.png"_s, u"sea/second.png"_s}));
    // The keys are back with the browser.
    desktop.key(u"End"_s);
    EXPECT_TRUE(waitForSelection(u"second.png"_s));
}

TEST_F(BrowserRunTest, picturesAreDraggedOutAndFoldersIn) {
    makePictures(u"sea"_s, numbered(u"a"_s, 4));
    start();
    const QStringList before = filesOnDisk();
    click(u"a01.png"_s);
    click(u"a02.png"_s, {u"ctrl"_s});
    ASSERT_TRUE(waitForSelection(u"a01.png a02.png"_s));
    // A pointer that is on its way to the middle of its goal.
    int steps = 0;
    const auto trembleAt = [&](QPoint point) {
        return [this, &steps, point] { desktop.move(point + QPoint(++steps % 5, 0)); };
    };
    {
        DragPartner target(desktop, besides);
        const QPoint start = item(u"a02.png"_s).picture.center();
        desktop.drag(start, start + QPoint(30, 20));
        ASSERT_TRUE(waitFor([](const State& s) { return s.browser(u"dragOut"_s).toBool(); }));
        ASSERT_TRUE(target.waitForEvent(u"entered"_s, trembleAt(target.centre())));
        desktop.release();
        ASSERT_TRUE(target.waitForEvent(u"done"_s));
        EXPECT_TRUE(target.events().contains(u"dropped "_s + photo(u"sea/a01.png"_s)));
        EXPECT_TRUE(target.events().contains(u"dropped "_s + photo(u"sea/a02.png"_s)));
        EXPECT_EQ(target.events().filter(u"dropped"_s).size(), 2);
    }
    EXPECT_TRUE(waitFor([](const State& s) { return !s.browser(u"dragging"_s).toBool(); }));
    EXPECT_EQ(filesOnDisk(), before);

    makePictures(u"../more"_s, {u"added.png"_s});
    const QString more = QDir::cleanPath(photo(u"../more"_s));
    DragPartner source(desktop, besides, more);
    const QPoint goal = state().browserRect().center();
    desktop.drag(source.centre(), source.centre() - QPoint(40, 0));
    ASSERT_TRUE(source.waitForEvent(u"dragging"_s, trembleAt(source.centre())));
    const auto isOver = [](const State& s) {
        return s.control(u"PBImageBrowserDragTipView"_s).has_value();
    };
    EXPECT_TRUE(waitFor(isOver, trembleAt(goal)));
    desktop.release();
    EXPECT_TRUE(source.waitForEvent(u"taken 1"_s));
    EXPECT_TRUE(waitFor([&](const State& s) {
        return !isOver(s) && s.json()[u"folder"_s].toString() == more &&
               !s.item(u"added.png"_s).name.isEmpty();
    }));
    EXPECT_TRUE(QFile::exists(more + u"/added.png"_s));
}

} // namespace
