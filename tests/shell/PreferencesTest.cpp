#include "shell/WindowFixture.h"
#include "shell/preferences/PreferencesDialog.h"
#include "support/Mouse.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace {

using PreferencesTest = WindowFixture;

TEST_F(PreferencesTest, thumbnailsAreClearedOnlyByConsentAndAFailureIsTold) {
    showWindow();
    choose(u"showPreferences");
    Q_EMIT part<QMenuBar>().actions().front()->menu()->aboutToHide(); // what waits goes on
    auto& dialog = part<PreferencesDialog>();
    const auto shows = [&](const QString& text) {
        return std::ranges::any_of(dialog.findChildren<QLabel*>(), [&](const QLabel* label) {
            return label->text().startsWith(text);
        });
    };
    EXPECT_TRUE(shows(u"3.0 MB"_s));
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    auto* clear = *std::ranges::find_if(
        buttons, [](const QPushButton* each) { return each->text().contains(u'…'); });
    const auto answer = [&](const QString& button) {
        support::pressButton(*dialog.findChild<QMessageBox*>(), button);
    };
    clear->click();
    answer(u"Cancel"_s);
    EXPECT_FALSE(clearing);
    runPosted();
    clear->click();
    answer(u"Remove Thumbnails"_s);
    ASSERT_TRUE(clearing);
    EXPECT_FALSE(clear->isEnabled());
    thumbnailBytes = 1024;
    clearing(true);
    EXPECT_TRUE(clear->isEnabled() && shows(u"1.0 KB"_s));
    runPosted();
    EXPECT_FALSE(dialog.findChild<QMessageBox*>());
    clearing(false);
    EXPECT_TRUE(dialog.findChild<QMessageBox*>());
    const auto late = std::exchange(clearing, {});
    delete &dialog;
    late(false); // nobody is there to be told
}

} // namespace
