#include "e2e/Program.h"

using BrowserRunTest = e2e::ProgramTest;
using e2e::State;

TEST_F(BrowserRunTest, clicksDragsAndKeysReachTheSheetAndTheSearchFieldNarrows) {
    startWithPhotographs();
    const QList<e2e::Item> items = state().items();
    ASSERT_GE(items.size(), 3);
    const QString ends = items[0].name + u' ' + items[2].name;
    click(items[0].name);
    click(items[2].name, u"shift"_s);
    click(items[1].name, u"ctrl"_s);
    EXPECT_TRUE(waitForSelection(ends));

    // Dragged to where nobody takes it.
    const QPoint held = item(items[2].name).picture.center();
    desktop.drag(held, held + QPoint(30, 20));
    EXPECT_TRUE(becomes({{u"browser.dragOut"_s, true}}));
    desktop.release();
    EXPECT_TRUE(becomes({{u"browser.dragging"_s, false}}));
    EXPECT_TRUE(waitForSelection(ends));

    desktop.key(u"End"_s);
    EXPECT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && s.scroll() > 0 && !s.item(s.selected()).name.isEmpty();
    }));
    const QString last = state().selected();
    desktop.click(item(last).label.center());
    ASSERT_TRUE(becomes({{u"browser.renaming"_s, last}}));
    desktop.type(u"elm"_s); // in place of the name without its extension
    ASSERT_TRUE(becomes({{u"browser.renaming"_s, u"elm.jpg"_s}}));
    desktop.key(u"Return"_s);
    EXPECT_TRUE(waitForSelection(u"elm.jpg"_s));
    EXPECT_TRUE(QFile::exists(pathOf(u"elm.jpg"_s)));
    // The keys are back with the browser.
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(waitForSelection(last));
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(items[0].name));
    EXPECT_TRUE(rests({{u"browser.scroll"_s, 0}}));
    selectAll();

    // Every key in the search field narrows; Escape goes back to all, and gives the keys back.
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"DSCF"_s);
    EXPECT_TRUE(shows(31));
    desktop.type(u"x"_s);
    EXPECT_TRUE(shows(0));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(shows(92));
    desktop.key(u"Home"_s);
    EXPECT_TRUE(waitForSelection(items[0].name));
}
