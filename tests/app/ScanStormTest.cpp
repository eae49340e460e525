#include "app/ScanProgram.h"

namespace {

/// Changes a folder tree at random, as fast as the disk takes it, under so few names that what went
/// comes again.
struct Storm {
    void operation() {
        const unsigned what = below(20);
        if (what == 0)
            QDir().mkpath(folder());
        else if (what == 1)
            move(folder(), folder());
        else if (what == 2 && below(4) == 0)
            QDir(folder()).removeRecursively();
        else if (what < 6)
            QFile::remove(file());
        else if (what < 9)
            move(file(), file());
        else if (what == 9)
            move(file(), outside());
        else if (what == 10)
            move(outside(), file());
        else // some bytes behind the picture give it a size of its own
            support::writeFile(file(), picture + QByteArray(static_cast<int>(below(900)), 'x'));
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }
    /// One of 84, at most three below the root.
    QString folder() {
        QString path = root;
        for (unsigned depth = below(3); depth < 3; ++depth)
            path += u"/folder%1"_s.arg(below(4));
        return path;
    }
    QString file() { return u"%1/%2.jpg"_s.arg(below(3) == 0 ? root : folder()).arg(below(12)); }
    QString outside() { return elsewhere + u"/%1"_s.arg(below(10)); }
    /// In place of a file that is there.
    static void move(const QString& from, const QString& to) {
        std::rename(qPrintable(from), qPrintable(to));
    }

    const QString root;
    const QString elsewhere;
    const QByteArray picture;
    std::mt19937 random{11};
};

} // namespace

/// While the program runs: nothing that happens on disk is missed, nothing is taken up twice.
TEST_F(ScanProgramTest, AfterAStormOfFileOperationsTheCatalogueIsWhatTheDiskIs) {
    const QByteArray picture = makePicture(u"first.jpg"_s);
    start({u"--add"_s, pictures});
    ASSERT_TRUE(follows());
    Storm storm{pictures, temporary.filePath(u"elsewhere"_s), picture};
    QDir().mkpath(storm.elsewhere);
    const int operations = std::max(2000, qEnvironmentVariableIntValue("VELMORA_STORM"));
    for (int done = 0; done < operations; ++done) {
        storm.operation();
        ASSERT_TRUE(done % 500 < 499 || follows()) << done;
    }
    terminate();
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(program.readAllStandardError().toStdString(), "");
    expectConsistentCatalogue();

    // What was replaced under its own name shows at the next visit, and then nothing is left to do.
    visit();
    EXPECT_EQ(inCatalogue(), onDisk());
    const QStringList sizes = support::listed(onDisk(), [&](const auto& name) {
        return name + u' ' + QString::number(QFileInfo(pictures + u'/' + name).size());
    });
    EXPECT_EQ(
        rows(u"select ifnull(Folder.RelativePath||'/','')||FileName||' '||FileSize "
             "from ImageFile join Folder on Folder.Id = FolderId"_s),
        support::sorted(sizes));
    expectConsistentCatalogue();
    EXPECT_EQ(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), sizes.size());
    expectFigures(visit(), {{"rows_inserted", 0}, {"rows_removed", 0}, {"thumbnails_built", 0}});
}
