#include "e2e/Program.h"

#include "shell/session/SessionState.h"

namespace {

using e2e::State;

class RestartRunTest : public e2e::ProgramTest {
protected:
    auto waitForSheet(const State& before) {
        e2e::Values values{{u"large"_s, QJsonValue::Undefined}};
        for (const QString& same :
             {u"browser.scroll"_s, u"browser.selected"_s, u"browser.current"_s, u"folder"_s})
            values.emplace_back(same, before.value(same));
        return rests(values);
    }
};

TEST_F(RestartRunTest, bothViewsComeBackAsTheyWereAndACrashOnlyOnceIntoTheSamePhotograph) {
    startWithPhotographs();
    // A place in the midst, with two selected and the place not theirs.
    desktop.key(u"End"_s);
    ASSERT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && s.scroll() > 0 && s.scroll() == s.browser(u"scrollEnd"_s).toDouble();
    }));
    const auto shown = state().items();
    ASSERT_GT(shown.size(), 7);
    click(shown[4].name); // the first ones may be cut
    click(shown[6].name, u"ctrl"_s);
    desktop.wheel(item(shown[4].name).picture.center(), 2);
    ASSERT_TRUE(waitFor([](const State& s) {
        return s.isAtRest() && s.has({{u"browser.selectCount"_s, 2}}) && s.scroll() > 0 &&
               s.scroll() < s.browser(u"scrollEnd"_s).toDouble();
    }));
    const State sheet = state();
    quit();
    startAgain();
    ASSERT_TRUE(waitForSheet(sheet));

    // The large view, of those that are selected.
    desktop.key(u"Return"_s);
    ASSERT_TRUE(becomes({{u"large.count"_s, 2}}));
    waitForFocus();
    desktop.key(u"Right"_s);
    const QString second = sheet.selected().section(u' ', 1);
    ASSERT_TRUE(showsLarge(second, 2));
    quit();
    startAgain();
    ASSERT_TRUE(showsLarge(second, 2));
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitForSelection(second));

    // Of a group, and what a crash leaves.
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"Return"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.large(u"count"_s).toInt() > 2; }));
    const int count = state().large(u"count"_s).toInt();
    for (int crashes = 0; crashes < 2; ++crashes) {
        ASSERT_TRUE(showsLarge(second, count));
        // Only what the file knows survives a crash.
        EXPECT_TRUE(waitFor([&](const State& s) {
            const auto kept = SessionState::read(profile() + u"/session.json"_s);
            return s.isAtRest() && kept && kept->isLargeView && !kept->isListSelected &&
                   kept->crashes == crashes;
        }));
        crash();
        startAgain();
    }
    EXPECT_TRUE(waitForSelection(second));
    EXPECT_TRUE(state().large(u"image"_s).isUndefined());
}

} // namespace
