#include "platform/program/TextLanguages.h"
#include "shell/PBMainWindowController.h"
#include "shell/ShellFixture.h"
#include "shell/large/LargeView.h"
#include "shell/preferences/PreferencesDialog.h"
#include "ui/PBThemes.h"
#include "viewer/PBImageView.h"
#include "viewer/controller/PBImageViewController.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>

namespace {

struct PreferencesTest : ShellFixture {
    PreferencesDialog& open() {
        // What menus do before they open.
        const auto* bar = controller.window().findChild<QMenuBar*>();
        QMenu* menu = bar->actions().front()->menu();
        Q_EMIT menu->aboutToShow();
        Q_EMIT menu->aboutToHide();
        const QList<QAction*> actions = controller.window().actions();
        (*std::ranges::find(actions, u"showPreferences"_s, &QAction::objectName))->trigger();
        return *controller.window().findChild<PreferencesDialog*>();
    }
    static QComboBox& box(PreferencesDialog& dialog, const QString& name) {
        return *dialog.findChild<QComboBox*>(name);
    }
    PBMainWindowController controller{shell()};
};

TEST_F(PreferencesTest, eachChoiceActsAtOnceIsKeptAndStandsInTheNextWindow) {
    controller.showWindow();
    PreferencesDialog& dialog = open();
    EXPECT_EQ(&open(), &dialog) << "one window only";
    QStringList heard;
    QObject::connect(&preferences, &Preferences::themeDidChange, &dialog, [&] { heard += u"t"_s; });
    QObject::connect(&preferences, &Preferences::wheelDidChange, &dialog, [&] { heard += u"w"_s; });
    const QString languages[] = {u"de"_s, QString()};
    for (const QString& language : languages) {
        const int index = static_cast<int>(platform::LocalizedTexts::languages().indexOf(language));
        box(dialog, u"PreferLanguage"_s).setCurrentIndex(index + 1);
        EXPECT_EQ(Preferences(defaults).language(), language);
    }
    box(dialog, u"PreferTheme"_s).setCurrentIndex(2);
    box(dialog, u"PreferWheel"_s).setCurrentIndex(1);
    EXPECT_EQ(heard.join(QString()), u"tw");
    PBImageView& view = controller.largeView().controller().imageView();
    view.resize(200, 100);
    const QColor grounds[] = {
        QColor(Qt::black), QColor(Qt::white), PBThemes::imageBrowserBackgroundColor(),
        ImagePainter::groundColor()};
    for (const int choice : {1, 2, 3, 0}) {
        box(dialog, u"PreferGround"_s).setCurrentIndex(choice);
        EXPECT_EQ(view.grab().toImage().pixelColor(3, 3), grounds[(choice + 3) % 4]) << choice;
    }
    box(dialog, u"PreferGround"_s).setCurrentIndex(2);

    platform::UserDefaults stored(path(u"Velmora.conf"));
    Preferences next(stored);
    EXPECT_EQ(
        std::tuple(next.theme(), next.wheel(), next.ground()),
        std::tuple(Preferences::Theme::Dark, Preferences::Wheel::Zoom, Preferences::Ground::White));
    PreferencesDialog again(next, thumbnailCache, controller.window());
    EXPECT_EQ(box(again, u"PreferTheme"_s).currentIndex(), 2);
    EXPECT_EQ(box(again, u"PreferLanguage"_s).currentIndex(), 0);
    for (const QString& key : {u"Theme"_s, u"LargeViewWheel"_s, u"LargeViewGround"_s})
        stored.setInteger(7, key);
    EXPECT_EQ(Preferences(stored).ground(), Preferences::Ground::Grey) << "there is no such one";
}

TEST_F(PreferencesTest, thumbnailsAreClearedOnlyByConsentAndAFailureIsTold) {
    controller.showWindow();
    PreferencesDialog& dialog = open();
    const auto shows = [&](const QString& text) {
        return std::ranges::any_of(dialog.findChildren<QLabel*>(), [&](const QLabel* label) {
            return label->text().startsWith(text);
        });
    };
    EXPECT_TRUE(shows(u"3.0 MB"_s));
    const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
    auto* clear = *std::ranges::find_if(
        buttons, [](const QPushButton* each) { return each->text().contains(u'…'); });
    const auto answer = [&](QMessageBox::ButtonRole role) {
        auto* box = dialog.findChild<QMessageBox*>();
        ASSERT_TRUE(box);
        for (QAbstractButton* button : box->buttons())
            if (box->buttonRole(button) == role) return button->click();
    };
    clear->click();
    answer(QMessageBox::RejectRole);
    EXPECT_FALSE(clearing);
    runPosted();
    clear->click();
    answer(QMessageBox::AcceptRole);
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
