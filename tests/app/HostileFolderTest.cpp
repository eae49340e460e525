#include "app/ScanProgram.h"

#include <sys/stat.h>
#include <unistd.h>

TEST_F(ScanProgramTest, WhateverLiesInAFolderTheScanEndsAndWhatIsSoundIsShown) {
    makePicture(u"good.jpg"_s, 120);
    const QByteArray good = support::readFile(pictures + u"/good.jpg"_s);
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
    put(u"huge.jpg"_s,
        QByteArray::fromHex("89504e470d0a1a0a0000000d49484452ffffff0fffffff0f08020000"
                            "0000000000"));
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
    Figures figures{{"rows_inserted", count}, {"rows_removed", 0}, {"items", count}};
    expectFigures(visit({u"--add"_s, pictures}), figures);
    EXPECT_EQ(inCatalogue(), expected);
    EXPECT_GE(rows(u"select FileId from Thumbnail"_s, "thumbnail.db").size(), isRoot ? 6 : 5);
    figures["rows_inserted"] = 0;
    expectFigures(visit(), figures);
    ::chmod(locked.constData(), 0700);
}
