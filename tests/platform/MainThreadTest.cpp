#include "platform/work/MainThread.h"

#include "support/Support.h"

#ifndef QT_NO_DEBUG
TEST(MainThreadTest, callsOnOtherThreadsEndTheProgram) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    platform::assertMainThread();
    EXPECT_DEATH(
        std::thread([] { platform::assertMainThread(); }).join(), "for the main thread only");
}
#endif
