#include "group/GroupChainMenu.h"
#include "group/GroupPresets.h"
#include "platform/UserDefaults.h"
#include "support/Support.h"

using namespace group;

namespace {

using Action = PBGroupMenuAction;

Action replace(int position, int type) {
    return {Action::Replace, std::array{position, type}};
}

std::vector<Action> actionsOf(const std::vector<ChainMenuEntry>& menu) {
    std::vector<Action> actions;
    for (const auto& entry : menu)
        if (entry.action) actions.push_back(*entry.action);
    return actions;
}

TEST(GroupChainMenuTest, addCellOffersWhatIsNotInTheChain) {
    const auto menu = groupMenuOfChain(GroupChain{3, 5}, 2);
    std::vector<Action> expected;
    for (const int type : {1, 2, 6, 7, 8, 9, 14, 11, 12, 13})
        expected.push_back({Action::Add, type});
    EXPECT_EQ(actionsOf(menu), expected);
    ASSERT_EQ(menu.size(), 13U);
    EXPECT_TRUE(menu[10].isSeparator());
    EXPECT_EQ(menu[11].entries[3].action, (Action{Action::Add, 4})) << "3 is in the chain";
    EXPECT_EQ(menu[12].entries.size(), 29U);
    EXPECT_TRUE(cellsOfChain(GroupChain{3, 5}).back().title.isEmpty());
    EXPECT_EQ(cellsOfChain(GroupChain{3, 5, 16}).size(), 3U) << "no cell to add one";
}

TEST(GroupChainMenuTest, linkCellReplacesSwapsAndRemoves) {
    const auto menu = groupMenuOfChain(GroupChain{16, 3, 40}, 1);
    const auto actions = actionsOf(menu);
    ASSERT_EQ(actions.size(), 14U);
    EXPECT_EQ(actions[0], replace(1, 1));
    EXPECT_EQ(actions[11], (Action{Action::Swap, std::array{1, 0}}));
    EXPECT_EQ(actions[12], (Action{Action::Swap, std::array{1, 2}}));
    EXPECT_EQ(actions[13], (Action{Action::Remove, 1}));
    EXPECT_TRUE(menu[menu.size() - 2].isSeparator());
    EXPECT_EQ(menu[menu.size() - 4].title, u"Camera Model <--> Captured: Year"_s);
    EXPECT_EQ(menu[menu.size() - 3].title, u"Captured: Year <--> Subject Code"_s);
    // A single link has nothing to change places with.
    const auto single = groupMenuOfChain(GroupChain{3}, 0);
    EXPECT_EQ(actionsOf(single).back(), (Action{Action::Remove, 0}));
    EXPECT_EQ(std::ranges::count_if(single, &ChainMenuEntry::isSeparator), 2);
}

TEST(GroupChainMenuTest, actionsChangeTheChain) {
    const GroupChain chain{3, 5};
    const auto after = [&](const Action& action, bool canUseGeocoder = true) {
        return chainAfterAction(chain, action, canUseGeocoder);
    };
    using Result = std::variant<GroupChain, ChainRefusal>;
    EXPECT_EQ(after({Action::Add, 14}), Result(GroupChain{3, 5, 14}));
    EXPECT_EQ(after({Action::Add, 14}, false), Result(ChainRefusal::NeedsGeocoder));
    EXPECT_EQ(after(replace(0, 14), false), Result(ChainRefusal::NeedsGeocoder));
    EXPECT_EQ(after(replace(0, 16), false), Result(GroupChain{16, 5}));
    EXPECT_EQ(after({Action::Swap, std::array{0, 1}}), Result(GroupChain{5, 3}));
    EXPECT_EQ(after({Action::Remove, 0}), Result(GroupChain{5}));
    for (const Action& stale :
         {Action{Action::Remove, 2}, Action{Action::Remove, -1}, replace(2, 16),
          Action{Action::Swap, std::array{0, 2}}, Action{Action::Swap, 1},
          Action{Action::Add, std::array{0, 1}}})
        EXPECT_EQ(after(stale), Result(ChainRefusal::Stale));
}

struct GroupPresetsTest : testing::Test {
    [[nodiscard]] QString file() const { return _folder.filePath(u"s.conf"_s); }

private:
    const QTemporaryDir _folder;
};

TEST_F(GroupPresetsTest, firstStartSeedsAndLaterStartsKeep) {
    {
        platform::UserDefaults settings(file());
        GroupPresets presets(settings);
        presets.seedIfAbsent(false);
        EXPECT_EQ(
            presets.chains(),
            (std::vector<GroupChain>{{3, 5}, {3, 16}, {3, 18}, {3, 21}, {3, 26}, {16, 18}}));
        presets.removeAll();
    }
    platform::UserDefaults settings(file());
    GroupPresets presets(settings);
    presets.seedIfAbsent(true);
    EXPECT_TRUE(presets.chains().empty()) << "an emptied list is not a missing one";
    settings.removeKey(u"FavoriteGroupArrayArray"_s);
    presets.seedIfAbsent(true);
    EXPECT_EQ(presets.chains().at(1), (GroupChain{3, 14}));
}

} // namespace
