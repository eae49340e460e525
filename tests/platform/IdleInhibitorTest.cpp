#include "platform/desktop/IdleInhibitor.h"

#include "support/ToldDesktop.h"

namespace {

struct IdleInhibitorTest : testing::Test {
    support::ToldDesktop desktop;
    std::unique_ptr<platform::IdleInhibitor> inhibitor;

    void SetUp() override {
        if (!desktop.isRunning()) GTEST_SKIP() << "there is no bus";
        inhibitor = platform::makeIdleInhibitor(
            QDBusConnection::connectToBus(desktop.address(), u"program"_s));
    }
    void TearDown() override {
        inhibitor.reset();
        QDBusConnection::disconnectFromBus(u"program"_s);
    }
    QString calls(qsizetype count) { return desktop.toldCalls(count); }
};

TEST_F(IdleInhibitorTest, thePortalIsAskedOnceAndReleasedByItsRequest) {
    inhibitor->release();
    inhibitor->inhibit(u"a show"_s);
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    inhibitor->release();
    EXPECT_EQ(calls(1), u"portal Close /request/7"_s);
    inhibitor->release();
    inhibitor->inhibit(u"another"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
}

TEST_F(IdleInhibitorTest, withoutAPortalTheScreenSaverIsAskedAndItsCookieReleases) {
    desktop.hasPortal = false;
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(2), u"portal Inhibit 8, saver Inhibit"_s);
    inhibitor->release();
    EXPECT_EQ(calls(1), u"saver UnInhibit 42"_s);
}

TEST_F(IdleInhibitorTest, anAnswerThatComesTooLateIsUndoneAndNobodyElseIsAsked) {
    desktop.isHolding = true;
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    inhibitor->release();
    desktop.answer();
    EXPECT_EQ(calls(1), u"portal Close /request/7"_s);

    desktop.hasPortal = false;
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
    inhibitor->release();
    desktop.answer();
    inhibitor->inhibit(u"another"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
}

} // namespace
