#include "platform/desktop/Trash.h"
#include "platform/desktop/Pasteboard.h"
#include "support/FaultyFiles.h"

#include <QMimeData>

#include <sys/stat.h>
#include <unistd.h>

using platform::Trash;
using platform::TrashedFile;

namespace {

struct TrashTest : testing::Test {
    TrashTest() {
        files.otherDisk = bytes(u"stick");
        EXPECT_TRUE(QDir(folder.path()).mkpath(u"stick/in"_s));
    }
    QByteArray bytes(QStringView name) const {
        return QFile::encodeName(folder.filePath(name.toString()));
    }
    TrashedFile put(const QByteArray& path, std::errc expected = {}) {
        support::writeFile(QFile::decodeName(path), path);
        TrashedFile trashed;
        EXPECT_EQ(
            trash.trash(path, trashed),
            expected == std::errc() ? std::error_code() : std::make_error_code(expected));
        return trashed;
    }
    QString below(const QByteArray& path) const {
        return QDir(folder.path()).relativeFilePath(QFile::decodeName(path));
    }
    QByteArray pathLine(const TrashedFile& trashed) const {
        return support::readFile(QFile::decodeName(trashed.infoPath)).split('\n').value(1);
    }

    QTemporaryDir folder;
    support::FaultyFiles files;
    Trash trash{
        files,
        {.homeTrash = bytes(u"home/.local/share/Trash"),
         .userId = ::getuid(),
         .topFolder =
             [this](const QByteArray& path) {
                 return path.startsWith(bytes(u"stick")) ? bytes(u"stick") : QByteArray();
             },
         .deletionDate = [] { return QByteArray("2026-01-02T03:04:05"); }}};
};

TEST_F(TrashTest, eachDiskHasItsOwnAndEachFileItsInformation) {
    const QString own = u".Trash-%1"_s.arg(::getuid());
    const TrashedFile home = put(bytes(u"a b%ü.jpg"));
    EXPECT_EQ(below(home.trashedPath), u"home/.local/share/Trash/files/a b%ü.jpg");
    EXPECT_EQ(pathLine(home), "Path=" + folder.path().toUtf8() + "/a%20b%25%C3%BC.jpg");
    EXPECT_TRUE(support::readFile(QFile::decodeName(home.infoPath))
                    .endsWith("\nDeletionDate=2026-01-02T03:04:05\n"));
    const TrashedFile stick = put(bytes(u"stick/in/x.jpg"));
    EXPECT_EQ(below(stick.trashedPath), u"stick/%1/files/x.jpg"_s.arg(own));
    EXPECT_EQ(pathLine(stick), "Path=in/x.jpg");
    struct stat status {};
    ASSERT_EQ(::stat(bytes(u"stick/%1"_s.arg(own)).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    // A second one of that name, and one that is as long as names can be.
    EXPECT_TRUE(put(bytes(u"stick/in/x.jpg")).trashedPath.endsWith("/x.2.jpg"));
    const QByteArray longName = QByteArray(251, 'n') + ".jpg";
    EXPECT_TRUE(QFile::exists(QFile::decodeName(put(bytes(u"home/") + longName).infoPath)));

    for (const TrashedFile& trashed : {home, stick}) {
        EXPECT_FALSE(trash.restore(trashed));
        EXPECT_EQ(support::readFile(QFile::decodeName(trashed.originalPath)), trashed.originalPath);
        EXPECT_FALSE(QFile::exists(QFile::decodeName(trashed.infoPath)));
    }
    // What came to its place meanwhile stays; a folder that went is made again.
    const TrashedFile again = put(bytes(u"stick/in/y.jpg"));
    support::writeFile(folder.filePath(u"stick/in/y.jpg"_s), "another");
    EXPECT_EQ(trash.restore(again), std::errc::file_exists);
    EXPECT_EQ(support::readFile(folder.filePath(u"stick/in/y.jpg"_s)), "another");
    ASSERT_TRUE(QDir(folder.filePath(u"stick/in"_s)).removeRecursively());
    EXPECT_FALSE(trash.restore(again));
}

TEST_F(TrashTest, theSharedTrashOfADiskIsUsedOnlyWhereNobodyCanInterfere) {
    const QByteArray shared = bytes(u"stick/.Trash");
    ASSERT_EQ(::mkdir(shared.constData(), 0777), 0);
    EXPECT_FALSE(put(bytes(u"stick/in/1")).trashedPath.startsWith(shared + '/'));
    ASSERT_EQ(::chmod(shared.constData(), 01777), 0);
    // What was found out of a folder is kept: another folder.
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"stick/in2"_s));
    EXPECT_TRUE(put(bytes(u"stick/in2/1")).trashedPath.startsWith(shared + '/'));
}

TEST_F(TrashTest, aDiskThatIsMountedTwiceHasATrashAtEachPlace) {
    files.isMountedTwice = true;
    for (const QStringView name : {u"stick/in/x.jpg", u"stick/in/y.jpg"})
        EXPECT_TRUE(put(bytes(name)).trashedPath.startsWith(bytes(u"stick/.Trash-")));
}

TEST_F(TrashTest, whereThereIsNoTrashTheFileStays) {
    // The name of the trash is taken by something else.
    support::writeFile(folder.filePath(u"stick/.Trash-%1"_s.arg(::getuid())), "no folder");
    put(bytes(u"stick/in/x.jpg"), std::errc::not_supported);
    EXPECT_TRUE(QFile::exists(folder.filePath(u"stick/in/x.jpg"_s)));
}

TEST(PasteboardTest, filesComeAndGoInTheFormsOfTheDesktop) {
    using Paths = std::vector<QByteArray>;
    const Paths paths = {"/a b/ü%1.jpg", "/odd\n\"'\xff#?.jpg"};
    for (const bool isCut : {false, true}) {
        QMimeData data;
        platform::setFilesOfMimeData(data, {.paths = paths, .isCut = isCut});
        for (const QString& without :
             {QString(), u"text/uri-list"_s, u"x-special/gnome-copied-files"_s}) {
            QMimeData part;
            for (const QString& format : data.formats())
                if (format != without) part.setData(format, data.data(format));
            const auto files = platform::filesOfMimeData(part);
            EXPECT_EQ(files.paths, paths);
            EXPECT_EQ(files.isCut, isCut);
        }
    }
    QMimeData foreign;
    foreign.setData(
        u"text/uri-list"_s,
        "#comment\r\nfile:///a.jpg\r\nhttps://x.org/b.jpg\r\nfile://localhost/c%20d.jpg\r\n"
        "file://elsewhere.example/e.jpg\r\nFILE:/f.jpg\r\nfile:///a.jpg\r\nfile:\r\n");
    EXPECT_EQ(platform::filesOfMimeData(foreign).paths, (Paths{"/a.jpg", "/c d.jpg", "/f.jpg"}));
    EXPECT_TRUE(platform::filesOfMimeData(QMimeData()).paths.empty());
}

} // namespace
