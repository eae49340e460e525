#include "shell/GroupMenus.h"

#include "platform/UserDefaults.h"
#include "support/Support.h"

#include <QMenu>

using group::GroupChain;

namespace {

struct GroupMenusTest : testing::Test {
    struct Prompts final : GroupPrompts {
        void alertLocationRequireSystem() override { ++alerts; }
        int alerts = 0;
    };

    GroupMenusTest() {
        QObject::connect(
            &menus, &GroupMenus::groupTypeArrayDidChange, &menus,
            [this](const PBGroupTypeArray& shown) {
                EXPECT_EQ(shown, chain);
                calls.append(u"path control"_s);
            });
    }
    [[nodiscard]] static QAction* entry(const QMenu& menu, const QString& title) {
        const auto actions = menu.actions();
        const auto found = std::ranges::find(actions, title, &QAction::text);
        return found == actions.end() ? nullptr : *found;
    }
    [[nodiscard]] QMenu* submenu(const QString& title) { return entry(shownMenu(), title)->menu(); }
    void choose(const QMenu& menu, const QString& title) { entry(menu, title)->trigger(); }
    /// As it stands whenever it opens.
    QMenu& shownMenu() {
        Q_EMIT menus.groupMenu()->aboutToShow();
        return *menus.groupMenu();
    }
    /// Titles, "-" for separators, "(…)" for what is disabled.
    static QStringList titles(const QMenu& menu) {
        QStringList all;
        for (const QAction* action : menu.actions())
            all.append(
                action->isSeparator() ? u"-"_s
                : action->isEnabled() ? action->text()
                                      : u'(' + action->text() + u')');
        return all;
    }
    [[nodiscard]] std::vector<GroupChain> presets() const {
        return defaults.integerArraysForKey(u"FavoriteGroupArrayArray"_s)
            .value_or(std::vector<GroupChain>());
    }

    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(u"Velmora.conf"_s)};
    Prompts prompts;
    PBGroupTypeArray chain = std::make_shared<const std::vector<int>>(std::vector{3, 5});
    bool canUseGeocoder = true;
    QStringList calls;
    GroupMenus menus{GroupMenus::Environment{
        .groupTypeArray = [this] { return chain; },
        .setGroupTypeArray =
            [this](PBGroupTypeArray changed) {
                chain = std::move(changed);
                calls.append(u"store"_s);
            },
        .scan = [this] { calls.append(u"scan"_s); },
        .canUseGeocoder = [this] { return canUseGeocoder; },
        .settings = defaults,
        .prompts = prompts}};
};

const QString presetsTitle = u"Presets"_s;
const QString removeTitle = u"Remove Preset"_s;
const QString removeAllTitle = u"Remove All"_s;
const QString saveTitle = u"Save as Preset"_s;

TEST_F(GroupMenusTest, contentsByTable) {
    EXPECT_EQ(
        titles(shownMenu()).join(u'|'),
        u"Presets|-|Save as Preset|Remove Preset|-|(Copy Groups to Folders…)|(Move Groups to Folders…)"_s);
    EXPECT_EQ(titles(*submenu(presetsTitle)), QStringList(u"(No Presets)"_s));
    EXPECT_EQ(titles(*submenu(removeTitle)), QStringList(removeAllTitle));

    choose(shownMenu(), saveTitle);
    chain = std::make_shared<const std::vector<int>>();
    choose(shownMenu(), saveTitle);
    choose(shownMenu(), saveTitle);
    EXPECT_EQ(presets(), (std::vector<GroupChain>{{3, 5}, {}})) << "each chain once";
    const QString first = u"Captured: Year > Folder"_s;
    const QString all = u"All"_s;
    EXPECT_EQ(titles(*submenu(presetsTitle)), (QStringList{first, all}));
    EXPECT_EQ(titles(*submenu(removeTitle)), (QStringList{first, all, u"-"_s, removeAllTitle}));
    EXPECT_FALSE(entry(*submenu(presetsTitle), first)->isChecked());
    EXPECT_TRUE(entry(*submenu(presetsTitle), all)->isChecked()) << "the chain in force";

    choose(*submenu(removeTitle), first);
    EXPECT_EQ(presets(), (std::vector<GroupChain>{{}}));
    choose(*submenu(removeTitle), removeAllTitle);
    EXPECT_TRUE(presets().empty());
    EXPECT_TRUE(calls.isEmpty()) << "nothing is scanned for presets";
}

TEST_F(GroupMenusTest, aPresetIsTakenUnlessItIsInForce) {
    choose(shownMenu(), saveTitle);
    const QString title = u"Captured: Year > Folder"_s;
    choose(*submenu(presetsTitle), title);
    EXPECT_TRUE(calls.isEmpty());
    chain = std::make_shared<const std::vector<int>>(std::vector{16});
    choose(*submenu(presetsTitle), title);
    EXPECT_EQ(*chain, (std::vector{3, 5}));
    EXPECT_EQ(calls.join(u','), u"store,path control,scan"_s);
    // A preset by place goes through without a look at the geocoder.
    canUseGeocoder = false;
    menus.groupContextMenuClicked({group::GroupPresets::Action::Type::Select, {14, 3, 5, 16}});
    EXPECT_EQ(chain->size(), 4U);
    EXPECT_EQ(prompts.alerts, 0);
}

TEST_F(GroupMenusTest, entriesOfThePathControlChangeTheChain) {
    menus.groupMenuClicked({PBGroupMenuAction::Swap, std::array{0, 1}});
    EXPECT_EQ(*chain, (std::vector{5, 3}));
    menus.groupMenuClicked({PBGroupMenuAction::Remove, 0});
    menus.groupMenuClicked({PBGroupMenuAction::Remove, 0});
    EXPECT_TRUE(chain->empty());
    EXPECT_EQ(calls.size(), 9);
    menus.groupMenuClicked({PBGroupMenuAction::Remove, 0});
    EXPECT_EQ(calls.size(), 9) << "an entry of a menu that has outlived its chain";

    canUseGeocoder = false;
    menus.groupMenuClicked({PBGroupMenuAction::Add, 14});
    EXPECT_EQ(prompts.alerts, 1);
    EXPECT_TRUE(chain->empty());
    EXPECT_EQ(calls.size(), 9);
}

TEST_F(GroupMenusTest, copyAndMoveAreThereOnceTheyCanBeDone) {
    std::vector<GroupMenus::GroupTransfer> done;
    menus.setDoGroupCopyMoveTo(
        [&](GroupMenus::GroupTransfer transfer) { done.push_back(transfer); });
    choose(shownMenu(), u"Move Groups to Folders…"_s);
    choose(shownMenu(), u"Copy Groups to Folders…"_s);
    EXPECT_EQ(
        done, (std::vector{GroupMenus::GroupTransfer::Move, GroupMenus::GroupTransfer::Copy}));
}

} // namespace
