#include "shell/GroupMenus.h"

#include "platform/UserDefaults.h"
#include "support/Support.h"

#include <QMenu>
#include <QTemporaryDir>
#include <QToolButton>

#include <gtest/gtest.h>

using group::GroupChain;

namespace {

class GroupMenusTest : public testing::Test {
protected:
    struct Prompts final : GroupPrompts {
        void alertLocationRequireSystem() override { ++alerts; }
        int alerts = 0;
    };

    GroupMenusTest() {
        QObject::connect(
            &menus, &GroupMenus::groupTypeArrayDidChange, &menus,
            [this](const PBGroupTypeArray& shown) {
                EXPECT_EQ(shown, chain);
                calls.append(QStringLiteral("path control"));
            });
    }
    [[nodiscard]] QMenu* submenu(const QString& title) {
        for (QAction* action : shownMenu().actions())
            if (action->text() == title) return action->menu();
        return nullptr;
    }
    [[nodiscard]] QAction* entry(const QMenu& menu, const QString& title) {
        for (QAction* action : menu.actions())
            if (action->text() == title) return action;
        return nullptr;
    }
    void choose(const QMenu& menu, const QString& title) {
        QAction* action = entry(menu, title);
        ASSERT_TRUE(action) << title.toStdString();
        action->trigger();
    }
    /// As it stands whenever it opens.
    QMenu& shownMenu() {
        Q_EMIT menus.groupMenu()->aboutToShow();
        return *menus.groupMenu();
    }
    /// Titles, "-" for separators, "(…)" for what is disabled.
    static QStringList titles(const QMenu& menu) {
        QStringList all;
        for (const QAction* action : menu.actions()) {
            if (action->isSeparator()) {
                all.append(QStringLiteral("-"));
            } else {
                all.append(action->isEnabled() ? action->text() : u'(' + action->text() + u')');
            }
        }
        return all;
    }
    [[nodiscard]] std::vector<GroupChain> presets() const {
        return defaults.integerArraysForKey(QStringLiteral("FavoriteGroupArrayArray"))
            .value_or(std::vector<GroupChain>());
    }

    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(QStringLiteral("Velmora.conf"))};
    Prompts prompts;
    PBGroupTypeArray chain = std::make_shared<const std::vector<int>>(std::vector{3, 5});
    bool canUseGeocoder = true;
    QStringList calls;
    GroupMenus menus{GroupMenus::Environment{
        .groupTypeArray = [this] { return chain; },
        .setGroupTypeArray =
            [this](PBGroupTypeArray changed) {
                chain = std::move(changed);
                calls.append(QStringLiteral("store"));
            },
        .scan = [this] { calls.append(QStringLiteral("scan")); },
        .canUseGeocoder = [this] { return canUseGeocoder; },
        .settings = defaults,
        .prompts = prompts}};
};

const QString presetsTitle = QStringLiteral("Presets");
const QString removeTitle = QStringLiteral("Remove Preset");
const QString removeAllTitle = QStringLiteral("Remove All");
const QString saveTitle = QStringLiteral("Save as Preset");

TEST_F(GroupMenusTest, contentsByTable) {
    const QStringList whole{
        presetsTitle,
        QStringLiteral("-"),
        saveTitle,
        removeTitle,
        QStringLiteral("-"),
        QStringLiteral("(Copy Groups to Folders…)"),
        QStringLiteral("(Move Groups to Folders…)")};
    EXPECT_EQ(titles(shownMenu()), whole);
    EXPECT_EQ(titles(*submenu(presetsTitle)), QStringList(QStringLiteral("(No Presets)")));
    EXPECT_EQ(titles(*submenu(removeTitle)), QStringList(removeAllTitle));

    choose(shownMenu(), saveTitle);
    chain = std::make_shared<const std::vector<int>>();
    choose(shownMenu(), saveTitle);
    choose(shownMenu(), saveTitle);
    EXPECT_EQ(presets(), (std::vector<GroupChain>{{3, 5}, {}})) << "each chain once";
    const QString first = QStringLiteral("Captured: Year > Folder");
    const QString all = QStringLiteral("All");
    EXPECT_EQ(titles(*submenu(presetsTitle)), (QStringList{first, all}));
    EXPECT_EQ(
        titles(*submenu(removeTitle)),
        (QStringList{first, all, QStringLiteral("-"), removeAllTitle}));
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
    const QString title = QStringLiteral("Captured: Year > Folder");
    choose(*submenu(presetsTitle), title);
    EXPECT_TRUE(calls.isEmpty());
    chain = std::make_shared<const std::vector<int>>(std::vector{16});
    choose(*submenu(presetsTitle), title);
    EXPECT_EQ(*chain, (std::vector{3, 5}));
    EXPECT_EQ(calls.join(u','), QStringLiteral("store,path control,scan"));
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
    choose(shownMenu(), QStringLiteral("Move Groups to Folders…"));
    choose(shownMenu(), QStringLiteral("Copy Groups to Folders…"));
    EXPECT_EQ(
        done, (std::vector{GroupMenus::GroupTransfer::Move, GroupMenus::GroupTransfer::Copy}));

    QToolButton button;
    button.show();
    menus.groupMenuBtnClicked(button);
    EXPECT_TRUE(menus.groupMenu()->isVisible());
    EXPECT_EQ(menus.groupMenu()->pos().x(), button.mapToGlobal(QPoint()).x());
    menus.groupMenu()->close();
}

} // namespace
