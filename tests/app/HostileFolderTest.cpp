#include "app/ScanProgram.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString rowsInserted = u"rows_inserted"_s;
const QString rowsRemoved = u"rows_removed"_s;
const QString items = u"items"_s;

struct HostileFolderTest : ScanProgramTest {
    QStringList add() const { return {u"--add"_s, pictures}; }
    QByteArray picture() {
        makePicture(u"good.jpg"_s, 120);
        return support::readFile(pictures + u"/good.jpg"_s);
    }
};

/// A small file system of its own for one file of the profile.
struct SmallDisk {
    explicit SmallDisk(const QString& place) : _place(QFile::encodeName(place)) {
        QDir().mkpath(place);
        _isMounted = ::mount("tmpfs", _place.constData(), "tmpfs", 0, "size=2m") == 0;
    }
    ~SmallDisk() {
        if (_isMounted) ::umount2(_place.constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    [[nodiscard]] bool isMounted() const { return _isMounted; }
    /// All but so many bytes are taken.
    void fill(int left) const {
        QFile filler(QFile::decodeName(_place) + u"/filler"_s);
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(4096, 'f')) == 4096) {
        }
        ASSERT_TRUE(filler.resize(std::max<qint64>(filler.size() - left, 0)));
    }
    void free() const { QFile::remove(QFile::decodeName(_place) + u"/filler"_s); }

private:
    const QByteArray _place;
    bool _isMounted = false;
};

} // namespace

TEST_F(HostileFolderTest, WhateverLiesInAFolderTheScanEndsAndWhatIsSoundIsShown) {
    const QByteArray good = picture();
    std::mt19937 random(8);
    const auto put = [&](const QString& name, const QByteArray& bytes) {
        support::writeFile(pictures + u'/' + name, bytes);
    };
    for (int i = 0; i < 12; ++i) {
        put(u"cut%1.jpg"_s.arg(i), good.left(static_cast<int>(random() % unsigned(good.size()))));
        QByteArray mutated = good;
        support::damage(mutated, random, 20);
        put(u"mutated%1.jpg"_s.arg(i), mutated);
    }
    put(u"empty.jpg"_s, {});
    put(u"text.jpg"_s, "no picture");
    put(u"wrong.jpg"_s, "%PDF-1.4");
    QByteArray huge =
        QByteArray::fromHex("89504e470d0a1a0a0000000d49484452ffffff0fffffff0f0802000000");
    put(u"huge.jpg"_s, huge + QByteArray(4, 0));
    put(QString(251, u'n') + u".jpg"_s, good);
    put(QString::fromUtf8("two\nlines.jpg"), good);
    put(QString::fromUtf8(" blanks and 'quotes\" %1 .jpg"), good);
    put(QString::fromUtf8("gr\u00fc\u00dfe \u65e5\u672c.jpg"), good);
    put(u"locked/inside.jpg"_s, good);
    const QStringList readable = onDisk();
    QDir().mkpath(pictures + u"/folder.jpg"_s);
    QFile::link(pictures, pictures + u"/loop"_s);
    QFile::link(u"self.jpg"_s, pictures + u"/self.jpg"_s);
    QFile::link(u"nowhere"_s, pictures + u"/dangling.jpg"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pictures + u"/pipe.jpg"_s).constData(), 0600), 0);
    const QByteArray locked = QFile::encodeName(pictures + u"/locked"_s);
    ASSERT_EQ(::chmod(locked.constData(), 0), 0);
    const bool isRoot = ::geteuid() == 0; // whom no permission holds back

    QStringList expected = readable;
    if (!isRoot) expected.removeAll(u"locked/inside.jpg"_s);
    const auto count = static_cast<double>(expected.size());
    expectFigures(visit(add()), {{rowsInserted, count}, {rowsRemoved, 0}, {items, count}});
    EXPECT_EQ(inCatalogue(), expected);
    EXPECT_GE(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), isRoot ? 6 : 5);
    expectFigures(visit(), {{rowsInserted, 0}, {rowsRemoved, 0}, {items, count}});
    ::chmod(locked.constData(), 0700);
}

TEST_F(HostileFolderTest, AHundredThousandFilesInOneFolder) {
    // Fewer in the usual run; the environment says how many.
    const int count = std::max(4000, qEnvironmentVariableIntValue("VELMORA_FILES"));
    const QByteArray good = picture();
    QByteArray source;
    for (int i = 1; i < count; ++i) {
        const QByteArray name = QFile::encodeName(pictures + u"/%1.jpg"_s.arg(i));
        // A file system has a limit of links to one file.
        if (i % 20'000 == 1) {
            support::writeFile(QFile::decodeName(name), good);
            source = name;
        } else {
            ASSERT_EQ(::link(source.constData(), name.constData()), 0);
        }
    }
    expectFigures(visit(add()), {{rowsInserted, count}, {items, count}});
    expectFigures(visit(), {{rowsInserted, 0}, {rowsRemoved, 0}, {items, count}});
}

TEST_F(HostileFolderTest, OnAFullDiskEachDatabaseKeepsWhatItHasAndSaysSo) {
    const QByteArray good = picture();
    visit(add());
    for (const QString& file : {u"files.db"_s, u"thumbnail.db"_s}) {
        SCOPED_TRACE(file.toStdString());
        const QString place = temporary.filePath(u"disk-"_s + file);
        const SmallDisk disk(place);
        if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk takes root";
        const QString stored = profile + u'/' + file;
        ASSERT_TRUE(QFile::copy(stored, place + u'/' + file) && QFile::remove(stored));
        ASSERT_TRUE(QFile::link(place + u'/' + file, stored));
        const QStringList before = inCatalogue();
        const auto known = static_cast<int>(before.size());
        for (int i = 0; i < 120; ++i) {
            const QString name = file.left(2) + QString::number(i) + QString(200, u'n');
            support::writeFile(pictures + u'/' + name + u".jpg"_s, good);
        }
        disk.fill(file == u"files.db" ? 24 * 1024 : 40 * 1024);

        // What can't be taken into the catalogue waits for a visit with room; thumbnails are only
        // shown.
        const double shown = visit()[items].toDouble(-1);
        EXPECT_GE(shown, known);
        EXPECT_TRUE(file == u"files.db" || shown == known + 120) << shown;
        EXPECT_EQ(said.count('\n'), 1) << said.toStdString();
        EXPECT_TRUE(said.contains(QFile::encodeName(file))) << said.toStdString();
        const QStringList after = inCatalogue();
        EXPECT_TRUE(
            std::ranges::all_of(before, [&](const auto& name) { return after.contains(name); }));
        expectConsistentCatalogue();

        // With room again the next visit makes up for it, in silence.
        disk.free();
        visit();
        EXPECT_EQ(said.toStdString(), "");
        EXPECT_EQ(inCatalogue(), onDisk());
        EXPECT_EQ(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), onDisk().size());
        const QString back = temporary.filePath(file);
        ASSERT_TRUE(QFile::copy(place + u'/' + file, back));
        ASSERT_TRUE(QFile::remove(stored) && QFile::rename(back, stored));
    }
}
