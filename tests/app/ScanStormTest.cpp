#include "app/ScanProgram.h"

#include <algorithm>
#include <random>

namespace {

/// Changes a folder tree at random, as fast as the disk takes it.
class Storm {
public:
    Storm(QString root, QString elsewhere, QByteArray picture)
        : _root(std::move(root)), _elsewhere(std::move(elsewhere)), _picture(std::move(picture)) {
        QDir().mkpath(_elsewhere);
    }

    void operation() {
        switch (below(20)) {
        case 0:
            _folders.append(someFolder() + QStringLiteral("/folder%1").arg(_next++));
            QDir().mkpath(_root + _folders.back());
            break;
        case 1:
            renameFolder();
            break;
        case 2:
            if (below(4) == 0) removeFolder();
            break;
        case 3:
        case 4:
        case 5:
            if (!_files.isEmpty()) QFile::remove(_root + takeFile());
            break;
        case 6:
        case 7:
        case 8:
            if (!_files.isEmpty()) moveFile(takeFile());
            break;
        case 9:
            if (!_files.isEmpty()) moveOutAndIn(takeFile());
            break;
        case 10:
            replaceFile();
            break;
        default:
            create(newName());
        }
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(_random() % limit); }
    QString someFolder() {
        return _folders[static_cast<qsizetype>(below(unsigned(_folders.size())))];
    }
    QString newName() { return someFolder() + QStringLiteral("/%1.jpg").arg(_next++); }
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
        const QString outside = _elsewhere + QStringLiteral("/%1.jpg").arg(_next++);
        if (!QFile::rename(_root + name, outside) || below(2) == 0) return;
        const QString target = newName();
        if (QFile::rename(outside, _root + target)) _files.append(target);
    }
    void replaceFile() {
        if (_files.isEmpty()) return;
        const QString outside = _elsewhere + QStringLiteral("/%1.jpg").arg(_next++);
        support::writeFile(outside, _picture + QByteArray(static_cast<int>(below(900)), 'y'));
        std::rename(
            QFile::encodeName(outside).constData(),
            QFile::encodeName(_root + _files.front()).constData());
    }
    static void moveBelow(QStringList& paths, const QString& from, const QString& to) {
        for (QString& path : paths) {
            if (path == from || path.startsWith(from + u'/')) path = to + path.mid(from.size());
        }
    }
    void renameFolder() {
        const QString from = someFolder();
        if (from.isEmpty()) return;
        const QString parent = below(2) == 0 ? from.section(u'/', 0, -2) : QString();
        const QString to = parent + QStringLiteral("/moved%1").arg(_next++);
        if (!QFile::rename(_root + from, _root + to)) return;
        moveBelow(_files, from, to);
        moveBelow(_folders, from, to);
    }
    void removeFolder() {
        const QString gone = someFolder();
        if (gone.isEmpty()) return;
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

class ScanStormTest : public ScanProgramTest {};

} // namespace

/// While the program runs: nothing that happens on disk is missed, nothing is taken up twice.
TEST_F(ScanStormTest, AfterAStormOfFileOperationsTheCatalogueIsWhatTheDiskIs) {
    makePicture(QStringLiteral("first.jpg"));
    start({QStringLiteral("--add"), pictures});
    ASSERT_TRUE(follows());
    Storm storm(
        pictures, temporary.filePath(QStringLiteral("elsewhere")),
        support::readFile(pictures + QStringLiteral("/first.jpg")));
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
    QStringList sizes;
    for (const QString& name : onDisk())
        sizes.append(
            QStringLiteral("%1 %2").arg(name).arg(QFileInfo(pictures + u'/' + name).size()));
    sizes.sort();
    EXPECT_EQ(
        rows(QStringLiteral("select ifnull(Folder.RelativePath||'/','')||FileName||' '||FileSize "
                            "from ImageFile join Folder on Folder.Id = FolderId")),
        sizes);
    expectConsistentCatalogue();
    expectFigures(
        visit(), {{QStringLiteral("rows_inserted"), 0},
                  {QStringLiteral("rows_removed"), 0},
                  {QStringLiteral("thumbnails_built"), 0}});
}
