#include "app/ScanProgram.h"

TEST_F(ScanProgramTest, ADamagedPageIsToldInTheWindowAndARepairSavesTheRest) {
    for (int i = 0; i < 40; ++i)
        makePicture(u"p%1.jpg"_s.arg(i));
    visit({u"--add"_s, pictures});
    EXPECT_FALSE(QFile::exists(profile + u"/running"_s)) << "ended well";
    // The page on which most of the photographs' rows of a small catalogue stand.
    QByteArray bytes = support::readFile(profile + u"/files.db"_s);
    const qsizetype at = bytes.indexOf("p1.jpg") / 4096 * 4096;
    ASSERT_GT(at, 0);
    support::writeFile(profile + u"/files.db"_s, bytes.replace(at, 1000, QByteArray(1000, '\x7f')));
    start({});
    EXPECT_TRUE(notice().contains(u"damaged"_s));
    EXPECT_TRUE(QFile::exists(profile + u"/running"_s));
    program.terminate();
    ASSERT_TRUE(program.waitForFinished());

    support::writeFile(profile + u"/files.db.repair"_s, {});
    visit();
    EXPECT_TRUE(said.contains("saved from the damaged catalogue")) << said.toStdString();
    EXPECT_TRUE(QFile::exists(profile + u"/files.db.damaged"_s));
    EXPECT_EQ(inCatalogue(), onDisk()) << "what could not be saved is found again";
    expectConsistentCatalogue();
    visit();
    EXPECT_EQ(said.toStdString(), "");
}
