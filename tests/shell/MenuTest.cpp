#include "browser/layout/BrowserMetrics.h"
#include "group/ItemOrder.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/TextLanguages.h"
#include "platform/tasks/MainLoop.h"
#include "shell/menus/MainMenu.h"
#include "shell/panes/ThumbnailSizeSlider.h"

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

MenuState browserWith(qint64 selected) {
    MenuState state;
    state.selectCount = selected;
    state.hasItems = selected > 0;
    state.thumbnailSize = 160;
    state.sortType = 1;
    state.style = 15;
    return state;
}

bool isEnabled(Command command, const MenuState& state) {
    return validateMenuItem(command, state).isEnabled;
}

TEST(MenuValidationTest, commandsAreEnabledByPhotographsStepsAndSizes) {
    for (const bool hasItems : {false, true}) {
        MenuState items = browserWith(0);
        items.hasItems = hasItems;
        for (const Command command :
             {invertSelection, selectStars0, selectStars5, view_SlideshowView})
            EXPECT_EQ(isEnabled(command, items), hasItems);
    }
    // In the order of the steps.
    const Command steps[] = {go_PreviousItem,  go_NextItem,  go_FirstItem,      go_LastItem,
                             go_PreviousGroup, go_NextGroup, go_FirstGroupItem, go_LastGroupItem};
    MenuState state = browserWith(1);
    for (std::size_t step = 0; step < std::size(steps); ++step) {
        state.canStep = {};
        state.canStep[step] = true;
        for (const Command command : steps)
            EXPECT_EQ(isEnabled(command, state), command == steps[step]);
    }
    for (const double size : {64, 256}) {
        state.thumbnailSize = size;
        EXPECT_EQ(isEnabled(view_zoomIn, state), size == 64);
        EXPECT_EQ(isEnabled(view_zoomOut, state), size == 256);
    }
    state.hasItems = false;
    state.isFullScreen = true;
    EXPECT_EQ(validateMenuItem(view_zoomIn, state).reason, u"Why_ThumbnailsLargest");
    EXPECT_EQ(validateMenuItem(view_StatusBar, state).reason, u"Why_NoStatusBarInFullScreen");
}

TEST(MenuValidationTest, eachDisabledEntrySaysWhyAndNoneSaysWhatIsNotTrue) {
    const auto isEmpty = [](const MenuState& s) {
        return s.isLargeView ? !s.largeView.hasItems : !s.hasItems;
    };
    const std::map<QStringView, std::function<bool(const MenuState&)>> truths{
        {u"Why_OnlyAmongThumbnails", [](const auto& s) { return s.isLargeView; }},
        {u"Why_OnlyInLargeView", [](const auto& s) { return !s.isLargeView; }},
        {u"Why_NoPhotograph", isEmpty},
        {u"Why_StandIn", [](const auto& s) { return s.largeView.isStandIn; }},
        {u"Why_Scanning", [&](const auto& s) { return s.isScanning && isEmpty(s); }},
        {u"Why_NothingSelected", [](const auto& s) { return s.hasItems && s.selectCount == 0; }},
        {u"Why_NoCurrent", [](const auto& s) { return !s.hasCurrent; }},
        {u"Why_FirstInGroup", [](const auto& s) { return s.hasCurrent; }},
        {u"Why_OnlyOne", [](const auto& s) { return s.selectCount > 1; }},
        {u"Why_Away", [](const auto& s) { return s.areAllChosenAway; }},
        {u"Why_FullScreen", [](const auto& s) { return s.isFullScreen; }},
        {u"Why_NoFolderToPasteInto", [](const auto& s) { return !s.isFolderSelected; }},
        {u"Why_NothingToPaste", [](const auto& s) { return !s.pasteboardHasImages; }},
        {u"Why_Unsorted", [](const auto& s) { return s.sortType == 0; }},
        {u"Why_ThumbnailsLargest", [](const auto& s) { return s.thumbnailSize == 256; }},
        {u"Why_PhotographSmallest", [](const auto& s) { return s.isLargeView; }}};
    std::set<QStringView> given;
    for (unsigned bits = 0; bits < 1U << 12U; ++bits) {
        const auto bit = [bits](unsigned number) { return ((bits >> number) & 1U) != 0; };
        MenuState state;
        state.isLargeView = bit(0);
        const bool hasItems = bit(1);
        const qint64 chosen = bit(2) ? bit(3) ? 3 : 1 : 0;
        state.largeView.isStandIn = bit(11) && state.isLargeView && hasItems;
        if (hasItems)
            state.selectCount = state.isLargeView ? (state.largeView.isStandIn ? 0 : 1) : chosen;
        (state.isLargeView ? state.largeView.hasItems : state.hasItems) = hasItems;
        state.hasCurrent = bit(3);
        state.areAllChosenAway = bit(4) && state.selectCount > 0;
        state.isScanning = bit(5);
        state.isFolderSelected = state.isRootSelected = bit(6);
        state.pasteboardHasImages = state.canUndo = state.canBack = bit(7);
        state.isFullScreen = bit(8);
        state.sortType = bit(9);
        state.thumbnailSize = bit(10) ? 256 : 64;
        state.canRevealFocused = state.selectCount > 0 && !state.areAllChosenAway;
        for (const MenuEntry& entry : menuEntries()) {
            const MenuItemState item = validateMenuItem(entry.command, state);
            ASSERT_EQ(item.reason.isEmpty(), item.isEnabled)
                << qPrintable(entry.name.toString()) << bits;
            const auto truth = truths.find(item.reason);
            ASSERT_TRUE(truth == truths.end() || truth->second(state))
                << qPrintable(entry.name.toString()) << qPrintable(item.reason.toString()) << bits;
            if (!item.isEnabled) given.insert(item.reason);
        }
    }
    EXPECT_GE(given.size(), 31U);
    for (const QStringView key : given)
        EXPECT_NE(platform::localizedString(key), key);
}

TEST(MenuValidationTest, checkMarksFollowTheState) {
    MenuState state = browserWith(2);
    const auto checked = [&state] {
        QStringList names;
        for (const MenuEntry& entry : menuEntries())
            if (validateMenuItem(entry.command, state).isChecked.value_or(false))
                names += entry.name.toString();
        return names.join(u' ');
    };
    state.style = BrowserMetrics::FileSize | BrowserMetrics::Shadow;
    state.filter = group::FilterRated;
    state.sortType = group::SortDateTaken;
    state.descendingSort = true;
    EXPECT_EQ(
        checked(), u"arrange_DateTaken arrange_Dscending view_FileSize view_Shadow filter_Star"_s);
    state.areAllSelectedFlagged = true;

    // Without an order there is no direction either.
    state.sortType = 0;
    EXPECT_EQ(checked(), u"arrange_None view_FileSize view_Shadow filter_Star flagClicked"_s);
    EXPECT_FALSE(isEnabled(arrange_Ascending, state) || isEnabled(arrange_Dscending, state));
}

TEST(MenuTextsTest, everyEntryHasATextAndNoKeyOrLetterIsTakenTwiceInAnyLanguage) {
    const auto check = [](const QList<QAction*>& actions) {
        std::set<QChar> letters;
        for (const QAction* action : actions) {
            if (action->isSeparator()) continue;
            const QString text = action->text();
            EXPECT_FALSE(text.isEmpty() || text.startsWith(u"Menu_")) << text.toStdString();
            const qsizetype mark = text.indexOf(u'&');
            EXPECT_TRUE(mark < 0 || letters.insert(text[mark + 1].toLower()).second)
                << qPrintable(text);
        }
    };
    for (const QString& language : platform::LocalizedTexts::languages()) {
        platform::LocalizedTexts::setLanguage(language);
        QMainWindow window;
        MainMenu menu(
            window, [](bool) { return browserWith(0); }, nullptr);
        menu.validate();
        std::set<QKeySequence> keys;
        for (const MenuEntry& entry : menuEntries()) {
            const QList<QKeySequence> shortcuts = menu.action(entry.command)->shortcuts();
            EXPECT_EQ(
                shortcuts.size(), entry.shortcuts.isEmpty() ? 0 : entry.shortcuts.count(u';') + 1);
            for (const QKeySequence& shortcut : shortcuts)
                EXPECT_TRUE(shortcut[0].key() != Qt::Key_unknown && keys.insert(shortcut).second)
                    << qPrintable(entry.name.toString());
        }
        check(window.menuBar()->actions());
        for (const QMenu* each : window.findChildren<QMenu*>())
            check(each->actions());
        // Menus of right clicks have entries of several menus, whose own letters come back.
        const QString own = menu.action(printImage)->text();
        const auto popUp = [&] {
            auto* open = qobject_cast<QMenu*>(window.children().constLast());
            check(open->actions());
            open->close();
        };
        menu.popUpBrowserMenu(true, {}, &window);
        popUp();
        menu.popUpLargeViewMenu({}, &window);
        popUp();
        EXPECT_EQ(menu.action(printImage)->text(), own);
    }
    platform::LocalizedTexts::setLanguage(u"en"_s);
    QLocale::setDefault(QLocale::c());
}

TEST(MenuShortcutsTest, meetTheStateOfTheirMomentAndTypedTextReadsNone) {
    MenuState state = browserWith(1);
    int reads = 0;
    int pasteboardLooks = 0;
    QMainWindow window;
    MainMenu menu(
        window, [&](bool looks) { return ++reads, pasteboardLooks += looks, state; }, nullptr);
    window.resize(300, 200);
    window.show();
    int copies = 0;
    menu.validate();
    EXPECT_FALSE(menu.action(copy)->isEnabled()) << "nobody carries it out";
    state.selectCount = 0;
    menu.connectCommand(copy, [&copies] { ++copies; });
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const QSignalSpy refused(&menu, &MainMenu::refused);
    menu.trigger(copy);
    EXPECT_EQ(refused.count(), 1) << "whoever asks by another way is told why";
    const auto press = [&](Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(window.windowHandle(), Qt::Key_C, modifiers);
    };
    press(Qt::ControlModifier);
    EXPECT_EQ(copies, 0);
    state.selectCount = 2; // nobody tells the menu
    press(Qt::ControlModifier);
    window.menuBar()->hide();
    press(Qt::ControlModifier);
    EXPECT_EQ(copies, 2) << "also without the menu bar";
    reads = 0;
    press(Qt::NoModifier);
    press(Qt::ShiftModifier);
    EXPECT_EQ(reads, 0);

    // Another program may keep it waiting.
    for (const MenuTag tag : {MenuTag::File, MenuTag::Edit, MenuTag::View})
        Q_EMIT menu.menuWithTag(tag)->aboutToShow();
    EXPECT_EQ(pasteboardLooks, 1);
    EXPECT_TRUE(platform::MainLoop::instance()->isTracking()) << "what is shown stays meanwhile";
}

TEST(ThumbnailSizeSliderTest, theMiddleCatchesAndCanBeLeftByKeys) {
    ThumbnailSizeSlider slider;
    QSignalSpy slides(&slider, &ThumbnailSizeSlider::thumbnailSizeSlide);
    slider.setThumbnailSize(160);
    for (const int value : {47, 80, 54})
        slider.setValue(value);
    EXPECT_EQ(slides, (QList<QList<QVariant>>{{80}, {50}}));
    EXPECT_EQ(slider.value(), 50);
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
