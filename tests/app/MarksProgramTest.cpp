#include "app/ScanProgram.h"
#include "support/MemoryDisk.h"

/// The program itself with marks: they are set and read as text.
struct MarksProgramTest : ScanProgramTest {
    QString in(const QString& name) const { return pictures + u'/' + name; }
    static QByteArray line(const QString& path, const char* marks) {
        return "{\"path\":\"" + path.toUtf8() + "\"," + marks + "}\n";
    }
    Outcome import(const QByteArray& lines) const {
        const QString file = temporary.filePath(u"marks.jsonl"_s);
        support::writeFile(file, lines);
        return runOnProfile({u"--import-marks"_s, file});
    }
    QByteArray exported() const {
        const Outcome outcome = runOnProfile({u"--export-marks"_s, u"-"_s});
        EXPECT_EQ(outcome.code, 0) << outcome.errors.toStdString();
        return outcome.output;
    }
    void addTwo() {
        makePicture(u"a.jpg"_s, 40);
        makePicture(u"b.jpg"_s, 50);
        visit({u"--add"_s, pictures});
    }
};

TEST_F(MarksProgramTest, MarksAreImportedKeptAndExportedWithAndWithoutARunningProgram) {
    addTwo();
    const Outcome outcome = import(
        line(in(u"a.jpg"_s), "\"stars\":4,\"tags\":[\"sea\"]") + "no line\n" +
        line(in(u"later.jpg"_s), "\"flag\":true"));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(
        outcome.errors, "velmora: line 2 is no photograph with marks; it is left out\nvelmora: " +
                            in(u"later.jpg"_s).toUtf8() +
                            " is not in the catalogue; its marks wait for it\n");
    EXPECT_EQ(
        rows(u"select FileName||'='||FileStars from ImageFile where FileStars > 0"_s),
        QStringList{u"a.jpg=4"_s});
    makePicture(u"later.jpg"_s, 60);
    visit();
    EXPECT_EQ(
        rows(u"select FileName from ImageFile where FileFlag"_s), QStringList{u"later.jpg"_s});
    EXPECT_EQ(
        rows(u"select count(*) from Marks where Digest is null"_s, "marks.db"), QStringList{u"0"_s})
        << "--until-idle waits for the digests";
    EXPECT_FALSE(QDir(profile + u"/marks-snapshots"_s).entryList(QDir::Files).isEmpty());

    start({});
    ASSERT_TRUE(support::spinUntil(
        [&] { return import(line(in(u"b.jpg"_s), "\"stars\":2,\"rotation\":90")).code == 0; }));
    const QByteArray all = exported();
    EXPECT_EQ(
        all, line(in(u"a.jpg"_s), "\"stars\":4,\"tags\":[\"sea\"]") +
                 line(in(u"b.jpg"_s), "\"rotation\":90,\"stars\":2") +
                 "{\"flag\":true,\"path\":\"" + in(u"later.jpg"_s).toUtf8() + "\"}\n");
    terminate();
    EXPECT_EQ(exported(), all);

    // The catalogue is lost, and files have other names.
    ASSERT_TRUE(QFile::remove(profile + u"/files.db"_s));
    ASSERT_TRUE(QFile::rename(in(u"a.jpg"_s), in(u"a2.jpg"_s)));
    // The thumbnails that are there are another catalogue's, though ids are the same.
    expectFigures(visit({u"--add"_s, pictures}), {{"thumbnails_built", 3}});
    expectFigures(visit(), {{"thumbnails_built", 0}});
    EXPECT_EQ(exported(), QByteArray(all).replace("a.jpg", "a2.jpg"));
    // And so is the ledger.
    support::writeFile(
        profile + u"/marks.db"_s, support::readFile(profile + u"/marks.db"_s).left(5000));
    const Outcome damaged = runUntilIdle();
    EXPECT_TRUE(damaged.errors.contains("the ledger of marks was damaged"))
        << damaged.errors.toStdString();
    EXPECT_EQ(exported().count('\n'), 3);
}

TEST_F(MarksProgramTest, AnEditThatCannotBeStoredSaysSoInTheWindowAndLosesNothing) {
    const support::MemoryDisk disk(profile);
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a disk takes root";
    addTwo();
    ASSERT_EQ(import(line(in(u"a.jpg"_s), "\"stars\":4,\"tags\":[\"sea\"]")).code, 0);
    const QByteArray before = exported();
    const QByteArray edit = line(in(u"b.jpg"_s), "\"stars\":2");
    std::optional<FMDatabase> other;
    using Obstacle = std::tuple<QString, std::function<void()>, std::function<void()>>;
    for (const auto& [told, begin, end] : std::vector<Obstacle>{
             {u"no room"_s, [&] { disk.fill(0); }, [&] { disk.free(); }},
             {u"can’t be written"_s, [&] { disk.setReadOnly(true); },
              [&] { disk.setReadOnly(false); }},
             {u"in trouble"_s,
              [&] {
                  other.emplace(profile + u"/marks.db"_s);
                  ASSERT_TRUE(other->open() && other->beginTransaction());
              },
              [&] { other.reset(); }}}) {
        SCOPED_TRACE(told.toStdString());
        begin();
        for (const bool isRunning : {false, true}) {
            if (isRunning) {
                start({});
                ASSERT_TRUE(support::spinUntil([&] { return !state().isEmpty(); }));
            }
            const Outcome outcome = import(edit);
            EXPECT_EQ(outcome.code, 1);
            EXPECT_TRUE(outcome.errors.contains("nothing is imported"))
                << outcome.errors.toStdString();
        }
        EXPECT_TRUE(notice().contains(told)) << notice().toStdString();
        terminate();
        end();
        EXPECT_EQ(exported(), before);
    }
    EXPECT_EQ(import(edit).code, 0);
    EXPECT_EQ(exported().count('\n'), 2);
}

/// What was acknowledged is in both files, whenever the program is killed, and new photographs that
/// it was about to catalogue are there whole or not at all.
TEST_F(MarksProgramTest, KilledAtAnyMomentItHasEveryEditThatItAcknowledgedAndAConsistentCatalogue) {
    constexpr int photographs = 40;
    for (int number = 0; number < photographs; ++number)
        makePicture(QString::number(number) + u".jpg"_s, 40 + number);
    visit({u"--add"_s, pictures});
    const auto linesOf = [this](int edit) {
        const std::string marks = "\"stars\":" + std::to_string(1 + edit % 5) + ",\"tags\":[\"" +
                                  std::to_string(edit) + "\"]";
        QByteArray lines;
        for (int number = 0; number < photographs; ++number)
            lines += line(in(QString::number(number) + u".jpg"_s), marks.c_str());
        return lines;
    };
    // Of the first program nobody knows whether it hears of any.
    ASSERT_EQ(import(linesOf(0)).code, 0);
    const int kills = std::max(12, qEnvironmentVariableIntValue("VELMORA_KILLS"));
    std::mt19937 random(5);
    int acknowledged = 0;
    for (int kill = 0; kill < kills; ++kill) {
        for (int number = 0; number < 30; ++number)
            makePicture(u"%1/%2.jpg"_s.arg(kill).arg(number));
        QDir(in(QString::number(kill - 3))).removeRecursively();
        start({});
        int tried = 0;
        ASSERT_TRUE(program.waitForStarted());
        // A process rather than a thread: the test makes many processes meanwhile.
        QProcess killer;
        killer.start(
            u"sh"_s, {u"-c"_s, u"sleep $0; kill -9 $1"_s,
                      QString::number(static_cast<double>(random() % 1500) / 1000),
                      QString::number(program.processId())});
        while (!killer.waitForFinished(0) && killer.state() != QProcess::NotRunning) {
            const int edit = kill * 1000 + tried;
            if (import(linesOf(edit)).code == 0) acknowledged = edit;
            ++tried;
        }
        program.waitForFinished(10'000);
        const QString tags = u"select distinct Tag from Tags where Id in "
                             "(select Tag from ImageFile)"_s;
        const QStringList inFiles = rows(tags);
        const QStringList inLedger = rows(u"select distinct Tags from Marks"_s, "marks.db");
        ASSERT_EQ(inFiles.size(), 1) << "an edit is stored whole";
        ASSERT_EQ(inLedger, QStringList{u"[\"%1\"]"_s.arg(inFiles.constFirst())});
        EXPECT_GE(inFiles.constFirst().toInt(), acknowledged);
        EXPECT_EQ(rows(u"pragma integrity_check"_s), QStringList{u"ok"_s});
        expectConsistentCatalogue();
    }
    visit();
    EXPECT_EQ(inCatalogue(), onDisk());
}
