#include "app/ScanProgram.h"

#include <QImage>

namespace {

class ProgramTest : public ScanProgramTest {};

TEST_F(ProgramTest, startsShowsItselfAndLeavesACatalogue) {
    const QString picture = temporary.filePath(u"window.png"_s);
    const Outcome outcome =
        runUntilIdle({u"--screenshot"_s, picture, u"--size"_s, u"900x600"_s, u"--stats"_s, u"-"_s});
    EXPECT_EQ(outcome.code, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.errors, QByteArray());
    EXPECT_EQ(QImage(picture).size(), QSize(900, 600));
    const QJsonObject stats = outcome.figures();
    EXPECT_GT(stats[u"first_window_ms"_s].toDouble(), 0);
    EXPECT_GT(stats[u"peak_rss_kib"_s].toDouble(), 1000);
    for (const char* file : {"/files.db", "/thumbnail.db"}) {
        EXPECT_TRUE(
            support::readFile(profile + QLatin1StringView(file)).startsWith("SQLite format 3"))
            << file;
    }
}

TEST_F(ProgramTest, brokenCatalogueAndSettingsAreToldInALineEachAndLeftAlone) {
    const QByteArray rubbish(5000, 'x');
    support::writeFile(profile + u"/files.db"_s, rubbish);
    support::writeFile(profile + u"/Velmora.conf"_s, "\x01\x02 rubbish");
    const Outcome outcome = runUntilIdle();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors.count('\n'), 2) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains("files.db"));
    EXPECT_TRUE(outcome.errors.contains("Velmora.conf"));
    EXPECT_EQ(support::readFile(profile + u"/files.db"_s), rubbish);
    EXPECT_EQ(support::readFile(profile + u"/Velmora.conf"_s), "\x01\x02 rubbish");
}

TEST_F(ProgramTest, aFileCutInTheMiddleOfAWriteCostsNoMoreThanItself) {
    for (const auto& name : {u"a.png"_s, u"b.png"_s, u"c.png"_s})
        makePicture(name);
    visit({u"--add"_s, pictures});
    const QString files = profile + u"/files.db"_s;
    const QString thumbnails = profile + u"/thumbnail.db"_s;
    const QByteArray wholeFiles = support::readFile(files);
    const QByteArray wholeThumbnails = support::readFile(thumbnails);
    const QStringList stats{u"--stats"_s, u"-"_s};

    for (const qsizetype length : {100, 4096, 8192}) {
        ASSERT_LT(length, std::min(wholeFiles.size(), wholeThumbnails.size()));
        support::writeFile(thumbnails, wholeThumbnails.left(length));
        const Outcome anew = runUntilIdle(stats);
        EXPECT_EQ(anew.code, 0);
        EXPECT_EQ(anew.errors.count('\n'), 1) << anew.errors.toStdString();
        EXPECT_EQ(support::readFile(thumbnails + u".damaged"_s), wholeThumbnails.left(length));
        EXPECT_EQ(anew.figures()[u"thumbnails_built"_s].toInt(), 3) << length;

        support::writeFile(files, wholeFiles.left(length));
        const Outcome without = runUntilIdle();
        EXPECT_EQ(without.code, 0);
        EXPECT_TRUE(without.errors.contains("files.db")) << length;
        EXPECT_EQ(support::readFile(files), wholeFiles.left(length)) << "left as it was";
        support::writeFile(files, wholeFiles);
    }
}

TEST_F(ProgramTest, settingsOfEveryKindMayBeWrong) {
    const char* const values[] = {"@Invalid()",     "hello",    "-1", "1e300",
                                  "@Variant(\0\0)", "a, b, \"", ""};
    for (const char* value : values) {
        QByteArray settings = "[General]\n";
        for (const char* key :
             {"RecurseSubFolder", "GroupTypeArray", "SortType", "DescendingSort", "Filter",
              "FavoriteGroupArrayArray", "LastSelectFolder", "ShowHideStatusBar", "ShowHideToolbar",
              "ImageBrowserViewStyle", "ThumbnailSize", "InfoTag", "SourceGroupSplitPos",
              "GroupSplitPos", "InfoSplitPos", "MainWindowGeometry"})
            settings += QByteArray(key) + '=' + value + '\n';
        support::writeFile(profile + u"/Velmora.conf"_s, settings);
        const Outcome outcome = runUntilIdle();
        EXPECT_EQ(outcome.code, 0) << value << '\n' << outcome.errors.toStdString();
        EXPECT_EQ(outcome.errors.count("velmora: the setting \""), outcome.errors.count('\n'))
            << value << outcome.errors.toStdString();
    }
}

TEST_F(ProgramTest, mistakesEndWithTheirCodesAndAProfileThatCannotBeWrittenStillGivesAWindow) {
    support::writeFile(temporary.filePath(u"plain"_s), "x");
    const Outcome unwritten =
        run({u"--profile"_s, temporary.filePath(u"plain/below"_s), u"--until-idle"_s});
    EXPECT_EQ(unwritten.code, 0);
    EXPECT_TRUE(unwritten.errors.contains("files.db")) << unwritten.errors.toStdString();
    EXPECT_EQ(run({u"--nonsense"_s}).code, 2);
    EXPECT_EQ(run({u"--version"_s}).code, 0);
    const Outcome none = runUntilIdle({u"--add"_s, temporary.filePath(u"none"_s)});
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.errors.count('\n'), 1) << none.errors.toStdString();
    const Outcome unwritable =
        runUntilIdle({u"--screenshot"_s, u"/proc/no.png"_s, u"--stats"_s, u"/proc/no.json"_s});
    EXPECT_EQ(unwritable.code, 1);
    EXPECT_EQ(unwritable.errors.count('\n'), 2) << unwritable.errors.toStdString();
}

TEST_F(ProgramTest, secondStartHandsOverAndSignalEndsTheFirstCleanly) {
    QProcess first;
    start(first, {u"--profile"_s, profile});
    const QString lock = profile + u"/thumbnail.db"_s;
    ASSERT_TRUE(support::spinUntil([&] { return QFile::exists(lock); }));
    const Outcome second = run({u"--profile"_s, profile, u"/tmp"_s});
    EXPECT_EQ(second.code, 0);
    EXPECT_EQ(second.errors, QByteArray());
    ASSERT_EQ(first.state(), QProcess::Running);
    first.terminate();
    ASSERT_TRUE(first.waitForFinished(60'000));
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
}

} // namespace
