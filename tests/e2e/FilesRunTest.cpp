#include "e2e/Program.h"

#include <QDirIterator>

using e2e::State;

namespace {

struct FilesRunTest : e2e::ProgramTest {
    /// The folder of the first photograph on show, which it selects, and its name.
    void selectFirst() {
        name = state().items().value(0).name;
        click(name);
        ASSERT_TRUE(waitForSelection(name));
        QDirIterator files(photos(), {name}, QDir::Files, QDirIterator::Subdirectories);
        path = files.next();
        base = QFileInfo(path).completeBaseName();
    }
    QString beside(const QString& other) const { return QFileInfo(path).dir().filePath(other); }
    [[nodiscard]] testing::AssertionResult exists(const QString& file, bool is = true) const {
        return waitFor([&](const State&) { return QFile::exists(file) == is; })
               << file.toStdString();
    }
    /// Answers the chooser of folders.
    void chooseFolder(const QString& folder) {
        waitForFocus(u"QLineEdit"_s);
        typePath(folder);
    }
    QString makeFolder(const QString& below) const {
        QDir().mkpath(photo(below));
        return photo(below);
    }
    QString trashed(const QString& file) const {
        return QDir::home().filePath(u".local/share/Trash/files/"_s + file);
    }
    /// A button of a sheet, where the toolbar has one with the same words.
    void pressButton(const QString& text) {
        QRect place;
        ASSERT_TRUE(waitFor([&](const State& s) {
            place = s.button(text);
            return !place.isEmpty();
        })) << "no button "
            << text.toStdString();
        desktop.click(place.center());
    }
    /// The answers of the sheet that asks about a conflict.
    void answer(const QString& button, bool forAll = false) {
        if (forAll) clickPlace(u"Apply to All"_s);
        pressButton(button);
    }

    QString name;
    QString path;
    QString base;
};

TEST_F(FilesRunTest, eachCommandWorksByKeyAndByMenuOnRealFiles) {
    paintPhotographs();
    start();
    const QString outside = QDir::home().filePath(u"outside"_s);
    ASSERT_TRUE(QDir().mkpath(outside));
    selectFirst();
    desktop.key(u"ctrl+d"_s);
    EXPECT_TRUE(exists(beside(base + u" copy.jpg"_s)));
    EXPECT_TRUE(shows(93));
    choose({u"File"_s, u"Duplicate"_s});
    EXPECT_TRUE(exists(beside(base + u" copy 1.jpg"_s)));
    EXPECT_TRUE(shows(94));

    // To the trash, and for good. What was in the middle has stayed there: the copies are above.
    desktop.key(u"Home"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.isAtRest() && s.scroll() == 0; }));
    click(base + u" copy.jpg"_s);
    ASSERT_TRUE(waitForSelection(base + u" copy.jpg"_s));
    desktop.key(u"Delete"_s);
    EXPECT_TRUE(exists(trashed(base + u" copy.jpg"_s)));
    EXPECT_TRUE(shows(93));
    click(base + u" copy 1.jpg"_s);
    ASSERT_TRUE(waitForSelection(base + u" copy 1.jpg"_s));
    desktop.key(u"shift+Delete"_s);
    pressButton(u"Delete"_s);
    EXPECT_TRUE(exists(beside(base + u" copy 1.jpg"_s), false));
    EXPECT_TRUE(shows(92));

    click(name);
    ASSERT_TRUE(waitForSelection(name));
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"ctrl+shift+c"_s);
    chooseFolder(outside);
    EXPECT_TRUE(exists(outside + u'/' + name));
    waitForFocus(u"PBImageBrowserView"_s);
    choose({u"File"_s, u"Copy To…"_s});
    chooseFolder(outside);
    answer(u"Replace"_s);
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"ctrl+shift+m"_s);
    chooseFolder(outside);
    answer(u"Stop"_s);
    waitForFocus(u"PBImageBrowserView"_s);
    EXPECT_TRUE(QFile::exists(path));
    desktop.key(u"ctrl+a"_s);
    ASSERT_TRUE(waitFor([](const State& s) { return s.browser(u"selectCount"_s).toInt() == 92; }));
    choose({u"File"_s, u"Move To…"_s});
    chooseFolder(outside);
    answer(u"Skip"_s, true);
    EXPECT_TRUE(exists(outside + u'/' + name));
    EXPECT_TRUE(waitFor([&](const State&) { return QDir(outside).count() > 60; }));
}

TEST_F(FilesRunTest, pasteTakesWhatAnotherProgramCopiedOrCut) {
    paintPhotographs();
    start();
    selectFirst();
    for (const QString& way : {u"copy"_s, u"cut"_s}) {
        const QString foreign = QDir::home().filePath(way + u" ü 1.jpg"_s);
        ASSERT_TRUE(QFile::copy(path, foreign));
        QProcess owner;
        owner.setProcessEnvironment(desktop.environment());
        owner.start(QStringLiteral(VELMORA_CLIPBOARD_OWNER), {way, foreign});
        ASSERT_TRUE(owner.waitForReadyRead());
        desktop.key(u"ctrl+v"_s);
        EXPECT_TRUE(exists(photo(way + u" ü 1.jpg"_s)));
        EXPECT_TRUE(exists(foreign, way == u"copy"));
        EXPECT_TRUE(shows(way == u"copy" ? 93 : 94));
        owner.kill();
        owner.waitForFinished();
    }
    // Within the program: a copy beside itself, which is told apart by its name.
    click(name);
    ASSERT_TRUE(waitForSelection(name));
    desktop.key(u"ctrl+x"_s);
    desktop.key(u"ctrl+v"_s);
    EXPECT_TRUE(exists(photo(name)));
    EXPECT_TRUE(exists(path, false));
    EXPECT_TRUE(shows(94));
}

} // namespace
