#include "app/ScanProgram.h"

TEST_F(ScanProgramTest, AFolderIsCataloguedOnceAndThenOnlyItsChanges) {
    for (int i = 0; i < 12; ++i)
        makePicture(u"%1/%2.jpg"_s.arg(i % 3).arg(i), 40 + 40 * i);
    support::writeFile(pictures + u"/damaged.jpg"_s, "no picture");
    const QStringList add{u"--add"_s, pictures};
    const QString rowsInserted = u"rows_inserted"_s;
    const QString rowsRemoved = u"rows_removed"_s;
    const QString built = u"thumbnails_built"_s;
    const QString failed = u"thumbnails_failed"_s;
    const QString items = u"items"_s;
    expectFigures(
        visit(add), {{rowsInserted, 13}, {rowsRemoved, 0}, {built, 12}, {failed, 1}, {items, 13}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(u"select Id from ImageFile where ImageWidth > 0"_s).size(), 12);

    const QJsonObject second = visit();
    expectFigures(second, {{rowsInserted, 0}, {rowsRemoved, 0}, {built, 0}, {items, 13}});
    for (const char* time :
         {"first_publication_ms", "catalogue_pass_ms", "scan_finished_ms", "thumbnails_done_ms"})
        EXPECT_GE(second[QLatin1StringView(time)].toDouble(-1), 0) << time;

    QFile::remove(pictures + u"/0/0.jpg"_s);
    QFile::rename(pictures + u"/1/1.jpg"_s, pictures + u"/2/1.jpg"_s);
    makePicture(u"2/2.jpg"_s, 99);
    expectFigures(visit(), {{rowsInserted, 2}, {rowsRemoved, 3}, {built, 2}, {items, 12}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), 11);
}

TEST_F(ScanProgramTest, TheCatalogueFollowsItsRootToAnotherPlaceWhileTheProgramRuns) {
    makePicture(u"first.jpg"_s);
    start({u"--add"_s, pictures});
    ASSERT_TRUE(follows());
    makePicture(u"second.jpg"_s);
    ASSERT_TRUE(follows());
    // The root itself: its pictures stay catalogued under its new name.
    const QStringList ids = rows(u"select Id from ImageFile"_s);
    ASSERT_TRUE(QDir().rename(pictures, temporary.filePath(u"elsewhere"_s)));
    const QString reservePath = u"select ReservePath from FolderAlias"_s;
    const bool moved = support::spinUntil(
        [&] { return rows(reservePath) == QStringList{temporary.filePath(u"elsewhere"_s)}; });
    ASSERT_TRUE(moved) << rows(reservePath).join(u' ').toStdString() << '\n'
                       << program.readAllStandardError().toStdString();
    program.terminate();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(rows(u"select Id from ImageFile"_s), ids);
}

TEST_F(ScanProgramTest, KilledAtAnyMomentItStartsAgainOnAConsistentCatalogue) {
    std::mt19937 random(3);
    for (int i = 0; i < 150; ++i)
        makePicture(u"%1/%2.jpg"_s.arg(i % 5).arg(i));
    // Hundreds of rounds when asked for.
    const int rounds = std::max(12, qEnvironmentVariableIntValue("VELMORA_ROUNDS"));
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        start({u"--add"_s, pictures});
        ASSERT_TRUE(program.waitForStarted());
        const int moment = static_cast<int>(random() % 300);
        program.waitForFinished(moment); // which it does not
        if (round % 3 == 0)
            program.terminate();
        else
            program.kill();
        ASSERT_TRUE(program.waitForFinished());
        expectConsistentCatalogue();
        QFile::remove(pictures + u"/%1/%2.jpg"_s.arg(round % 150 % 5).arg(round % 150));
    }
    visit({u"--add"_s, pictures});
    EXPECT_EQ(inCatalogue(), onDisk());
}
