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
        const QString number = QString::number(_next++);
        const QString name = someOf(_folders) + u'/' + number + u".jpg"_s;
        const QString outside = _elsewhere + u'/' + number;
        if (what > 10 || (_files.isEmpty() && what > 2)) {
            write(_root + name);
            _files.append(name);
        } else if (what == 10) {
            write(outside);
            std::rename(qPrintable(outside), qPrintable(_root + _files.front()));
        } else if (what == 0) {
            _folders.append(someOf(_folders) + u"/folder"_s + number);
            QDir().mkpath(_root + _folders.back());
        } else if (what < 3) {
            changeFolder(what == 1, u"/moved"_s + number);
        } else {
            const QString file = someOf(_files);
            _files.removeOne(file);
            if (what < 6)
                QFile::remove(_root + file);
            else if (what < 9)
                moveIn(_root + file, name);
            else if (QFile::rename(_root + file, outside) && below(2) == 1)
                moveIn(outside, name);
        }
    }

private:
    unsigned below(qsizetype limit) { return static_cast<unsigned>(_random() % unsigned(limit)); }
    QString someOf(const QStringList& names) { return names[below(names.size())]; }
    void write(const QString& path) {
        // Some bytes behind the picture give it a size of its own.
        support::writeFile(path, _picture + QByteArray(static_cast<int>(below(900)), 'x'));
    }
    void moveIn(const QString& from, const QString& name) {
        if (QFile::rename(from, _root + name)) _files.append(name);
    }
    void changeFolder(bool isMoved, const QString& name) {
        const QString folder = someOf(_folders);
        if (folder.isEmpty() || (!isMoved && below(4) != 0)) return;
        const QString parent = below(2) == 0 ? folder.section(u'/', 0, -2) : QString();
        if (isMoved)
            QFile::rename(_root + folder, _root + parent + name);
        else
            QDir(_root + folder).removeRecursively();
        lookAgain();
    }
    /// After a folder moved or went.
    void lookAgain() {
        _folders = {QString()};
        _files.clear();
        QDirIterator iterator(
            _root, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (iterator.hasNext()) {
            const QString name = iterator.next().mid(_root.size());
            (iterator.fileInfo().isDir() ? _folders : _files).append(name);
        }
        _folders.sort();
        _files.sort();
    }

    const QString _root;
    const QString _elsewhere;
    const QByteArray _picture;
    std::mt19937 _random{11};
    QStringList _folders{QString()}; // below the root, "" being the root itself
    QStringList _files;
    int _next = 0;
};

} // namespace

/// While the program runs: nothing that happens on disk is missed, nothing is taken up twice.
TEST_F(ScanProgramTest, AfterAStormOfFileOperationsTheCatalogueIsWhatTheDiskIs) {
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
    program.terminate();
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(program.readAllStandardError().toStdString(), "");
    expectConsistentCatalogue();

    // What was replaced under its own name shows at the next visit, and then nothing is left to do.
    visit();
    EXPECT_EQ(inCatalogue(), onDisk());
    QStringList sizes = support::listed(onDisk(), [&](const auto& name) {
        return name + u' ' + QString::number(QFileInfo(pictures + u'/' + name).size());
    });
    sizes.sort();
    EXPECT_EQ(
        rows(u"select ifnull(Folder.RelativePath||'/','')||FileName||' '||FileSize "
             "from ImageFile join Folder on Folder.Id = FolderId"_s),
        sizes);
    expectConsistentCatalogue();
    EXPECT_EQ(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), sizes.size());
    expectFigures(visit(), {{"rows_inserted", 0}, {"rows_removed", 0}, {"thumbnails_built", 0}});
}
