#include "app/ScanProgram.h"
#include "catalogue/PBRemoveAliasOperation.h"

#include <QRegularExpression>

namespace {

/// Photographs in two roots to which something happens from outside. Each has a number, which is
/// its tag, too, where it has marks; its bytes tell it.
class Photographs {
public:
    /// The roots lie in a folder of a folder in `above`, which ends with a slash.
    Photographs(const QString& above, QByteArray picture)
        : _above(above), _roots(above + u"above/roots"_s), _picture(std::move(picture)) {}

    void make(int count) {
        for (int number = 0; number < count; ++number) {
            const QString folder = number % 2 == 0 ? u"A"_s : u"B/sub%1"_s.arg(number % 5);
            write(u"%1/%2.jpg"_s.arg(folder).arg(++_names), ++_next);
        }
    }
    /// Every third has no marks.
    static bool isMarked(int number) { return number % 3 != 0; }
    const std::map<QString, int>& byPath() const { return _byPath; }
    QString absolute(const QString& path) const { return _roots + u'/' + path; }
    /// The folder around the roots' folder gets another name.
    void renameAbove() {
        const QString name = ++_names % 2 == 0 ? u"above%1"_s : u".hidden%1"_s;
        const QString now = _above + name.arg(_names);
        ASSERT_EQ(std::rename(qPrintable(_roots.section(u'/', 0, -2)), qPrintable(now)), 0);
        _roots = now + u"/roots"_s;
    }

    /// A program looks at one of the roots meanwhile: what takes a photograph's path is known to be
    /// another one only where it sees both.
    void setWatched(bool isWatched) { _isWatched = isWatched; }
    /// Nothing happens twice to one photograph until then.
    void becomeQuiet() { _touched.clear(); }
    void operation() {
        const QString path = someUntouched();
        if (path.isEmpty()) return;
        const int number = _byPath.at(path);
        const unsigned what = below(10);
        if (what < 2) return move(path, fresh());
        if (what == 2) return write(path, number); // in place, as other programs save
        if (what == 3) return writeBesideAndReplace(path, number);
        if (what == 4) return swap(path);
        if (what == 5) { // another over the path of a moved one
            move(path, _isWatched ? fresh(path.section(u'/', 0, 0)) : fresh());
            return write(path, newUnmarked());
        }
        if (what == 6) return copyAndRemove(path, fresh()); // across disks
        if (what == 7) return copyBeside(path);
        if (what == 8) return removeForAWhile(path);
        moveFolder(path);
    }
    /// What was removed comes back, from a backup. Copies go: each would be as good as an original
    /// that is removed.
    void restore() {
        std::erase_if(_byPath, [&](const auto& one) {
            return _copies.contains(one.second) && QFile::remove(absolute(one.first));
        });
        for (const auto& [path, number] : std::exchange(_removed, {})) {
            const QString to = _byPath.contains(path) ? fresh() : path;
            copy(backup(number), absolute(to));
            _byPath[to] = number;
            touch(to);
        }
    }

private:
    unsigned below(std::size_t limit) { return static_cast<unsigned>(_random() % limit); }
    void touch(const QString& path) { _touched.insert(path); }
    QString someUntouched() {
        std::vector<QString> paths;
        for (const auto& [path, number] : _byPath)
            if (!_touched.contains(path)) paths.push_back(path);
        if (paths.empty()) return {};
        const QString path = paths[below(paths.size())];
        touch(path);
        return path;
    }
    /// In a root that it may choose.
    QString fresh(const QString& wanted = {}) {
        const QString root = !wanted.isEmpty() ? wanted : below(2) == 0 ? u"A"_s : u"B"_s;
        const QString path = u"%1/to%2/%3.jpg"_s.arg(root).arg(below(6)).arg(++_names);
        touch(path);
        return path;
    }
    QString backup(int number) const { return u"%1elsewhere/%2"_s.arg(_above).arg(number); }
    /// A number without marks.
    int newUnmarked() { return _next += 3 - _next % 3; }
    /// Each time other bytes, and another size.
    void write(const QString& path, int number) {
        support::writeFile( // keeps the inode of a file that is there
            absolute(path), _picture + QByteArray::number(number) + ' ' +
                                QByteArray::number(++_versions) +
                                QByteArray(static_cast<int>(below(700)), 'x'));
        _byPath[path] = number;
        touch(path);
    }
    void writeBesideAndReplace(const QString& path, int number) {
        const QString beside = u"unfinished"_s;
        write(beside, number);
        _byPath.erase(beside);
        std::rename(qPrintable(absolute(beside)), qPrintable(absolute(path)));
    }
    static void copy(const QString& from, const QString& to) {
        support::writeFile(to, support::readFile(from));
    }
    void copyBeside(const QString& path) {
        const QString beside = path.chopped(4) + u" copy.jpg"_s;
        copy(absolute(path), absolute(beside));
        _byPath[beside] = newUnmarked();
        _copies.insert(_next);
        touch(beside);
    }
    void move(const QString& from, const QString& to) {
        QDir().mkpath(QFileInfo(absolute(to)).absolutePath());
        ASSERT_EQ(std::rename(qPrintable(absolute(from)), qPrintable(absolute(to))), 0);
        _byPath[to] = _byPath.extract(from).mapped();
    }
    void copyAndRemove(const QString& from, const QString& to) {
        copy(absolute(from), absolute(to));
        QFile::remove(absolute(from));
        _byPath[to] = _byPath.extract(from).mapped();
    }
    void swap(const QString& path) {
        const QString other = someUntouched();
        if (other.isEmpty() || (_isWatched && other[0] != path[0])) return;
        const QString between = fresh();
        move(path, between);
        move(other, path);
        move(between, other);
    }
    void removeForAWhile(const QString& path) {
        const int number = _removed[path] = _byPath.extract(path).mapped();
        copy(absolute(path), backup(number));
        QFile::remove(absolute(path));
    }
    void moveFolder(const QString& path) {
        const QString folder = path.section(u'/', 0, -2);
        if (!folder.contains(u'/')) return;
        for (const auto& [other, number] : _byPath)
            if (other.startsWith(folder + u'/') && other != path && _touched.contains(other))
                return;
        const QString to = u"%1/folder%2"_s.arg(folder.section(u'/', 0, 0)).arg(++_names);
        std::rename(qPrintable(absolute(folder)), qPrintable(absolute(to)));
        std::map<QString, int> moved;
        for (const auto& [other, number] : _byPath) {
            const bool isIn = other.startsWith(folder + u'/');
            const QString now = isIn ? to + other.mid(folder.size()) : other;
            moved[now] = number;
            if (isIn) touch(now);
        }
        _byPath = std::move(moved);
    }

    const QString _above;
    QString _roots;
    const QByteArray _picture;
    std::mt19937 _random{29};
    std::map<QString, int> _byPath;
    std::map<QString, int> _removed;
    std::set<QString> _touched;
    std::set<int> _copies;
    bool _isWatched = false;
    int _next = 0;
    int _names = 0;
    int _versions = 0;
};

} // namespace

/// Whatever happens outside, with the program running, killed and started again: each photograph
/// that is there has its marks, and none has another's.
TEST_F(ScanProgramTest, AfterAStormEveryPhotographHasItsMarksAndNoneHasAnothers) {
    const QByteArray picture = makePicture(u"picture.jpg"_s);
    const auto [count, rounds, operations] = qEnvironmentVariableIsSet("VELMORA_STORM")
                                                 ? std::array{500, 40, 50}
                                                 : std::array{60, 6, 16};
    Photographs photographs(temporary.path() + u'/', picture);
    photographs.make(count);
    const auto visitAll = [&] {
        // What came from the other root is known when that was looked at.
        for (const char* root : {"A", "B", "A"})
            visit({u"--add"_s, photographs.absolute(QString::fromLatin1(root))});
    };
    const auto expected = [&](const QString& root = {}) {
        QStringList all;
        for (const auto& [path, number] : photographs.byPath()) {
            if (path.startsWith(root))
                all.append(
                    path + (Photographs::isMarked(number) ? u" p%1"_s.arg(number) : u" -"_s));
        }
        return all.join(u'\n');
    };
    const auto inCatalogue = [&](const QString& root = {}) {
        const QStringList all = rows(
            u"select substr(ReservePath,%1)||'/'||ifnull(RelativePath||'/','')||FileName||' '||"
            "ifnull((select Tag from Tags where Tags.Id = ImageFile.Tag),'-') from ImageFile "
            "join Folder on Folder.Id = FolderId join FolderAlias on FolderAlias.Id = AliasId"_s
                .arg(photographs.absolute({}).size() + 1));
        return support::sorted(all.filter(QRegularExpression(u'^' + root))).join(u'\n');
    };

    visitAll();
    QByteArray lines;
    for (const auto& [path, number] : photographs.byPath()) {
        if (Photographs::isMarked(number))
            lines += "{\"path\":\"" + photographs.absolute(path).toUtf8() + "\",\"tags\":[\"p" +
                     QByteArray::number(number) + "\"]}\n";
    }
    const QString file = temporary.filePath(u"marks.jsonl"_s);
    support::writeFile(file, lines);
    ASSERT_EQ(runOnProfile({u"--import-marks"_s, file}).code, 0);
    visit(); // reads the files
    ASSERT_EQ(inCatalogue(), expected());

    for (int round = 0; round < rounds; ++round) {
        const bool isRunning = round % 2 == 1;
        const bool removesRoot = round % 5 == 2; // what knows nothing of a root does not follow it
        if (removesRoot) { // what the sidebar's command does, in the program's absence
            support::Database db(profile + u"/files.db"_s);
            const QStringList ids = support::rowsOf(
                db, u"select Id from FolderAlias where ReservePath = '%1'"_s.arg(
                        photographs.absolute(u"B"_s)));
            ASSERT_EQ(ids.size(), 1);
            ASSERT_TRUE(PBRemoveAliasOperation::remove({{ids.constFirst().toLongLong()}}, db));
        }
        if (isRunning) start({});
        // A root that moves before it is on show is not followed.
        const std::chrono::seconds patience(90); // as for a scan anywhere
        const auto showsFolder = [this] { return !state()[u"folder"_s].toString().isEmpty(); };
        EXPECT_TRUE(round % 4 != 1 || support::spinUntil(showsFolder, patience));
        photographs.setWatched(isRunning);
        for (int done = 0; done < operations; ++done) {
            photographs.operation();
            if (round % 3 != 1 && !removesRoot && done == operations / 2) photographs.renameAbove();
        }
        if (isRunning) {
            // Killed wherever it is, or when it has seen what it shows.
            if (round % 4 == 1) {
                const auto isBack = [&] { return inCatalogue(u"A"_s) == expected(u"A"_s); };
                EXPECT_TRUE(support::spinUntil(isBack, patience))
                    << inCatalogue(u"A"_s).toStdString() << "\ninstead of\n"
                    << expected(u"A"_s).toStdString();
            }
            program.kill();
            program.waitForFinished();
        }
        visitAll();
        ASSERT_EQ(inCatalogue(), expected()) << "round " << round;
        photographs.becomeQuiet();
        photographs.restore();
        visitAll();
        ASSERT_EQ(inCatalogue(), expected()) << "round " << round << ", put back";
        photographs.becomeQuiet();
    }
    expectConsistentCatalogue();
}
