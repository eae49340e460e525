#include "app/ScanProgram.h"

namespace {

/// Changes a folder tree at random, as fast as the disk takes it.
struct Storm {
    Storm(QString root, QString elsewhere, QByteArray picture)
        : _root(std::move(root)), _elsewhere(std::move(elsewhere)), _picture(std::move(picture)) {
        QDir().mkpath(_elsewhere);
    }

    void operation() {
        const unsigned what = below(20);
        if (what > 10 || (_files.isEmpty() && what > 2))
            create(newName());
        else if (what == 0)
            QDir().mkpath(
                _root +
                *_folders.insert(_folders.end(), someFolder() + u"/folder%1"_s.arg(_next++)));
        else if (what == 1)
            renameFolder();
        else if (what == 2)
            removeFolder();
        else if (what < 6)
            QFile::remove(_root + takeFile());
        else if (what < 9)
            moveFile(takeFile());
        else if (what == 9)
            moveOutAndIn(takeFile());
        else
            replaceFile();
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(_random() % limit); }
    QString someFolder() {
        return _folders[static_cast<qsizetype>(below(unsigned(_folders.size())))];
    }
    QString newName() { return someFolder() + u"/%1.jpg"_s.arg(_next++); }
    QString takeFile() {
        return _files.takeAt(static_cast<qsizetype>(below(unsigned(_files.size()))));
    }
    void create(const QString& name) {
        // Some bytes behind the picture give it a size of its own.
        support::writeFile(_root + name, _picture + QByteArray(static_cast<int>(below(500)), 'x'));
        _files.append(name);
    }
    void moveFile(const QString& name) {
        const QString target = newName();
        if (QFile::rename(_root + name, _root + target)) _files.append(target);
    }
    void moveOutAndIn(const QString& name) {
        const QString outside = _elsewhere + u"/%1.jpg"_s.arg(_next++);
        if (!QFile::rename(_root + name, outside) || below(2) == 0) return;
        const QString target = newName();
        if (QFile::rename(outside, _root + target)) _files.append(target);
    }
    void replaceFile() {
        const QString outside = _elsewhere + u"/%1.jpg"_s.arg(_next++);
        support::writeFile(outside, _picture + QByteArray(static_cast<int>(below(900)), 'y'));
        std::rename(qPrintable(outside), qPrintable(_root + _files.front()));
    }
    static void moveBelow(QStringList& paths, const QString& from, const QString& to) {
        for (QString& path : paths)
            if (path == from || path.startsWith(from + u'/')) path = to + path.mid(from.size());
    }
    void renameFolder() {
        const QString from = someFolder();
        if (from.isEmpty()) return;
        const QString parent = below(2) == 0 ? from.section(u'/', 0, -2) : QString();
        const QString to = parent + u"/moved%1"_s.arg(_next++);
        if (!QFile::rename(_root + from, _root + to)) return;
        moveBelow(_files, from, to);
        moveBelow(_folders, from, to);
    }
    void removeFolder() {
        const QString gone = someFolder();
        if (gone.isEmpty() || below(4) != 0) return;
        QDir(_root + gone).removeRecursively();
        const auto isBelow = [&](const QString& path) {
            return path == gone || path.startsWith(gone + u'/');
        };
        _files.removeIf(isBelow);
        _folders.removeIf(isBelow);
    }

    const QString _root;
    const QString _elsewhere;
    const QByteArray _picture;
    std::mt19937 _random{11};
    QStringList _folders{QString()}; // below the root, "" being the root itself
    QStringList _files;
    int _next = 0;
};

struct ScanStormTest : ScanProgramTest {};

} // namespace

/// While the program runs: nothing that happens on disk is missed, nothing is taken up twice.
TEST_F(ScanStormTest, AfterAStormOfFileOperationsTheCatalogueIsWhatTheDiskIs) {
    makePicture(u"first.jpg"_s);
    start({u"--add"_s, pictures});
    ASSERT_TRUE(follows());
    Storm storm(
        pictures, temporary.filePath(u"elsewhere"_s),
        support::readFile(pictures + u"/first.jpg"_s));
    const int operations = std::max(2000, qEnvironmentVariableIntValue("VELMORA_STORM"));
    for (int done = 0; done < operations; ++done) {
        storm.operation();
        if (done % 500 == 499) {
            ASSERT_TRUE(follows()) << done;
        }
    }
    ASSERT_TRUE(follows());
    program.terminate();
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(program.readAllStandardError().toStdString(), "");
    expectConsistentCatalogue();

    // What was replaced under its own name shows at the next visit, and then nothing is left to do.
    visit();
    EXPECT_EQ(inCatalogue(), onDisk());
    QStringList sizes = support::listed(onDisk(), [&](const auto& name) {
        return u"%1 %2"_s.arg(name).arg(QFileInfo(pictures + u'/' + name).size());
    });
    sizes.sort();
    EXPECT_EQ(
        rows(u"select ifnull(Folder.RelativePath||'/','')||FileName||' '||FileSize "
             "from ImageFile join Folder on Folder.Id = FolderId"_s),
        sizes);
    expectConsistentCatalogue();
    expectFigures(
        visit(), {{u"rows_inserted"_s, 0}, {u"rows_removed"_s, 0}, {u"thumbnails_built"_s, 0}});
}
