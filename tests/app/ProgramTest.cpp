#include "support/Support.h"

#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

namespace {

struct Outcome {
    int code = -1;
    QByteArray output;
    QByteArray errors;
};

/// Runs the program itself, without a display.
class ProgramTest : public testing::Test {
protected:
    void start(QProcess& process, const QStringList& arguments) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VELMORA_PROGRAM), arguments);
    }

    Outcome run(const QStringList& arguments) const {
        QProcess process;
        start(process, arguments);
        Outcome outcome;
        if (!process.waitForFinished(60'000)) return outcome;
        outcome.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        outcome.output = process.readAllStandardOutput();
        outcome.errors = process.readAllStandardError();
        return outcome;
    }

    QStringList untilIdle(const QStringList& more = {}) const {
        return QStringList{QStringLiteral("--profile"), profile, QStringLiteral("--until-idle")} +
               more;
    }

    QTemporaryDir folder;
    const QString profile = folder.filePath(QStringLiteral("profile"));
};

TEST_F(ProgramTest, startsShowsItselfAndLeavesACatalogue) {
    const QString picture = folder.filePath(QStringLiteral("window.png"));
    const Outcome outcome = run(untilIdle(
        {QStringLiteral("--screenshot"), picture, QStringLiteral("--size"),
         QStringLiteral("900x600"), QStringLiteral("--stats"), QStringLiteral("-")}));
    EXPECT_EQ(outcome.code, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.errors, QByteArray());
    EXPECT_EQ(QImage(picture).size(), QSize(900, 600));
    const QJsonObject stats = QJsonDocument::fromJson(outcome.output).object();
    EXPECT_GT(stats[QStringLiteral("first_window_ms")].toDouble(), 0);
    EXPECT_GE(stats[QStringLiteral("longest_response_ms")].toDouble(-1), 0);
    EXPECT_GT(stats[QStringLiteral("peak_rss_kib")].toDouble(), 1000);
    for (const char* file : {"/files.db", "/thumbnail.db"}) {
        EXPECT_TRUE(
            support::readFile(profile + QLatin1StringView(file)).startsWith("SQLite format 3"))
            << file;
    }
}

TEST_F(ProgramTest, brokenCatalogueAndSettingsAreToldInALineEachAndLeftAlone) {
    const QByteArray rubbish(5000, 'x');
    support::writeFile(profile + QStringLiteral("/files.db"), rubbish);
    support::writeFile(profile + QStringLiteral("/Velmora.conf"), "\x01\x02 rubbish");
    const Outcome outcome = run(untilIdle());
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors.count('\n'), 2) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains("files.db"));
    EXPECT_TRUE(outcome.errors.contains("Velmora.conf"));
    EXPECT_EQ(support::readFile(profile + QStringLiteral("/files.db")), rubbish);
    EXPECT_EQ(support::readFile(profile + QStringLiteral("/Velmora.conf")), "\x01\x02 rubbish");
}

TEST_F(ProgramTest, aFileCutInTheMiddleOfAWriteCostsNoMoreThanItself) {
    const QString photos = folder.filePath(QStringLiteral("photos"));
    QDir().mkpath(photos);
    for (const char* name : {"/a.png", "/b.png", "/c.png"}) {
        QImage picture(40, 30, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        ASSERT_TRUE(picture.save(photos + QLatin1StringView(name)));
    }
    ASSERT_EQ(run(untilIdle({QStringLiteral("--add"), photos})).code, 0);
    const QString files = profile + QStringLiteral("/files.db");
    const QString thumbnails = profile + QStringLiteral("/thumbnail.db");
    const QByteArray wholeFiles = support::readFile(files);
    const QByteArray wholeThumbnails = support::readFile(thumbnails);
    const QStringList stats{QStringLiteral("--stats"), QStringLiteral("-")};

    for (const qsizetype length : {100, 4096, 8192}) {
        ASSERT_LT(length, std::min(wholeFiles.size(), wholeThumbnails.size()));
        support::writeFile(thumbnails, wholeThumbnails.left(length));
        const Outcome anew = run(untilIdle(stats));
        EXPECT_EQ(anew.code, 0);
        EXPECT_EQ(anew.errors.count('\n'), 1) << anew.errors.toStdString();
        EXPECT_EQ(
            support::readFile(thumbnails + QStringLiteral(".damaged")),
            wholeThumbnails.left(length));
        const QJsonObject figures = QJsonDocument::fromJson(anew.output).object();
        EXPECT_EQ(figures[QStringLiteral("thumbnails_built")].toInt(), 3) << length;

        support::writeFile(files, wholeFiles.left(length));
        const Outcome without = run(untilIdle());
        EXPECT_EQ(without.code, 0);
        EXPECT_TRUE(without.errors.contains("files.db")) << length;
        EXPECT_EQ(support::readFile(files), wholeFiles.left(length)) << "left as it was";
        support::writeFile(files, wholeFiles);
    }
}

TEST_F(ProgramTest, settingsOfEveryKindMayBeWrong) {
    const char* const values[] = {"@Invalid()",     "hello",    "-1", "1e300",
                                  "@Variant(\0\0)", "a, b, \"", ""};
    for (const char* value : values) {
        QByteArray settings = "[General]\n";
        for (const char* key :
             {"RecurseSubFolder", "GroupTypeArray", "SortType", "DescendingSort", "Filter",
              "FavoriteGroupArrayArray", "LastSelectFolder", "ShowHideStatusBar", "ShowHideToolbar",
              "ImageBrowserViewStyle", "ThumbnailSize", "InfoTag", "SourceGroupSplitPos",
              "GroupSplitPos", "InfoSplitPos", "MainWindowGeometry"})
            settings += QByteArray(key) + '=' + value + '\n';
        support::writeFile(profile + QStringLiteral("/Velmora.conf"), settings);
        const Outcome outcome = run(untilIdle());
        EXPECT_EQ(outcome.code, 0) << value << '\n' << outcome.errors.toStdString();
        EXPECT_EQ(outcome.errors.count("velmora: the setting \""), outcome.errors.count('\n'))
            << value << '\n'
            << outcome.errors.toStdString();
    }
}

TEST_F(ProgramTest, profileThatCannotBeWrittenStillGivesAWindow) {
    support::writeFile(folder.filePath(QStringLiteral("plain")), "x");
    const Outcome outcome = run(
        {QStringLiteral("--profile"), folder.filePath(QStringLiteral("plain/below")),
         QStringLiteral("--until-idle")});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.errors.contains("files.db")) << outcome.errors.toStdString();
}

TEST_F(ProgramTest, mistakesEndWithTheirCodes) {
    EXPECT_EQ(run({QStringLiteral("--nonsense")}).code, 2);
    EXPECT_EQ(run({QStringLiteral("--version")}).code, 0);
    const Outcome unwritable = run(untilIdle(
        {QStringLiteral("--screenshot"), QStringLiteral("/proc/no.png"), QStringLiteral("--stats"),
         QStringLiteral("/proc/no.json")}));
    EXPECT_EQ(unwritable.code, 1);
    EXPECT_EQ(unwritable.errors.count('\n'), 2) << unwritable.errors.toStdString();
}

TEST_F(ProgramTest, addedFoldersAreKeptAndWhatIsNoneIsTold) {
    const QString photos = folder.filePath(QStringLiteral("photos"));
    QDir().mkpath(photos);
    const QStringList add{QStringLiteral("--add"), photos};
    EXPECT_EQ(run(untilIdle(add)).code, 0);
    EXPECT_EQ(run(untilIdle(add)).code, 0) << "a folder that is there already is selected";
    const Outcome none = run(untilIdle(add + QStringList{QStringLiteral("--add"), photos + u'x'}));
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.errors.count('\n'), 1) << none.errors.toStdString();
    EXPECT_EQ(
        support::readFile(profile + QStringLiteral("/Velmora.conf"))
            .count("LastSelectFolder=" + photos.toUtf8() + '\n'),
        1);
}

TEST_F(ProgramTest, secondStartHandsOverAndSignalEndsTheFirstCleanly) {
    QProcess first;
    start(first, {QStringLiteral("--profile"), profile});
    const QString lock = profile + QStringLiteral("/thumbnail.db");
    ASSERT_TRUE(support::spinUntil([&] { return QFile::exists(lock); }));
    const Outcome second = run({QStringLiteral("--profile"), profile, QStringLiteral("/tmp")});
    EXPECT_EQ(second.code, 0);
    EXPECT_EQ(second.errors, QByteArray());
    ASSERT_EQ(first.state(), QProcess::Running);
    ::kill(static_cast<pid_t>(first.processId()), SIGTERM);
    ASSERT_TRUE(first.waitForFinished(60'000));
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
}

} // namespace
