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

TEST_F(BrowserRunTest, clicksAndKeysSelect) {
    makePictures(QStringLiteral("sea"), numbered(QStringLiteral("a"), 40));
    makePictures(QStringLiteral("woods"), {QStringLiteral("birch.png"), QStringLiteral("oak.png")});
    start();
    const auto columns = static_cast<int>(state().browser(QStringLiteral("columns")).toInt());
    ASSERT_GE(columns, 3);

    click(QStringLiteral("a01.png"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("a01.png")));
    click(QStringLiteral("a03.png"), {QStringLiteral("shift")});
    EXPECT_TRUE(waitForSelection(QStringLiteral("a01.png a02.png a03.png")));
    click(QStringLiteral("a02.png"), {QStringLiteral("ctrl")});
    EXPECT_TRUE(waitForSelection(QStringLiteral("a01.png a03.png")));
    desktop.click(besidesItem(QStringLiteral("a01.png")));
    EXPECT_TRUE(waitForSelection(QString()));

    click(QStringLiteral("a00.png"));
    desktop.key(QStringLiteral("Right"));
    desktop.key(QStringLiteral("Down"));
    const QStringList sea = numbered(QStringLiteral("a"), 40);
    EXPECT_TRUE(waitForSelection(sea[1 + columns]));
    desktop.key(QStringLiteral("shift+Left"));
    EXPECT_TRUE(waitForSelection(sea[columns] + u' ' + sea[1 + columns]));
    desktop.key(QStringLiteral("Up"));
    desktop.key(QStringLiteral("End"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("oak.png")));
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && s.scroll() > 0 && !s.item(QStringLiteral("oak.png")).name.isEmpty();
    }));
    desktop.key(QStringLiteral("Home"));
    EXPECT_TRUE(waitForSelection(sea.first()));
    EXPECT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() == 0; }));
    desktop.key(QStringLiteral("Next"));
    EXPECT_TRUE(waitFor([&](const State& s) {
        const auto row = sea.indexOf(s.selected()) / columns;
        return s.isAtRest() && row >= 2 && s.scroll() > 0;
    }));
    desktop.key(QStringLiteral("Prior"));
    EXPECT_TRUE(waitForSelection(sea.first()));
    desktop.type(QStringLiteral("oa"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("oak.png")));
    desktop.key(QStringLiteral("ctrl+a"));
    EXPECT_TRUE(waitFor(
        [](const State& s) { return s.browser(QStringLiteral("selectCount")).toInt() == 42; }));
}

TEST_F(BrowserRunTest, aBandSelectsAndScrollsAndTheWheelMovesOn) {
    const QStringList names = numbered(QStringLiteral("a"), 60);
    makePictures(QStringLiteral("sea"), names);
    start();
    const QRect browser = state().browserRect();
    desktop.drag(
        besidesItem(QStringLiteral("a00.png")), item(QStringLiteral("a01.png")).picture.center());
    EXPECT_TRUE(waitForSelection(QStringLiteral("a00.png a01.png")));
    // Below the view the sheet comes up while the mouse lies still.
    desktop.move({browser.right() - 30, browser.bottom() + 60});
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.scroll() > 900 && s.browser(QStringLiteral("selectCount")).toInt() > 30;
    }));
    desktop.move({browser.right() - 30, browser.center().y()});
    desktop.release();
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && !s.browser(QStringLiteral("dragging")).toBool();
    }));
    const State after = state();
    const qsizetype selected = after.browser(QStringLiteral("selectCount")).toInt();
    EXPECT_LT(selected, 60);
    EXPECT_TRUE(after.selected().startsWith(names.first(10).join(u' ')));

    const double before = after.scroll();
    desktop.wheel(-3);
    EXPECT_TRUE(waitFor([&](const State& s) { return s.isAtRest() && s.scroll() < before - 100; }));
    EXPECT_EQ(state().browser(QStringLiteral("selectCount")).toInt(), selected);
}

TEST_F(BrowserRunTest, aNameIsEditedInPlace) {
    makePictures(
        QStringLiteral("sea"), {QStringLiteral("first.png"), QStringLiteral("second.png")});
    start();
    const auto isRenaming = [](const QString& text) {
        return [text](const State& s) {
            return s.browser(QStringLiteral("renaming")).toString() == text;
        };
    };
    desktop.click(item(QStringLiteral("first.png")).label.center());
    ASSERT_TRUE(waitFor(isRenaming(QStringLiteral("first.png"))));
    desktop.type(QStringLiteral("third")); // in place of the name without its extension
    ASSERT_TRUE(waitFor(isRenaming(QStringLiteral("third.png"))));
    desktop.key(QStringLiteral("Escape"));
    EXPECT_TRUE(
        waitFor([](const State& s) { return s.browser(QStringLiteral("renaming")).isNull(); }));
    EXPECT_EQ(
        filesOnDisk(),
        (QStringList{QStringLiteral("sea/first.png"), QStringLiteral("sea/second.png")}));
    // The keys are back with the browser.
    desktop.key(QStringLiteral("End"));
    EXPECT_TRUE(waitForSelection(QStringLiteral("second.png")));
    desktop.key(QStringLiteral("F2"));
    EXPECT_TRUE(waitFor(isRenaming(QStringLiteral("second.png"))));
    desktop.key(QStringLiteral("Escape"));
}

TEST_F(BrowserRunTest, picturesAreDraggedOutAndFoldersIn) {
    makePictures(QStringLiteral("sea"), numbered(QStringLiteral("a"), 4));
    start();
    const QStringList before = filesOnDisk();
    click(QStringLiteral("a01.png"));
    click(QStringLiteral("a02.png"), {QStringLiteral("ctrl")});
    ASSERT_TRUE(waitForSelection(QStringLiteral("a01.png a02.png")));
    // A pointer that is on its way to the middle of its goal.
    int steps = 0;
    const auto trembleAt = [&](QPoint point) {
        return [this, &steps, point] { desktop.move(point + QPoint(++steps % 5, 0)); };
    };
    {
        DragPartner target(desktop, besides);
        const QPoint start = item(QStringLiteral("a02.png")).picture.center();
        desktop.drag(start, start + QPoint(30, 20));
        ASSERT_TRUE(
            waitFor([](const State& s) { return s.browser(QStringLiteral("dragOut")).toBool(); }));
        ASSERT_TRUE(target.waitForEvent(QStringLiteral("entered"), trembleAt(target.centre())));
        desktop.release();
        ASSERT_TRUE(target.waitForEvent(QStringLiteral("done")));
        EXPECT_TRUE(target.events().contains(
            QStringLiteral("dropped ") + photo(QStringLiteral("sea/a01.png"))));
        EXPECT_TRUE(target.events().contains(
            QStringLiteral("dropped ") + photo(QStringLiteral("sea/a02.png"))));
        EXPECT_EQ(target.events().filter(QStringLiteral("dropped")).size(), 2);
    }
    EXPECT_TRUE(
        waitFor([](const State& s) { return !s.browser(QStringLiteral("dragging")).toBool(); }));
    EXPECT_EQ(filesOnDisk(), before);

    makePictures(QStringLiteral("../more"), {QStringLiteral("added.png")});
    const QString more = QDir::cleanPath(photo(QStringLiteral("../more")));
    DragPartner source(desktop, besides, more);
    const QPoint goal = state().browserRect().center();
    desktop.drag(source.centre(), source.centre() - QPoint(40, 0));
    ASSERT_TRUE(source.waitForEvent(QStringLiteral("dragging"), trembleAt(source.centre())));
    const auto isOver = [](const State& s) {
        return s.control(QStringLiteral("PBImageBrowserDragTipView")).has_value();
    };
    EXPECT_TRUE(waitFor(isOver, trembleAt(goal)));
    desktop.release();
    EXPECT_TRUE(source.waitForEvent(QStringLiteral("taken 1")));
    EXPECT_TRUE(waitFor([&](const State& s) {
        return !isOver(s) && s.json()[QStringLiteral("folder")].toString() == more &&
               !s.item(QStringLiteral("added.png")).name.isEmpty();
    }));
    EXPECT_TRUE(QFile::exists(more + QStringLiteral("/added.png")));
}

} // namespace
