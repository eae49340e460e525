#include "group/GroupTypes.h"
#include "group/ItemOrder.h"
#include "platform/program/UserDefaults.h"
#include "shell/panes/WindowSettings.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/Preferences.h"
#include "shell/session/SessionState.h"

#include "support/Support.h"

namespace {

struct SettingsTest : testing::Test {
    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(u"Velmora.conf"_s)};
};

TEST_F(SettingsTest, whatIsChosenIsThereAgainAtTheNextStart) {
    BrowsingSettings browsing(defaults);
    browsing.setRecurseSubFolder(false);
    browsing.setGroupTypeArray(std::make_shared<const std::vector<int>>(std::vector{63, 0}));
    browsing.setGroupTypeArray(nullptr); // no chain at all
    browsing.setSortType(group::SortPixelArea);
    browsing.setDescendingSort(true);
    browsing.setFilter(group::FilterFlagged | group::FilterRated);
    browsing.setSearchString(u"sea"_s);
    WindowSettings(defaults).setInfoTag(1);
    platform::UserDefaults stored(folder.filePath(u"Velmora.conf"_s));
    BrowsingSettings next(stored);
    EXPECT_TRUE(next.descendingSort() && !next.recurseSubFolder());
    EXPECT_EQ(*next.groupTypeArray(), (std::vector{63, 0}));
    EXPECT_EQ(next.searchString(), QString()) << "never stored";
    EXPECT_EQ(
        (QList{next.sortType(), int(next.filter()), WindowSettings(stored).infoTag()}),
        (QList<int>{group::SortPixelArea, 3, 1}));

    EXPECT_TRUE(next.clearFilterAndSearch() && next.filter() == 0);
    EXPECT_FALSE(next.clearFilterAndSearch());
    next.setSearchString(u"sea"_s);
    EXPECT_TRUE(next.clearFilterAndSearch());
}

TEST_F(SettingsTest, numbersOutsideOfTheirRangesCountAsNotChosen) {
    const auto expectDefaults = [this] {
        const BrowsingSettings browsing(defaults);
        EXPECT_TRUE(browsing.recurseSubFolder() && !browsing.descendingSort());
        EXPECT_EQ(
            *browsing.groupTypeArray(), (std::vector<int>{group::CaptureYear, group::Folder}));
        EXPECT_EQ(browsing.sortType(), group::SortFileName);
        EXPECT_EQ(browsing.filter(), 0U);
        const WindowSettings window(defaults);
        EXPECT_FALSE(window.hideStatusBar() || window.hideToolbar() || window.infoTag() != 0);
    };
    expectDefaults();
    EXPECT_EQ(WindowSettings(defaults).imageBrowserViewStyle(), 15U);
    EXPECT_EQ(WindowSettings(defaults).thumbnailSize(), 160);
    defaults.setInteger(4, u"Filter"_s);
    EXPECT_EQ(BrowsingSettings(defaults).filter(), 0U) << "of a bit that there is not";
    defaults.setInteger(-1, u"Filter"_s);
    defaults.setInteger(-1, u"ImageBrowserViewStyle"_s);
    EXPECT_EQ(WindowSettings(defaults).imageBrowserViewStyle(), 0U);
    for (const auto& [groupType, sortType, tag] : {std::tuple(-1, -1, -1), {64, 7, 2}}) {
        defaults.setIntegers({3, groupType}, u"GroupTypeArray"_s);
        defaults.setInteger(sortType, u"SortType"_s);
        defaults.setInteger(tag, u"InfoTag"_s);
        expectDefaults();
    }
    defaults.setIntegers({}, u"GroupTypeArray"_s);
    EXPECT_TRUE(BrowsingSettings(defaults).groupTypeArray()->empty());
    defaults.setInteger(0, u"SortType"_s);
    EXPECT_EQ(BrowsingSettings(defaults).sortType(), group::SortNone);
    for (const QString& key : {u"Theme"_s, u"LargeViewWheel"_s, u"LargeViewGround"_s})
        defaults.setInteger(7, key);
    EXPECT_EQ(Preferences(defaults).ground(), Preferences::Ground::Grey) << "there is no such one";
    for (const double stored : {63.0, 65.0, 257.0}) {
        defaults.setDouble(stored, u"ThumbnailSize"_s);
        EXPECT_EQ(WindowSettings(defaults).thumbnailSize(), std::clamp(stored, 64.0, 256.0));
    }
}

TEST_F(SettingsTest, aSessionComesBackFromItsFileAsItWasAndNothingComesOfOtherTexts) {
    SessionState state;
    state.folder = QString::fromUtf8("/photos/\"ü\"\n");
    state.catalogue = 2'079'218'531;
    state.isLargeView = state.isListSelected = state.hasEnded = true;
    state.selected = {{(qint64{1} << 52) + 1, u"/a.jpg"_s}, {7, {}}};
    state.current = {7, u"/photos/b.jpg"_s};
    state.anchor = {8, u"/photos/c.jpg"_s};
    state.anchorOffset = -12.25;
    state.crashes = 1;
    const QString file = folder.filePath(u"session.json"_s);
    EXPECT_EQ(SessionState::read(file), std::nullopt);
    ASSERT_TRUE(SessionState().write(file) && state.write(file));
    EXPECT_EQ(SessionState::read(file), state);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{u"session.json"_s});
    EXPECT_FALSE(state.write(folder.filePath(u"none/session.json"_s)));

    const QByteArray text = state.toJson();
    for (const QByteArray& other : {QByteArray(), QByteArray("[]"), text.first(text.size() / 2)})
        EXPECT_EQ(SessionState::fromJson(other), std::nullopt) << other.toStdString();
    // Of the wrong types nothing is taken.
    EXPECT_EQ(
        SessionState::fromJson(R"({"folder":3,"selected":{},"current":"x","anchor":[],"view":1})"),
        SessionState());
}

} // namespace
