#include "platform/desktop/IdleInhibitor.h"

#include "support/ToldDesktop.h"

namespace {

struct IdleInhibitorTest : support::DesktopTest {
    QString calls(qsizetype count) { return desktop.toldCalls(count); }

    std::unique_ptr<platform::IdleInhibitor> inhibitor =
        platform::makeIdleInhibitor(desktop.programsBus());
};

TEST_F(
    IdleInhibitorTest, thePortalIsAskedOnceAndReleasedByItsRequestElseTheScreenSaverByItsCookie) {
    inhibitor->release();
    for (int time = 0; time < 2; ++time) {
        inhibitor->inhibit(u"a show"_s);
        inhibitor->inhibit(u"a show"_s);
        EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
        inhibitor->release();
        EXPECT_EQ(calls(1), u"portal Close /request/7"_s);
        inhibitor->release();
    }
    desktop.hasPortal = false;
    inhibitor->inhibit(u"a show"_s);
    EXPECT_EQ(calls(2), u"portal Inhibit 8, saver Inhibit"_s);
    inhibitor->release();
    EXPECT_EQ(calls(1), u"saver UnInhibit 42"_s);
}

TEST_F(IdleInhibitorTest, anAnswerThatComesTooLateIsUndoneAndNobodyElseIsAsked) {
    desktop.isHolding = true;
    const auto leaveBeforeTheAnswer = [this] {
        inhibitor->inhibit(u"a show"_s);
        EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
        inhibitor->release();
        desktop.answer();
    };
    leaveBeforeTheAnswer();
    EXPECT_EQ(calls(1), u"portal Close /request/7"_s);
    desktop.hasPortal = false;
    leaveBeforeTheAnswer();
    inhibitor->inhibit(u"another"_s);
    EXPECT_EQ(calls(1), u"portal Inhibit 8"_s);
}

} // namespace
