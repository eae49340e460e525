#include "shell/session/SessionState.h"

#include "support/Support.h"

namespace {

TEST(SessionStateTest, comesBackFromItsFileAsItWasAndNothingComesOfOtherTexts) {
    SessionState state;
    state.folder = QString::fromUtf8("/photos/\"ü\"\n");
    state.catalogue = 2'079'218'531;
    state.isLargeView = state.isListSelected = state.hasEnded = true;
    state.selected = {{(qint64{1} << 52) + 1, u"/a.jpg"_s}, {7, {}}};
    state.current = {7, u"/photos/b.jpg"_s};
    state.anchor = {8, u"/photos/c.jpg"_s};
    state.anchorOffset = -12.25;
    state.crashes = 1;
    const QTemporaryDir folder;
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
