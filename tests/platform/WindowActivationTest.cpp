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

TEST(WindowActivationTest, whatLetThisProgramTakeTheKeysIsNotHandedOnToThoseThatItStarts) {
    const platform::Activation given{"id_TIME1", "a token"};
    qputenv("DESKTOP_STARTUP_ID", given.startupId);
    qputenv("XDG_ACTIVATION_TOKEN", given.token);
    EXPECT_EQ(platform::activationOfStart(), given);
    platform::forgetActivation();
    EXPECT_EQ(platform::activationOfStart(), platform::Activation());
}
