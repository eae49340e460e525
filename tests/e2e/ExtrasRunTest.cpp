#include "e2e/Program.h"

namespace {

using e2e::State;

class ExtrasRunTest : public e2e::ProgramTest {
protected:
    auto waitForChoice(const QString& name, const QString& text) {
        return waitForControl(name, u"text"_s, text);
    }
    /// Goes to the choice by the letter of its label and picks the entry that begins so.
    void
    pick(const QString& letter, const QString& name, const QString& begin, const QString& text) {
        desktop.key(u"alt+"_s + letter);
        ASSERT_TRUE(waitForControl(name, u"focus"_s, true));
        desktop.key(begin);
        EXPECT_TRUE(waitForChoice(name, text));
    }
    void openPreferences() {
        desktop.key(u"ctrl+comma"_s);
        ASSERT_TRUE(waitFor([](const State& s) { return !!s.control(u"PreferTheme"_s); }));
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
    startWithPhotographs();
    openPreferences();
    pick(u"w"_s, u"PreferWheel"_s, u"z"_s, u"Zooms"_s);
    pick(u"b"_s, u"PreferGround"_s, u"b"_s, u"Black"_s);
    pick(u"t"_s, u"PreferTheme"_s, u"d"_s, u"Dark"_s);
    pick(u"l"_s, u"PreferLanguage"_s, u"d"_s, u"Deutsch"_s);
    press(u"Clear…"_s);
    press(u"Remove Thumbnails"_s);
    ASSERT_TRUE(waitFor([](const State& s) {
        return !s.control(u"Remove Thumbnails"_s) && s.isAtRest() && s.hasAllThumbnails();
    })) << "thumbnails are made anew";
    waitForFocus();
    closePreferences();

    const QString name = state().items().at(1).name;
    desktop.doubleClick(item(name).picture.center());
    ASSERT_TRUE(rests({{u"large.image"_s, name}, {u"large.fitIn"_s, true}}));
    const int percent = state().large(u"percent"_s).toInt();
    desktop.wheel(e2e::rectOf(state().large(u"rect"_s)).center(), 3);
    EXPECT_TRUE(waitFor([&](const State& s) {
        return s.large(u"percent"_s).toInt() > percent && s.large(u"image"_s) == name;
    }));
    desktop.key(u"Escape"_s); // the next start would come back to it
    ASSERT_TRUE(rests({{u"largeView"_s, false}, {u"browser.focus"_s, true}}));
    quit();

    startAgain();
    ASSERT_TRUE(
        waitFor([](const State& s) { return !s.place(u"Datei"_s, u"QMenuBar"_s).isNull(); }));
    openPreferences();
    EXPECT_TRUE(waitForChoice(u"PreferTheme"_s, u"Dunkel"_s));
    EXPECT_TRUE(waitForChoice(u"PreferGround"_s, u"Schwarz"_s));
    EXPECT_TRUE(waitForChoice(u"PreferWheel"_s, u"Vergrößern und verkleinern"_s));
    closePreferences();
}

TEST_F(ExtrasRunTest, oneIsPrintedOnAPageAndTheRestOnSheets) {
    startWithPhotographs();
    waitForFocus(u"PBImageBrowserView"_s);
    selectFirst();
    EXPECT_EQ(pagesPrintedTo(QDir::home().filePath(u"out.pdf"_s)), 1);
    desktop.key(u"ctrl+shift+i"_s);
    ASSERT_TRUE(becomes({{u"browser.selectCount"_s, 91}}));
    EXPECT_EQ(pagesPrintedTo(QDir::home().filePath(u"sheets.pdf"_s)), 8);
}

} // namespace
