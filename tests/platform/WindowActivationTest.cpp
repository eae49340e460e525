#include "platform/desktop/WindowActivation.h"

#include "support/Support.h"

TEST(WindowActivationTest, theUsersTimeIsTheNumberAtTheEndOfAnId) {
    const std::pair<const char*, quint32> ids[] = {
        {"", 0},
        {"files-12-host_TIME4294967295", 4'294'967'295},
        {"a_TIME1_TIME27", 27},
        {"a_TIME", 0},
        {"a_TIME12b", 0},
        {"a_TIME4294967296", 0}};
    for (const auto& [id, time] : ids)
        EXPECT_EQ(platform::timeOfStartupId(id), time) << id;
}
