#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"
#include "e2e/Program.h"

using e2e::State;

namespace {

struct FilesRunTest : e2e::ProgramTest {
    FilesRunTest() { QDir().mkpath(outside.path()); }
    /// Selects the first photograph on show.
    void startWithFirst() {
        start();
        name = selectFirst();
        path = pathOf(name);
    }
    QString beside(const QString& other) const { return QFileInfo(path).dir().filePath(other); }
    [[nodiscard]] testing::AssertionResult exists(const QString& file, bool is = true) const {
        return waitFor([&](const State&) { return QFile::exists(file) == is; })
               << file.toStdString();
    }
    /// The file comes, or goes, and the browser shows so many photographs then.
    [[nodiscard]] testing::AssertionResult
    leaves(const QString& file, bool is, qint64 count) const {
        const auto result = exists(file, is);
        return result ? shows(count) : result;
    }
    /// Answers the chooser of folders.
    void chooseFolder(const QString& folder) {
        waitForFocus(u"QLineEdit"_s);
        typePath(folder);
    }
    QString trashed(const QString& file) const {
        return QDir::home().filePath(u".local/share/Trash/files/"_s + file);
    }
    QStringList made() const { return outside.entryList(QDir::Files | QDir::Hidden); }

    /// Goes through the sheet of an export to the type in that place of its list.
    void chooseType(qsizetype place) {
        desktop.key(u"ctrl+shift+e"_s);
        takeType(place);
    }
    void takeType(qsizetype place) {
        waitForFocus(u"QComboBox"_s);
        desktop.key(u"Home"_s);
        for (qsizetype i = 0; i < place; ++i)
            desktop.key(u"Down"_s);
        // The buttons move with what the types have to choose.
        desktop.key(u"Return"_s);
        waitForFocus(u"QLineEdit"_s);
    }
    /// What is not yet in the history, since the command has not ended, can't be undone yet.
    void undoUntil(const std::function<bool()>& isUndone) {
        waitForFocus(u"PBImageBrowserView"_s);
        EXPECT_TRUE(waitFor(
            [&](const State& s) { return s.isAtRest() && isUndone(); },
            [&] {
                if (!isUndone()) desktop.key(u"ctrl+z"_s);
            }));
    }
    /// Until the command has ended and the browser has the keys.
    void waitUntilDone() { EXPECT_TRUE(rests({{u"focus"_s, u"PBImageBrowserView"_s}})); }
    static QSize sizeOf(const QString& file) {
        PBImageImporterManager importers;
        const auto importer = importers.imageImporterForImageURL(file);
        return importer ? importer->createImageWithMaxSize(0, 0).size() : QSize();
    }

    QString name;
    QString path;
    const QDir outside{QDir::home().filePath(u"outside"_s)};
};

TEST_F(FilesRunTest, eachCommandWorksOnRealFilesAndWhatItDidIsTakenBack) {
    paintPhotographs();
    startWithFirst();
    const QString copy = QFileInfo(path).completeBaseName() + u" copy.jpg"_s;
    desktop.key(u"ctrl+d"_s);
    EXPECT_TRUE(leaves(beside(copy), true, 93));

    // To the trash, and for good. What was in the middle has stayed there: the copy is above.
    desktop.key(u"Home"_s);
    ASSERT_TRUE(rests({{u"browser.scroll"_s, 0}}));
    select(copy);
    desktop.key(u"Delete"_s);
    EXPECT_TRUE(leaves(trashed(copy), true, 92));
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(leaves(beside(copy), true, 93));
    select(copy);
    desktop.key(u"shift+Delete"_s);
    press(u"Delete"_s);
    EXPECT_TRUE(leaves(beside(copy), false, 92));

    select(name);
    choose({u"Edit"_s, u"Copy"_s});
    choose({u"Edit"_s, u"Paste"_s});
    EXPECT_TRUE(leaves(photo(name), true, 93));
    choose({u"Edit"_s, u"Undo Paste of a Photograph"_s});
    EXPECT_TRUE(leaves(photo(name), false, 92));
    // All groups as folders, and away with these again.
    choose({u"Group"_s, u"Copy Groups to Folders…"_s});
    chooseFolder(outside.path());
    const auto folders = [&] { return outside.entryList(QDir::Dirs | QDir::NoDotAndDotDot); };
    EXPECT_TRUE(waitFor([&](const State&) { return folders().size() == 5; }));
    undoUntil([&] { return folders().isEmpty(); });

    select(name);
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"ctrl+shift+c"_s);
    chooseFolder(outside.path());
    EXPECT_TRUE(exists(outside.filePath(name)));
    waitForFocus(u"PBImageBrowserView"_s);
    choose({u"File"_s, u"Copy To…"_s});
    chooseFolder(outside.path());
    press(u"Replace"_s);
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"ctrl+shift+m"_s);
    chooseFolder(outside.path());
    press(u"Stop"_s);
    waitForFocus(u"PBImageBrowserView"_s);
    EXPECT_TRUE(QFile::exists(path));
    selectAll();
    choose({u"File"_s, u"Move To…"_s});
    chooseFolder(outside.path());
    clickPlace(u"Apply to All"_s);
    press(u"Skip"_s);
    EXPECT_TRUE(exists(outside.filePath(name)));
    EXPECT_TRUE(waitFor([&](const State&) { return made().size() > 60; }));
}

TEST_F(FilesRunTest, theMenusTurnAndExportAsItIsSeen) {
    path = photo(u"sub/turned.jpg"_s);
    const QSize size(60, 40);
    support::writePicture(path, size);
    // What says that it is to be turned clockwise, behind the mark at the start.
    const QByteArray orientation = QByteArray::fromHex(
        "ffe1002245786966000049492a0008000000010012010300010000000600000000000000");
    support::writeFile(path, support::readFile(path).insert(2, orientation));
    startWithFirst();
    const auto isTurned = [this](int angle) {
        return waitFor([&](const State& s) {
            const QJsonValue group = s.browser(u"groups"_s)[0];
            return s.isAtRest() && group[u"items"_s][0][u"angle"_s] == angle;
        });
    };
    ASSERT_TRUE(isTurned(-90));
    choose({u"Image"_s, u"Rotate Left"_s});
    EXPECT_TRUE(isTurned(0));
    desktop.key(u"ctrl+shift+r"_s);
    EXPECT_TRUE(isTurned(90));
    choose({u"Image"_s, u"Rotate Automatically"_s});
    EXPECT_TRUE(isTurned(-90));

    const QString turned = outside.filePath(u"out.png"_s);
    choose({u"File"_s, u"Export…"_s});
    takeType(codec::writableTypes().indexOf(u"public.png"_s));
    typePath(turned);
    EXPECT_TRUE(exists(turned));
    EXPECT_EQ(sizeOf(turned), size.transposed());
    waitUntilDone();
    choose({u"Image"_s, u"Reset Rotation"_s});
    EXPECT_TRUE(isTurned(0));
}

TEST_F(FilesRunTest, photographsAreExportedManyOrAsManyAsAreWholeWhenItIsCancelledAndOne) {
    paintPhotographs();
    startWithFirst();
    const QSize size = sizeOf(path);
    const QDir many(QDir::home().filePath(u"many"_s));
    ASSERT_TRUE(QDir().mkpath(many.path()));
    const auto files = [&many] { return many.entryList(QDir::Files | QDir::Hidden); };
    selectAll();
    chooseType(codec::writableTypes().indexOf(u"public.avif"_s)); // which takes minutes
    typePath(many.path());
    press(u"Cancel"_s);
    waitUntilDone();
    EXPECT_LT(files().size(), 92);
    for (const QString& exported : files())
        EXPECT_FALSE(sizeOf(many.filePath(exported)).isEmpty()) << exported.toStdString();
    undoUntil([&] { return files().isEmpty(); });
    chooseType(0);
    typePath(many.path());
    EXPECT_TRUE(waitFor([&](const State&) { return files().size() == 92; }));
    waitUntilDone();
    EXPECT_EQ(sizeOf(many.filePath(name)), size);
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(waitFor([&](const State&) { return files().isEmpty(); }));

    desktop.key(u"Home"_s);
    ASSERT_TRUE(waitForSelection(name));
    const QString file = outside.filePath(u"out.jpg"_s);
    support::writeFile(file, "former");
    chooseType(0);
    typePath(file);
    EXPECT_EQ(QFileInfo(file).size(), 6);
    press(u"Yes"_s);
    EXPECT_TRUE(waitFor([&](const State&) { return QFileInfo(file).size() > 100; }));
    EXPECT_EQ(sizeOf(file), size);
    waitUntilDone();
    // The extension is added, and then what is there is not replaced without a question.
    chooseType(0);
    typePath(outside.filePath(u"out"_s));
    press(u"Skip"_s);
    waitUntilDone();
}

TEST_F(FilesRunTest, pasteTakesWhatAnotherProgramOrThisOneCut) {
    paintPhotographs();
    startWithFirst();
    const QString foreign = QDir::home().filePath(u"cut ü 1.jpg"_s);
    ASSERT_TRUE(QFile::copy(path, foreign));
    QProcess owner;
    owner.setProcessEnvironment(desktop.environment());
    owner.start(QStringLiteral(VELMORA_CLIPBOARD_OWNER), {foreign});
    ASSERT_TRUE(owner.waitForReadyRead());
    desktop.key(u"ctrl+v"_s);
    EXPECT_TRUE(exists(photo(u"cut ü 1.jpg"_s)));
    EXPECT_TRUE(leaves(foreign, false, 93));
    owner.kill();
    owner.waitForFinished();
    select(name);
    desktop.key(u"ctrl+x"_s);
    desktop.key(u"ctrl+v"_s);
    EXPECT_TRUE(exists(photo(name)));
    EXPECT_TRUE(leaves(path, false, 93));
}

} // namespace
