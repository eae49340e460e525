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

#include <gtest/gtest.h>

#include <set>

using Command = MenuCommand;

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
    struct Row {
        std::vector<Command> commands;
        bool nothingSelected, oneSelected, twoSelected, emptyLargeView, fullLargeView;
    };
    const Row rows[] = {
        {{Command::addFolderAlias, Command::selectAll, Command::recurseSubFolder,
          Command::view_FileName, Command::view_Shadow, Command::arrange_Kind,
          Command::arrange_None, Command::arrange_Dscending, Command::filter_Star,
          Command::view_SideBar, Command::view_Folder, Command::view_Group},
         true,
         true,
         true,
         false,
         false},
        {{Command::deleteClicked, Command::copy, Command::rotateLeft, Command::automaticRotate,
          Command::rating0, Command::rating5, Command::copyTo, Command::moveTo, Command::duplicate,
          Command::setDesktop, Command::flagClicked},
         false,
         true,
         true,
         false,
         true},
        {{Command::exportImage}, false, true, false, false, true},
        {{Command::renameFile}, false, true, false, false, false},
        {{Command::view_BrowserView, Command::deselectAll}, false, true, true, false, false},
        {{Command::view_ThumbnailView, Command::view_PhotoBin}, false, false, false, true, true},
        {{Command::view_fitIn, Command::view_ActualSize, Command::view_SlideshowView,
          Command::revealInFinder},
         false,
         false,
         false,
         false,
         true},
        {{Command::view_zoomIn}, true, true, true, false, false},
        {{Command::go_NextItem}, false, false, false, true, true},
        {{Command::removeFolderAlias, Command::paste, Command::view_Navigation,
          Command::go_PreviousItem, Command::go_NextGroup},
         false,
         false,
         false,
         false,
         false},
        {{Command::view_toolbar, Command::view_StatusBar, Command::view_Info,
          Command::view_FullScreen, Command::quit, Command::showAbout},
         true,
         true,
         true,
         true,
         true},
    };
    for (const Row& row : rows) {
        for (const Command command : row.commands) {
            const std::string name = menuEntry(command).name.toString().toStdString();
            EXPECT_EQ(isEnabled(command, browserWith(0)), row.nothingSelected) << name;
            EXPECT_EQ(isEnabled(command, browserWith(1)), row.oneSelected) << name;
            EXPECT_EQ(isEnabled(command, browserWith(2)), row.twoSelected) << name;
            EXPECT_EQ(isEnabled(command, largeView(false)), row.emptyLargeView) << name;
            EXPECT_EQ(isEnabled(command, largeView(true)), row.fullLargeView) << name;
        }
    }
}

TEST(MenuValidationTest, eachConditionOfTheBrowserEnablesWhatDependsOnIt) {
    struct Row {
        Command command;
        void (*meet)(MenuState&);
    };
    const Row rows[] = {
        {Command::removeFolderAlias, [](MenuState& s) { s.isRootSelected = true; }},
        {Command::revealInFinder, [](MenuState& s) { s.canRevealFocused = true; }},
        {Command::paste, [](MenuState& s) { s.isFolderSelected = s.pasteboardHasImages = true; }},
        {Command::back, [](MenuState& s) { s.canBack = true; }},
        {Command::forward, [](MenuState& s) { s.canForward = true; }},
    };
    for (const Row& row : rows) {
        MenuState state = browserWith(0);
        EXPECT_FALSE(isEnabled(row.command, state));
        row.meet(state);
        EXPECT_TRUE(isEnabled(row.command, state));
        state.isLargeView = true;
        EXPECT_FALSE(isEnabled(row.command, state));
    }
    const std::pair<Command, BrowserStep> steps[] = {
        {Command::go_PreviousItem, BrowserStep::PrevIndex},
        {Command::go_NextItem, BrowserStep::NextIndex},
        {Command::go_FirstItem, BrowserStep::FirstIndex},
        {Command::go_LastItem, BrowserStep::LastIndex},
        {Command::go_PreviousGroup, BrowserStep::PreviousGroup},
        {Command::go_NextGroup, BrowserStep::NextGroup},
        {Command::go_FirstGroupItem, BrowserStep::FirstIndexInGroup},
        {Command::go_LastGroupItem, BrowserStep::LastIndexInGroup},
    };
    for (const auto& [enabled, step] : steps) {
        MenuState state = browserWith(1);
        state.canStep[static_cast<std::size_t>(step)] = true;
        for (const auto& [command, other] : steps)
            EXPECT_EQ(isEnabled(command, state), command == enabled);
    }
    MenuState state = browserWith(0);
    state.thumbnailSize = 256;
    EXPECT_FALSE(isEnabled(Command::view_zoomIn, state));
    EXPECT_TRUE(isEnabled(Command::view_zoomOut, state));
    state.thumbnailSize = 64;
    EXPECT_FALSE(isEnabled(Command::view_zoomOut, state));
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
    EXPECT_TRUE(checked(Command::view_FileSize) && checked(Command::view_Shadow));
    EXPECT_FALSE(checked(Command::view_FileName) || checked(Command::view_EnlargeSmallPhoto));
    EXPECT_TRUE(checked(Command::filter_Star) && !checked(Command::filter_Flag));
    EXPECT_TRUE(checked(Command::arrange_DateTaken) && !checked(Command::arrange_FileName));
    EXPECT_TRUE(checked(Command::arrange_Dscending) && !checked(Command::arrange_Ascending));
    EXPECT_FALSE(checked(Command::flagClicked));
    state.areAllSelectedFlagged = true;
    EXPECT_TRUE(checked(Command::flagClicked));

    // Without an order there is no direction either.
    state.sortType = 0;
    EXPECT_TRUE(checked(Command::arrange_None));
    for (const Command direction : {Command::arrange_Ascending, Command::arrange_Dscending}) {
        EXPECT_FALSE(isEnabled(direction, state));
        EXPECT_FALSE(checked(direction));
    }
    EXPECT_EQ(validateMenuItem(Command::view_Group, state).title, QStringView(u"HideGroup"));
    state.isGroupShown = false;
    EXPECT_EQ(validateMenuItem(Command::view_Group, state).title, QStringView(u"ShowGroup"));
}

TEST(ArrangeCommandsTest, eachOrderHasItsTypeAndDatesBeginWithTheNewest) {
    const std::map<int, std::pair<std::optional<int>, bool>> expected{
        {1, {1, false}}, {2, {2, false}}, {3, {3, true}},    {4, {4, true}},   {5, {5, false}},
        {6, {6, false}}, {8, {0, false}}, {10, {{}, false}}, {11, {{}, true}},
    };
    std::map<int, std::pair<std::optional<int>, bool>> found;
    for (const ArrangeCommands::Row& row : ArrangeCommands::rows())
        found[row.argument] = {row.sortType, row.descending};
    EXPECT_EQ(found, expected);
}

class MenuBarTest : public testing::Test {
protected:
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
        for (const QKeySequence& shortcut : shortcuts) {
            EXPECT_FALSE(shortcut[0].key() == Qt::Key_unknown)
                << entry.name.toString().toStdString();
            EXPECT_TRUE(keys.insert(shortcut).second) << shortcut.toString().toStdString();
        }
    }
    std::set<QChar> letters;
    for (const QAction* action : window.menuBar()->actions()) {
        const QString text = action->text();
        EXPECT_TRUE(letters.insert(text.at(text.indexOf(u'&') + 1).toLower()).second)
            << text.toStdString();
    }
}

TEST_F(MenuBarTest, aCommandWithoutAPerformerStaysDisabled) {
    state = browserWith(1);
    menu.validate();
    EXPECT_FALSE(menu.action(Command::copyTo)->isEnabled());
    menu.connectCommand(Command::copyTo, [] {});
    EXPECT_TRUE(menu.action(Command::copyTo)->isEnabled());
}

TEST_F(MenuBarTest, aShortcutMeetsTheStateOfItsMomentAndTypedTextReadsNone) {
    int copies = 0;
    menu.connectCommand(Command::copy, [&copies] { ++copies; });
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

TEST_F(MenuBarTest, openingAMenuBringsItsCheckMarksAndTitlesInStep) {
    menu.connectCommand(Command::view_toolbar, [] {});
    state.isToolbarShown = false;
    state.filter = 1;
    Q_EMIT menu.menuWithTag(MenuTag::View)->aboutToShow();
    EXPECT_EQ(
        menu.action(Command::view_toolbar)->text(), platform::localizedString(u"ShowToolbar"));
    EXPECT_TRUE(menu.action(Command::filter_Flag)->isChecked());
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
    for (const double size : {64.0, 100.0, 160.0, 200.0, 256.0}) {
        slider.setThumbnailSize(size);
        EXPECT_NEAR(sliderToThumbSize(slider.value()), size, 1.1);
    }
    EXPECT_TRUE(slides.isEmpty()) << "a size from elsewhere is no wish of the user";
}

} // namespace
