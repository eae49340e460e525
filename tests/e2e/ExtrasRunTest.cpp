#include "e2e/Program.h"

#include <QJsonArray>

namespace {

using e2e::State;

class ExtrasRunTest : public e2e::ProgramTest {
protected:
    auto waitForChoice(const QString& name, const QString& text) {
        return waitFor([=](const State& s) {
            const auto box = s.control(name);
            return box && (*box)[u"text"_s] == text;
        });
    }
    /// Goes to the choice by the letter of its label and picks the entry that begins so.
    void
    pick(const QString& letter, const QString& name, const QString& begin, const QString& text) {
        desktop.key(u"alt+"_s + letter);
        ASSERT_TRUE(waitFor([=](const State& s) {
            const auto box = s.control(name);
            return box && (*box)[u"focus"_s].toBool();
        }));
        desktop.key(begin);
        EXPECT_TRUE(waitForChoice(name, text));
    }
    void openPreferences() {
        desktop.key(u"ctrl+comma"_s);
        ASSERT_TRUE(
            waitFor([](const State& s) { return s.control(u"PreferTheme"_s).has_value(); }));
        waitForFocus(u"QComboBox"_s);
    }
    void closePreferences() {
        desktop.key(u"Escape"_s);
        ASSERT_TRUE(waitFor([](const State& s) { return !s.control(u"PreferTheme"_s); }));
        waitForFocus(u"PBImageBrowserView"_s);
    }
    /// Prints what is selected to a file and answers how many pages it has.
    qsizetype pagesPrintedTo(const QString& file) {
        desktop.key(u"ctrl+p"_s);
        press(u"Save as PDF…"_s);
        EXPECT_TRUE(waitFor(&State::isChoosingFile));
        waitForFocus(u"QLineEdit"_s);
        typePath(file);
        // The window of the printing goes when the file is whole.
        EXPECT_TRUE(waitFor([](const State& s) { return !s.control(u"Save as PDF…"_s); }));
        waitForFocus(u"PBImageBrowserView"_s);
        const QByteArray bytes = support::readFile(file);
        EXPECT_TRUE(bytes.startsWith("%PDF"));
        EXPECT_TRUE(bytes.contains("\xff\xd8\xff")) << "no picture in it";
        return bytes.count("/MediaBox");
    }
};

TEST_F(ExtrasRunTest, preferencesActAtOnceByKeysAndAreThereAgain) {
    paintPhotographs();
    start();
    openPreferences();
    pick(u"w"_s, u"PreferWheel"_s, u"z"_s, u"Zooms"_s);
    pick(u"b"_s, u"PreferGround"_s, u"b"_s, u"Black"_s);
    pick(u"t"_s, u"PreferTheme"_s, u"d"_s, u"Dark"_s);
    pick(u"l"_s, u"PreferLanguage"_s, u"d"_s, u"Deutsch"_s);
    press(u"Clear…"_s);
    press(u"Remove Thumbnails"_s);
    ASSERT_TRUE(waitFor([](const State& s) {
        const auto all = s.items();
        return !s.control(u"Remove Thumbnails"_s) && s.isAtRest() && !all.isEmpty() &&
               std::ranges::all_of(all, &e2e::Item::hasThumbnail);
    })) << "thumbnails are made anew";
    waitForFocus();
    closePreferences();

    const QString name = state().items().at(1).name;
    desktop.doubleClick(item(name).picture.center());
    ASSERT_TRUE(waitFor([&](const State& s) {
        return s.large(u"image"_s) == name && s.large(u"fitIn"_s).toBool() && s.isAtRest();
    }));
    const int percent = state().large(u"percent"_s).toInt();
    desktop.wheel(e2e::rectOf(state().large(u"rect"_s)).center(), 3);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.large(u"percent"_s).toInt() > percent && s.large(u"image"_s) == name;
    }));
    desktop.key(u"Escape"_s); // the next start would come back to it
    ASSERT_TRUE(waitFor([](const State& s) {
        return s.json()[u"largeView"_s] == false && s.isAtRest() && s.browser(u"focus"_s).toBool();
    }));
    quit();

    startAgain();
    ASSERT_TRUE(
        waitFor([](const State& s) { return !s.place(u"Datei"_s, u"QMenuBar"_s).isNull(); }));
    openPreferences();
    EXPECT_TRUE(waitForChoice(u"PreferTheme"_s, u"Dunkel"_s));
    EXPECT_TRUE(waitForChoice(u"PreferGround"_s, u"Schwarz"_s));
    EXPECT_TRUE(waitForChoice(u"PreferWheel"_s, u"Vergrößern und verkleinern"_s));
    closePreferences();
    quit();
}

TEST_F(ExtrasRunTest, oneIsPrintedOnAPageAndTheRestOnSheets) {
    paintPhotographs();
    start();
    waitForFocus(u"PBImageBrowserView"_s);
    const QString name = state().items().at(0).name;
    click(name);
    ASSERT_TRUE(waitForSelection(name));
    const QString file = QDir::cleanPath(photos() + u"/../out.pdf"_s);
    EXPECT_EQ(pagesPrintedTo(file), 1);
    desktop.key(u"ctrl+shift+i"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.browser(u"selectCount"_s).toInt() == 91; }));
    EXPECT_EQ(pagesPrintedTo(QDir::cleanPath(photos() + u"/../sheets.pdf"_s)), 8);
    choose({u"Edit"_s, u"Select by Stars"_s, u"5 Stars"_s});
    EXPECT_TRUE(waitForSelection({}));
    choose({u"Edit"_s, u"Select by Stars"_s, u"No Stars"_s});
    EXPECT_TRUE(waitFor([](const State& s) { return s.browser(u"selectCount"_s).toInt() == 92; }));
    quit();
}

} // namespace
