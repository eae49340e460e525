#include "e2e/Program.h"
#include "support/ToldDesktop.h"

#include <QImage>

using e2e::State;

namespace {

struct ShareRunTest : e2e::ProgramTest {
    /// Another program for photographs, which writes down what it is started with.
    void installProgram() const {
        const QString script = QDir::home().filePath(u"record.sh"_s);
        support::writeFile(
            script, "printf '%s\\n' \"$@\" > \"$0.part\" && mv \"$0.part\" \"$0.done\"");
        const QDir applications(QDir::home().filePath(u".local/share/applications"_s));
        support::writeFile(
            applications.filePath(u"recorder.desktop"_s),
            "[Desktop Entry]\nType=Application\nName=Recorder\nExec=/bin/sh " + script.toUtf8() +
                " %F\n");
        support::writeFile(
            applications.filePath(u"mimeinfo.cache"_s),
            "[MIME Cache]\nimage/jpeg=recorder.desktop;\n");
    }
    /// What that was started with last.
    QString handed() const {
        const QString done = QDir::home().filePath(u"record.sh.done"_s);
        EXPECT_TRUE(waitFor([&](const State&) { return QFile::exists(done); }));
        const QString lines = QString::fromUtf8(support::readFile(done)).trimmed();
        QFile::remove(done);
        return lines;
    }
    void startWithFirst() {
        startWithPhotographs();
        file = QFileInfo(pathOf(selectFirst()));
    }
    bool isUpright(const State& s) const {
        const QRect picture = s.item(file.fileName()).picture;
        return picture.height() > picture.width();
    }

    QFileInfo file;
};

TEST_F(ShareRunTest, otherProgramsGetTheOriginalOrAnUprightCopyAndTheDesktopItsPicture) {
    support::ToldDesktop services;
    if (services.isRunning()) desktop.setBus(services.address());
    installProgram();
    startWithFirst();
    choose({u"File"_s, u"Share"_s, u"Recorder"_s});
    EXPECT_EQ(handed(), file.filePath());

    const bool wasUpright = isUpright(state());
    desktop.key(u"ctrl+r"_s);
    ASSERT_TRUE(
        waitFor([&](const State& s) { return s.isAtRest() && isUpright(s) != wasUpright; }));
    choose({u"File"_s, u"Open With"_s, u"Recorder"_s});
    EXPECT_EQ(handed(), file.filePath());
    // By the toolbar, which opens the same menu below its button.
    clickPlace(u"Share"_s);
    chooseInMenu({u"Recorder"_s});
    const QString copy = handed();
    EXPECT_TRUE(copy.endsWith(file.completeBaseName() + u".jpg"_s)) << copy.toStdString();
    EXPECT_NE(copy, file.filePath());
    EXPECT_EQ(QImage(copy).size(), QImage(file.filePath()).size().transposed());

    if (!services.isRunning()) return;
    waitForFocus(u"PBImageBrowserView"_s);
    desktop.key(u"ctrl+alt+o"_s);
    EXPECT_EQ(
        services.toldCalls(1),
        u"ShowItems "_s + QUrl::fromLocalFile(file.filePath()).toString(QUrl::FullyEncoded));
    choose({u"File"_s, u"Share"_s, u"E-Mail"_s});
    EXPECT_TRUE(services.toldCalls(1).startsWith(u"portal ComposeEmail "_s));
    choose({u"File"_s, u"Set as Desktop Background"_s});
    EXPECT_TRUE(services.toldCalls(1).startsWith(u"portal SetWallpaperFile "_s));
}

TEST_F(ShareRunTest, aPhotographDraggedToAFolderOfTheSidebarGoesThere) {
    startWithFirst();
    const QRect row = state().place(u"photos"_s, u"PBSourceOutlineView"_s);
    ASSERT_FALSE(row.isEmpty());
    const QString there = photo(file.fileName());
    desktop.drag(item(file.fileName()).picture.center(), row.center());
    EXPECT_TRUE(becomes({{u"markedFolder"_s, photos()}}));
    desktop.release();
    EXPECT_TRUE(waitFor(
        [&](const State&) { return QFile::exists(there) && !QFile::exists(file.filePath()); }));
    EXPECT_TRUE(shows(92));
    desktop.key(u"ctrl+z"_s);
    EXPECT_TRUE(waitFor([&](const State&) { return QFile::exists(file.filePath()); }));
}

} // namespace
