#include "FMDB/FMDatabase.h"
#include "support/Support.h"

#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

using Figures = std::map<QString, double>;

/// The program itself, on folders of pictures that the test makes.
class ScanProgramTest : public testing::Test {
protected:
    ~ScanProgramTest() override {
        if (program.state() == QProcess::NotRunning) return;
        program.kill();
        program.waitForFinished();
    }

    void start(const QStringList& more) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        program.setProcessEnvironment(environment);
        program.start(
            QStringLiteral(VELMORA_PROGRAM),
            QStringList{QStringLiteral("--profile"), profile} + more);
    }
    /// Runs until nothing is left to do; answers the figures.
    QJsonObject visit(const QStringList& more = {}) {
        start(
            QStringList{
                QStringLiteral("--until-idle"), QStringLiteral("--stats"), QStringLiteral("-")} +
            more);
        EXPECT_TRUE(program.waitForFinished(60'000));
        EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
        return QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    }
    static void expectFigures(const QJsonObject& stats, const Figures& expected) {
        for (const auto& [name, value] : expected)
            EXPECT_EQ(stats[name].toDouble(-1), value) << name.toStdString();
    }

    void makePicture(const QString& name, int width = 40) const {
        const QString file = pictures + u'/' + name;
        QDir().mkpath(QFileInfo(file).absolutePath());
        QImage image(width, 30, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        ASSERT_TRUE(image.save(file));
    }
    QStringList onDisk() const {
        QStringList names;
        const QStringList filter{QStringLiteral("*.jpg")};
        QDirIterator iterator(pictures, filter, QDir::Files, QDirIterator::Subdirectories);
        while (iterator.hasNext())
            names.append(iterator.next().mid(pictures.size() + 1));
        names.sort();
        return names;
    }
    QStringList rows(const QString& sql, const char* file = "files.db") const {
        FMDatabase db(profile + u'/' + QLatin1StringView(file));
        QStringList found;
        if (!db.open()) return found;
        FMResultSet cursor = db.executeQuery(sql);
        while (cursor.next())
            found.append(cursor.stringForColumnIndex(0));
        found.sort();
        return found;
    }
    QStringList inCatalogue() const {
        return rows(
            QStringLiteral("select ifnull(Folder.RelativePath||'/','')||FileName from ImageFile "
                           "join Folder on Folder.Id = FolderId"));
    }
    bool follows() const {
        return support::spinUntil([this] { return inCatalogue() == onDisk(); });
    }

    QTemporaryDir temporary;
    const QString profile = temporary.filePath(QStringLiteral("profile"));
    const QString pictures = temporary.filePath(QStringLiteral("pictures"));
    QProcess program;
};

} // namespace

TEST_F(ScanProgramTest, AFolderIsCataloguedOnceAndThenOnlyItsChanges) {
    for (int i = 0; i < 12; ++i)
        makePicture(QStringLiteral("%1/%2.jpg").arg(i % 3).arg(i), 40 + 40 * i);
    support::writeFile(pictures + QStringLiteral("/damaged.jpg"), "no picture");
    const QStringList add{QStringLiteral("--add"), pictures};
    const QString rowsInserted = QStringLiteral("rows_inserted");
    const QString rowsRemoved = QStringLiteral("rows_removed");
    const QString built = QStringLiteral("thumbnails_built");
    const QString failed = QStringLiteral("thumbnails_failed");
    const QString items = QStringLiteral("items");
    expectFigures(
        visit(add), {{rowsInserted, 13}, {rowsRemoved, 0}, {built, 12}, {failed, 1}, {items, 13}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(QStringLiteral("select Id from ImageFile where ImageWidth > 0")).size(), 12);

    const QJsonObject second = visit();
    expectFigures(second, {{rowsInserted, 0}, {rowsRemoved, 0}, {built, 0}, {items, 13}});
    for (const char* time :
         {"first_publication_ms", "catalogue_pass_ms", "scan_finished_ms", "thumbnails_done_ms"})
        EXPECT_GE(second[QLatin1StringView(time)].toDouble(-1), 0) << time;

    QFile::remove(pictures + QStringLiteral("/0/0.jpg"));
    QFile::rename(pictures + QStringLiteral("/1/1.jpg"), pictures + QStringLiteral("/2/1.jpg"));
    makePicture(QStringLiteral("2/2.jpg"), 99);
    expectFigures(visit(), {{rowsInserted, 2}, {rowsRemoved, 3}, {built, 2}, {items, 12}});
    EXPECT_EQ(inCatalogue(), onDisk());
    EXPECT_EQ(rows(QStringLiteral("select FileId from Thumbnail"), "thumbnail.db").size(), 11);
}

TEST_F(ScanProgramTest, TheCatalogueFollowsTheDiskWhileTheProgramRuns) {
    makePicture(QStringLiteral("first.jpg"));
    start({QStringLiteral("--add"), pictures});
    ASSERT_TRUE(follows());
    makePicture(QStringLiteral("second.jpg"));
    makePicture(QStringLiteral("new/folders/third.jpg"));
    ASSERT_TRUE(follows());
    QDir disk(pictures);
    disk.rename(QStringLiteral("second.jpg"), QStringLiteral("renamed.jpg"));
    disk.rename(QStringLiteral("new"), QStringLiteral("newer"));
    ASSERT_TRUE(follows());
    QDir(pictures + QStringLiteral("/newer")).removeRecursively();
    disk.remove(QStringLiteral("first.jpg"));
    ASSERT_TRUE(follows());
    // The root itself: its pictures stay catalogued under its new name.
    const QStringList ids = rows(QStringLiteral("select Id from ImageFile"));
    ASSERT_TRUE(QDir().rename(pictures, temporary.filePath(QStringLiteral("elsewhere"))));
    const QString reservePath = QStringLiteral("select ReservePath from FolderAlias");
    const bool moved = support::spinUntil([&] {
        return rows(reservePath) == QStringList{temporary.filePath(QStringLiteral("elsewhere"))};
    });
    ASSERT_TRUE(moved) << rows(reservePath).join(u' ').toStdString() << '\n'
                       << program.readAllStandardError().toStdString();
    program.terminate();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(rows(QStringLiteral("select Id from ImageFile")), ids);
}

TEST_F(ScanProgramTest, KilledAtAnyMomentItStartsAgainOnAConsistentCatalogue) {
    std::mt19937 random(3);
    for (int i = 0; i < 150; ++i)
        makePicture(QStringLiteral("%1/%2.jpg").arg(i % 5).arg(i));
    for (int round = 0; round < 12; ++round) {
        start({QStringLiteral("--add"), pictures});
        ASSERT_TRUE(program.waitForStarted());
        const int moment = static_cast<int>(random() % 300);
        program.waitForFinished(moment); // which it does not
        if (round % 3 == 0) {
            program.terminate();
        } else {
            program.kill();
        }
        ASSERT_TRUE(program.waitForFinished());
        for (const char* table : {"Exif", "Tiff", "GPS", "IPTC", "ExifAux"}) {
            EXPECT_TRUE(rows(QStringLiteral("select FileId from %1 where FileId not in "
                                            "(select Id from ImageFile)")
                                 .arg(QLatin1StringView(table)))
                            .isEmpty());
        }
        EXPECT_TRUE(rows(QStringLiteral("select Id from ImageFile where FolderId not in "
                                        "(select Id from Folder)"))
                        .isEmpty());
        QFile::remove(pictures + QStringLiteral("/%1/%2.jpg").arg(round % 5).arg(round));
    }
    visit({QStringLiteral("--add"), pictures});
    EXPECT_EQ(inCatalogue(), onDisk());
}
