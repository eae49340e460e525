#include "app/ScanProgram.h"

TEST_F(ScanProgramTest, ALaterStartHandsOverAndTheCatalogueFollowsARootRenamedInCaseOnly) {
    makePicture(u"kept.jpg"_s);
    start({});
    ASSERT_TRUE(support::spinUntil([&] { return QFile::exists(profile + u"/thumbnail.db"_s); }));
    const Outcome later = run({u"--profile"_s, profile, u"--add"_s, pictures});
    EXPECT_TRUE(later.code == 0 && later.errors.isEmpty()) << later.errors.toStdString();
    ASSERT_TRUE(follows());
    makePicture(u"deleted.jpg"_s);
    ASSERT_TRUE(follows());
    // The root itself: its pictures stay catalogued under its new name.
    const QString statement = u"select Id from ImageFile where FileName = 'kept.jpg'"_s;
    const QStringList id = rows(statement);
    const QString other = temporary.filePath(u"Pictures"_s);
    ASSERT_TRUE(QDir().rename(pictures, other));
    ASSERT_TRUE(support::spinUntil([&] {
        return rows(u"select ReservePath from FolderAlias"_s) == QStringList{other};
    })) << program.readAllStandardError().toStdString();
    // It is watched under its new name from some moment on.
    const auto isSeen = [&](int number) {
        const QString name = u"new%1.jpg"_s.arg(number);
        support::writePicture(other + u'/' + name);
        return support::spinUntil(
            [&] { return inCatalogue().contains(name); }, std::chrono::seconds(4));
    };
    EXPECT_TRUE(isSeen(1) || isSeen(2) || isSeen(3) || isSeen(4));
    QFile::remove(other + u"/deleted.jpg"_s);
    EXPECT_TRUE(support::spinUntil([&] { return !inCatalogue().contains(u"deleted.jpg"); }));
    program.terminate();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(rows(statement), id);
}
