#include "e2e/Program.h"

namespace {

using e2e::State;

const QString sidebar = u"PBSourceOutlineView"_s;

class OpenRunTest : public e2e::ProgramTest {
protected:
    testing::AssertionResult showsFile(const QString& file, qsizetype count) {
        return showsLarge(QFileInfo(file).fileName(), count);
    }
    /// Leaves the large view, and waits for the thumbnails.
    testing::AssertionResult leavesTo(qsizetype count) {
        waitForFocus();
        desktop.key(u"Escape"_s);
        return rests(
            {{u"large"_s, QJsonValue::Undefined},
             {u"browser.items"_s, count},
             {u"browser.focus"_s, true}});
    }
    testing::AssertionResult waitForRow(const QString& text, bool isThere) {
        return waitFor([&](const State& s) {
            return s.isAtRest() && s.place(text, sidebar).isNull() != isThere;
        });
    }
    /// Starts it once more, as a file manager does: the program that runs is handed the paths.
    void open(const QStringList& paths) {
        QProcess later;
        later.setProcessEnvironment(desktop.environment());
        later.start(
            QStringLiteral(VELMORA_PROGRAM), QStringList{u"--profile"_s, profile()} + paths);
        ASSERT_TRUE(later.waitForFinished(60'000));
        EXPECT_EQ(later.exitCode(), 0) << later.readAllStandardError().toStdString();
    }
    /// The photographs of a folder.
    QStringList paintAndChoose() {
        paintPhotographs();
        const QDir lisbon(photo(u"2022/Lisbon"_s));
        return support::listed(
            lisbon.entryList(QDir::Files), [&](const auto& name) { return lisbon.filePath(name); });
    }
};

TEST_F(OpenRunTest, aPhotographIsShownAmongItsNeighboursAndItsFolderGoesWithTheRun) {
    const QStringList files = paintAndChoose();
    ASSERT_GT(files.size(), 2);
    const QString folder = QFileInfo(files[1]).dir().dirName();
    startAgain({files[1]});
    EXPECT_TRUE(showsFile(files[1], files.size()));
    EXPECT_TRUE(leavesTo(files.size()));
    EXPECT_TRUE(waitForSelection(QFileInfo(files[1]).fileName()));
    EXPECT_TRUE(waitForRow(u"Opened"_s, true) && waitForRow(folder, true));
    desktop.menu(state().place(folder, sidebar).center());
    chooseInMenu({u"Keep"_s});
    EXPECT_TRUE(waitForRow(u"Opened"_s, false) && waitForRow(folder, true));
    EXPECT_TRUE(shows(files.size()));
    quit();
    // What is asked for at the start comes in place of the folder of the last run.
    const QString other = photo(u"other/x.png"_s);
    support::writePicture(other);
    startAgain({other});
    EXPECT_TRUE(showsFile(other, 1));
    EXPECT_EQ(state().value(u"folder"_s), QFileInfo(other).path());
    EXPECT_TRUE(leavesTo(1));
    const auto back = state().control(u"Back"_s);
    EXPECT_TRUE(back && !(*back)[u"enabled"_s].toBool()) << "there was no folder before it";
    quit();
    startAgain();
    EXPECT_TRUE(waitForRow(folder, true) && waitForRow(u"other"_s, false));
    EXPECT_TRUE(shows(files.size()));
}

TEST_F(OpenRunTest, laterStartsHandOverWhatTheyAreAskedFor) {
    const QStringList files = paintAndChoose();
    ASSERT_GT(files.size(), 2);
    const QString folder = QFileInfo(files[0]).path();
    startAgain();
    open({files[0]});
    open({files[0]});
    EXPECT_TRUE(showsFile(files[0], files.size()));
    EXPECT_TRUE(leavesTo(files.size()));
    // The folder wins over its file, and stays.
    open({files[1], folder});
    EXPECT_TRUE(rests({{u"large.count"_s, files.size()}}));
    EXPECT_TRUE(leavesTo(files.size()));
    EXPECT_TRUE(waitForRow(u"Opened"_s, false));

    // Folders of two disks: nothing holds both but what nobody asked for.
    const QTemporaryDir far(
        QDir(u"/dev/shm"_s).exists() ? u"/dev/shm/far-XXXXXX"_s
                                     : QDir::tempPath() + u"/far-XXXXXX"_s);
    support::writePicture(far.filePath(u"x.png"_s));
    open({far.path(), QFileInfo(folder).path()});
    EXPECT_TRUE(rests({{u"folder"_s, far.path()}, {u"browser.items"_s, 1}}));
    EXPECT_TRUE(waitForRow(u"2022"_s, true));
    EXPECT_TRUE(waitForRow(u"/"_s, false));
    // A show does not hide what is opened.
    desktop.key(u"F5"_s);
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"playing"_s}}));
    open({files[1]});
    EXPECT_TRUE(showsFile(files[1], files.size()));
    EXPECT_TRUE(becomes({{u"slideshow.state"_s, u"stopped"_s}}));
    quit();
}

} // namespace
