#include "browser/BrowserInput.h"
#include "browser/BrowserMetrics.h"
#include "platform/LocalizedTexts.h"
#include "shell/ArrangeCommands.h"
#include "shell/MainMenu.h"
#include "shell/ThumbnailSizeSlider.h"

#include "support/Support.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>
#include <QTest>

using Command = MenuCommand;
using enum MenuCommand;

namespace {

MenuState browserWith(std::int64_t selected) {
    MenuState state;
    state.selectCount = selected;
    state.thumbnailSize = 160;
    state.sortType = 1;
    state.style = 15;
    return state;
}

MenuState largeView(bool hasItems) {
    MenuState state = browserWith(3);
    state.isLargeView = true;
    state.largeView.hasItems = hasItems;
    state.largeView.canNext = true;
    return state;
}

bool isEnabled(Command command, const MenuState& state) {
    return validateMenuItem(command, state).isEnabled;
}

TEST(MenuValidationTest, commandsAreEnabledByViewAndSelection) {
    // In this order; 1 for enabled.
    const MenuState states[] = {
        browserWith(0), browserWith(1), browserWith(2), largeView(false), largeView(true)};
    const std::pair<std::vector<Command>, std::string_view> rows[] = {
        {{addFolderAlias, selectAll, recurseSubFolder, view_FileName, view_Shadow, arrange_Kind,
          arrange_None, arrange_Dscending, filter_Star, view_SideBar, view_Folder, view_Group},
         "11100"},
        {{deleteClicked, copy, rotateLeft, automaticRotate, rating0, rating5, copyTo, moveTo,
          duplicate, setDesktop, flagClicked},
         "01101"},
        {{exportImage}, "01001"},
        {{renameFile}, "01000"},
        {{view_BrowserView, deselectAll}, "01100"},
        {{view_ThumbnailView, view_PhotoBin, go_NextItem}, "00011"},
        {{view_fitIn, view_ActualSize, view_SlideshowView, revealInFinder}, "00001"},
        {{view_zoomIn}, "11100"},
        {{removeFolderAlias, paste, view_Navigation, go_PreviousItem, go_NextGroup}, "00000"},
        {{view_toolbar, view_StatusBar, view_Info, view_FullScreen, quit, showAbout}, "11111"}};
    for (const auto& [commands, enabled] : rows)
        for (const Command command : commands)
            for (std::size_t state = 0; state < std::size(states); ++state)
                EXPECT_EQ(isEnabled(command, states[state]), enabled[state] == '1')
                    << qPrintable(menuEntry(command).name.toString()) << state;
}

TEST(MenuValidationTest, eachConditionOfTheBrowserEnablesWhatDependsOnIt) {
    const std::pair<Command, void (*)(MenuState&)> rows[] = {
        {removeFolderAlias, [](MenuState& s) { s.isRootSelected = true; }},
        {revealInFinder, [](MenuState& s) { s.canRevealFocused = true; }},
        {paste, [](MenuState& s) { s.isFolderSelected = s.pasteboardHasImages = true; }},
        {back, [](MenuState& s) { s.canBack = true; }},
        {forward, [](MenuState& s) { s.canForward = true; }}};
    for (const auto& [command, meetItsCondition] : rows) {
        MenuState state = browserWith(0);
        EXPECT_FALSE(isEnabled(command, state));
        meetItsCondition(state);
        EXPECT_TRUE(isEnabled(command, state));
        state.isLargeView = true;
        EXPECT_FALSE(isEnabled(command, state));
    }
    // In the order of the steps.
    const Command steps[] = {go_PreviousItem,  go_NextItem,  go_FirstItem,      go_LastItem,
                             go_PreviousGroup, go_NextGroup, go_FirstGroupItem, go_LastGroupItem};
    for (std::size_t step = 0; step < std::size(steps); ++step) {
        MenuState state = browserWith(1);
        state.canStep[step] = true;
        for (const Command command : steps)
            EXPECT_EQ(isEnabled(command, state), command == steps[step]);
    }
    MenuState state = browserWith(0);
    state.thumbnailSize = 256;
    EXPECT_FALSE(isEnabled(view_zoomIn, state));
    EXPECT_TRUE(isEnabled(view_zoomOut, state));
    state.thumbnailSize = 64;
    EXPECT_FALSE(isEnabled(view_zoomOut, state));
}

TEST(MenuValidationTest, checkMarksAndTitlesFollowTheState) {
    MenuState state = browserWith(2);
    const auto checked = [&state](Command command) {
        return validateMenuItem(command, state).isChecked.value_or(false);
    };
    state.style = BrowserMetrics::FileSize | BrowserMetrics::Shadow;
    state.filter = 2;
    state.sortType = 4;
    state.descendingSort = true;
    EXPECT_TRUE(checked(view_FileSize) && checked(view_Shadow));
    EXPECT_FALSE(checked(view_FileName) || checked(view_EnlargeSmallPhoto));
    EXPECT_TRUE(checked(filter_Star) && !checked(filter_Flag));
    EXPECT_TRUE(checked(arrange_DateTaken) && !checked(arrange_FileName));
    EXPECT_TRUE(checked(arrange_Dscending) && !checked(arrange_Ascending));
    EXPECT_FALSE(checked(flagClicked));
    state.areAllSelectedFlagged = true;
    EXPECT_TRUE(checked(flagClicked));

    // Without an order there is no direction either.
    state.sortType = 0;
    EXPECT_TRUE(checked(arrange_None));
    for (const Command direction : {arrange_Ascending, arrange_Dscending}) {
        EXPECT_FALSE(isEnabled(direction, state));
        EXPECT_FALSE(checked(direction));
    }
    EXPECT_EQ(validateMenuItem(view_Group, state).title, QStringView(u"HideGroup"));
    state.isGroupShown = false;
    EXPECT_EQ(validateMenuItem(view_Group, state).title, QStringView(u"ShowGroup"));
}

struct MenuBarTest : testing::Test {
    MenuBarTest()
        : menu(
              window, [this](bool) { return ++reads, state; }, nullptr) {
        window.resize(300, 200);
        window.show();
    }
    /// Calls back with each menu of the bar and each below it.
    static void
    forEachMenu(const QList<QAction*>& actions, const std::function<void(const QMenu&)>& visit) {
        for (const QAction* action : actions) {
            if (!action->menu()) continue;
            visit(*action->menu());
            forEachMenu(action->menu()->actions(), visit);
        }
    }
    MenuState state = browserWith(0);
    int reads = 0;
    QMainWindow window;
    MainMenu menu;
};

TEST_F(MenuBarTest, everyCommandStandsThereOnceWithATextAndNoKeyIsTakenTwice) {
    menu.validate();
    std::multiset<QString> inMenus;
    forEachMenu(window.menuBar()->actions(), [&](const QMenu& each) {
        std::set<QString> letters;
        for (const QAction* action : each.actions()) {
            if (action->isSeparator()) continue;
            EXPECT_FALSE(action->text().isEmpty() || action->text().startsWith(u"Menu_"))
                << action->objectName().toStdString() << action->text().toStdString();
            if (!action->menu()) inMenus.insert(action->objectName());
            const qsizetype mark = action->text().indexOf(u'&');
            if (mark < 0) continue;
            EXPECT_TRUE(letters.insert(action->text().mid(mark + 1, 1).toLower()).second)
                << each.title().toStdString() << ": " << action->text().toStdString();
        }
    });
    std::set<QKeySequence> keys;
    for (const MenuEntry& entry : menuEntries()) {
        EXPECT_EQ(inMenus.count(entry.name.toString()), 1U) << entry.name.toString().toStdString();
        const QList<QKeySequence> shortcuts = menu.action(entry.command)->shortcuts();
        EXPECT_EQ(
            shortcuts.size(), entry.shortcuts.isEmpty() ? 0 : entry.shortcuts.count(u';') + 1);
        for (const QKeySequence& shortcut : shortcuts)
            EXPECT_TRUE(shortcut[0].key() != Qt::Key_unknown && keys.insert(shortcut).second)
                << qPrintable(entry.name.toString());
    }
    std::set<QChar> letters;
    for (const QAction* action : window.menuBar()->actions()) {
        const QString text = action->text();
        EXPECT_TRUE(letters.insert(text.at(text.indexOf(u'&') + 1).toLower()).second)
            << text.toStdString();
    }
}

TEST_F(MenuBarTest, aShortcutMeetsTheStateOfItsMomentAndTypedTextReadsNone) {
    int copies = 0;
    state.selectCount = 1;
    menu.validate();
    EXPECT_FALSE(menu.action(copy)->isEnabled()) << "nobody carries it out";
    state.selectCount = 0;
    menu.connectCommand(copy, [&copies] { ++copies; });
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const auto press = [this](Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(window.windowHandle(), Qt::Key_C, modifiers);
    };
    press(Qt::ControlModifier);
    EXPECT_EQ(copies, 0);
    state.selectCount = 2; // nobody tells the menu
    press(Qt::ControlModifier);
    EXPECT_EQ(copies, 1);
    window.menuBar()->hide();
    press(Qt::ControlModifier);
    EXPECT_EQ(copies, 2) << "also without the menu bar";
    reads = 0;
    press(Qt::NoModifier);
    press(Qt::ShiftModifier);
    EXPECT_EQ(reads, 0);
}

TEST(ThumbnailSizeSliderTest, theMiddleCatchesAndCanBeLeftByKeys) {
    ThumbnailSizeSlider slider;
    QSignalSpy slides(&slider, &ThumbnailSizeSlider::thumbnailSizeSlide);
    slider.setThumbnailSize(160);
    EXPECT_EQ(slider.value(), 50);
    slider.setValue(47);
    EXPECT_EQ(slider.value(), 50);
    EXPECT_TRUE(slides.isEmpty());
    slider.setValue(80);
    slider.setValue(54);
    EXPECT_EQ(slider.value(), 50);
    EXPECT_EQ(slides.size(), 2);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_Left}) {
        const int before = slider.value();
        QTest::keyClick(&slider, key);
        EXPECT_NE(slider.value(), before);
    }
    slides.clear();
    slider.setThumbnailSize(200);
    EXPECT_TRUE(slides.isEmpty()) << "a size from elsewhere is no wish of the user";
}

} // namespace
