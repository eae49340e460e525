#include "app/ScanProgram.h"

#include <random>

TEST_F(ScanProgramTest, AFolderIsCataloguedOnceAndThenOnlyItsChanges) {
    for (int i = 0; i < 12; ++i)
        makePicture(QStringLiteral("%1/%2.jpg").arg(i % 3).arg(i), 40 + 40 * i);
    support::writeFile(pictures + QStringLiteral("/damaged.jpg"), "no picture");
    const QStringList add{QStringLiteral("--add"), pictures};
    const QString rowsInserted = QStringLiteral("rows_inserted");
    const QString rowsRemoved = QStringLiteral("rows_removed");
    const QString built = QStringLiteral("thumbnails_built");
    const QString failed = QStringLiteral("thumbnails_failed");
    const QString items = QStringLiteral("items");
    expectFigures(
        visit(add), {{rowsInserted, 13}, {rowsRemoved, 0}, {built, 12}, {failed, 1}, {items, 13}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(QStringLiteral("select Id from ImageFile where ImageWidth > 0")).size(), 12);

    const QJsonObject second = visit();
    expectFigures(second, {{rowsInserted, 0}, {rowsRemoved, 0}, {built, 0}, {items, 13}});
    for (const char* time :
         {"first_publication_ms", "catalogue_pass_ms", "scan_finished_ms", "thumbnails_done_ms"})
        EXPECT_GE(second[QLatin1StringView(time)].toDouble(-1), 0) << time;

    QFile::remove(pictures + QStringLiteral("/0/0.jpg"));
    QFile::rename(pictures + QStringLiteral("/1/1.jpg"), pictures + QStringLiteral("/2/1.jpg"));
    makePicture(QStringLiteral("2/2.jpg"), 99);
    expectFigures(visit(), {{rowsInserted, 2}, {rowsRemoved, 3}, {built, 2}, {items, 12}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(QStringLiteral("select FileId from Thumbnail"), "thumbnail.db").size(), 11);
}

TEST_F(ScanProgramTest, TheCatalogueFollowsTheDiskWhileTheProgramRuns) {
    makePicture(QStringLiteral("first.jpg"));
    start({QStringLiteral("--add"), pictures});
    ASSERT_TRUE(follows());
    makePicture(QStringLiteral("second.jpg"));
    makePicture(QStringLiteral("new/folders/third.jpg"));
    ASSERT_TRUE(follows());
    QDir disk(pictures);
    disk.rename(QStringLiteral("second.jpg"), QStringLiteral("renamed.jpg"));
    disk.rename(QStringLiteral("new"), QStringLiteral("newer"));
    ASSERT_TRUE(follows());
    QDir(pictures + QStringLiteral("/newer")).removeRecursively();
    disk.remove(QStringLiteral("first.jpg"));
    ASSERT_TRUE(follows());
    // The root itself: its pictures stay catalogued under its new name.
    const QStringList ids = rows(QStringLiteral("select Id from ImageFile"));
    ASSERT_TRUE(QDir().rename(pictures, temporary.filePath(QStringLiteral("elsewhere"))));
    const QString reservePath = QStringLiteral("select ReservePath from FolderAlias");
    const bool moved = support::spinUntil([&] {
        return rows(reservePath) == QStringList{temporary.filePath(QStringLiteral("elsewhere"))};
    });
    ASSERT_TRUE(moved) << rows(reservePath).join(u' ').toStdString() << '\n'
                       << program.readAllStandardError().toStdString();
    program.terminate();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(rows(QStringLiteral("select Id from ImageFile")), ids);
}

TEST_F(ScanProgramTest, KilledAtAnyMomentItStartsAgainOnAConsistentCatalogue) {
    std::mt19937 random(3);
    for (int i = 0; i < 150; ++i)
        makePicture(QStringLiteral("%1/%2.jpg").arg(i % 5).arg(i));
    // Hundreds of rounds when asked for.
    const int rounds = std::max(12, qEnvironmentVariableIntValue("VELMORA_ROUNDS"));
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        start({QStringLiteral("--add"), pictures});
        ASSERT_TRUE(program.waitForStarted());
        const int moment = static_cast<int>(random() % 300);
        program.waitForFinished(moment); // which it does not
        if (round % 3 == 0) {
            program.terminate();
        } else {
            program.kill();
        }
        ASSERT_TRUE(program.waitForFinished());
        expectConsistentCatalogue();
        QFile::remove(
            pictures + QStringLiteral("/%1/%2.jpg").arg(round % 150 % 5).arg(round % 150));
    }
    visit({QStringLiteral("--add"), pictures});
    EXPECT_EQ(inCatalogue(), onDisk());
}
