#include "FMDB/FMTransaction.h"
#include "app/ScanProgram.h"

#include <QImage>

namespace {

using ProgramTest = ScanProgramTest;

TEST_F(ProgramTest, whatIsDamagedOrCutInAWriteIsToldAndCostsNoMoreThanItself) {
    for (const auto& name : {u"a.png"_s, u"b.png"_s, u"c.png"_s})
        makePicture(name);
    support::writeFile(pictures + u"/damaged.png"_s, "no picture");
    const QString picture = temporary.filePath(u"window.png"_s);
    const QJsonObject first =
        visit({u"--add"_s, pictures, u"--screenshot"_s, picture, u"--size"_s, u"900x600"_s});
    EXPECT_EQ(said, QByteArray());
    EXPECT_EQ(QImage(picture).size(), QSize(900, 600));
    for (const char* time :
         {"first_window_ms", "first_publication_ms", "catalogue_pass_ms", "scan_finished_ms",
          "thumbnails_done_ms"})
        EXPECT_GE(first[QLatin1StringView(time)].toDouble(-1), 0) << time;
    const QString files = profile + u"/files.db"_s;
    const QString thumbnails = profile + u"/thumbnail.db"_s;
    const QByteArray wholeFiles = support::readFile(files);
    const QByteArray wholeThumbnails = support::readFile(thumbnails);
    ASSERT_GT(std::min(wholeFiles.size(), wholeThumbnails.size()), 8192);
    for (const qsizetype length : {100, 4096, 8192}) {
        support::writeFile(thumbnails, wholeThumbnails.left(length));
        expectFigures(
            visit(), {{"rows_inserted", 0}, {"thumbnails_built", 3}, {"thumbnails_failed", 1}});
        EXPECT_EQ(said.count('\n'), 1) << said.toStdString();
        EXPECT_EQ(support::readFile(thumbnails + u".damaged"_s), wholeThumbnails.left(length));
    }
    for (const QByteArray& damaged :
         {QByteArray(5000, 'x'), wholeFiles.left(100), wholeFiles.left(4096)}) {
        support::writeFile(files, damaged);
        visit();
        EXPECT_TRUE(said.count('\n') == 1 && said.contains("files.db")) << said.toStdString();
        EXPECT_EQ(support::readFile(files), damaged);
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
    const std::pair<const char*, int> mistakes[] = {
        {"--add /proc/none", 1}, {"--screenshot /proc/no.png --stats /proc/no.json", 2}};
    for (const auto& [arguments, sentences] : mistakes) {
        const Outcome outcome = runUntilIdle(support::words(arguments));
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors.count('\n'), sentences) << outcome.errors.toStdString();
    }
}

TEST_F(ProgramTest, aCatalogueThatAnotherProgramHasLockedIsWaitedForAndWhatIsAskedMeanwhileIsDone) {
    makePicture(u"a.png"_s);
    int later = 0;
    visit({u"--add"_s, pictures});
    support::Database other(profile + u"/files.db"_s);
    for (const auto lock : {FMDatabase::Others::Wait, FMDatabase::Others::Read}) {
        std::optional<FMTransaction> transaction(std::in_place, other, lock);
        start({u"--until-idle"_s, u"--stats"_s, u"-"_s});
        ASSERT_TRUE(program.waitForStarted());
        program.setReadChannel(QProcess::StandardError);
        while (!program.canReadLine())
            ASSERT_TRUE(program.waitForReadyRead(60'000));
        EXPECT_TRUE(program.readLine().contains("is locked by another program"));
        const QString folder = temporary.filePath(QString::number(++later));
        support::writePicture(folder + u"/b.png"_s);
        EXPECT_EQ(runOnProfile({u"--add"_s, folder}).code, 0);
        transaction.reset();
        ASSERT_TRUE(program.waitForFinished(60'000));
        EXPECT_EQ(program.exitCode(), 0);
        EXPECT_TRUE(rows(u"select ReservePath from FolderAlias"_s).contains(folder));
    }
}

} // namespace
