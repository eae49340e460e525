#include "fileactions/FileEdit.h"
#include "fileactions/ScriptedFiles.h"
#include "fileactions/copy/DuplicateNames.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using Kind = fileactions::TransferPlan::Kind;
using Answer = fileactions::FilePrompts::Answer;

namespace {

struct FileTransferTest : support::TransferFixture {};

TEST_F(FileTransferTest, namesOfDuplicatesCountOnFromTheirBeginning) {
    const std::tuple<QByteArray, int, QByteArray> table[] = {
        {"IMG.jpg", 0, "IMG twin.jpg"},
        {"IMG.jpg", 2, "IMG twin 2.jpg"},
        {"IMG twin 3.jpg", 0, "IMG twin.jpg"},
        {"IMG TWIN.jpg", 1, "IMG twin 1.jpg"},
        {"IMG twin 12.jpg", 0, "IMG twin 12 twin.jpg"},
        {"twin.jpg", 0, "twin twin.jpg"},
        {"a twin of b", 0, "a twin of b twin"},
        {".hidden", 0, ".hidden twin"},
        {"\xff twin.jpg", 0, "\xff twin twin.jpg"},
        {QByteArray(250, 'x') + ".jpg", 10, QByteArray(243, 'x') + " twin 10.jpg"},
        {QByteArray("\u00fc").repeated(125), 10, QByteArray("\u00fc").repeated(123) + " twin 10"},
    };
    for (const auto& [name, n, expected] : table)
        EXPECT_EQ(fileactions::DuplicateNames(name, u"twin"_s).name(n), expected);
}

TEST_F(FileTransferTest, conflictsAreAskedInTurnAndAnswersForAllLastForTheCommand) {
    // What is left in "b", where the first three were, and in "a".
    using Answers = std::vector<fileactions::FilePrompts::ConflictAnswer>;
    const std::tuple<Kind, Answers, QByteArray, const char*, qsizetype> table[] = {
        {Kind::Copy, {{Answer::Skip, true}}, "OOON", "1234", 1},
        {Kind::Copy, {{Answer::Replace, true}}, "NNNN", "1234", 1},
        {Kind::Copy, {{Answer::Replace, false}, {Answer::Skip, true}}, "NOON", "1234", 2},
        {Kind::Copy, {{Answer::Replace, false}, {Answer::Stop, true}}, "NOO-", "1234", 2},
        {Kind::Move, {{Answer::Skip, false}, {Answer::Replace, true}}, "ONNN", "1", 2},
        {Kind::Move, {}, "OOO-", "1234", 1},
    };
    for (const auto& [kind, answers, left, sources, questions] : table) {
        for (const QByteArray name : {"1", "2", "3", "4"}) {
            put("a/" + name, "N");
            put("b/" + name, "O");
        }
        QFile::remove(at("b/4"));
        prompts.log.clear();
        prompts.answers = answers;
        run(plan(kind, {"a/1", "a/2", "a/3", "a/4"}));
        QByteArray found;
        for (const QByteArray name : {"1", "2", "3", "4"})
            found += QFile::exists(at("b/" + name)) ? read("b/" + name) : "-";
        EXPECT_EQ(found, left);
        EXPECT_EQ(names(u"a"_s).join(QString()), QLatin1StringView(sources));
        EXPECT_EQ(prompts.log.size(), questions);
    }
}

TEST_F(FileTransferTest, anAnswerForAllDoesNotCoverWhatTheMoveItselfHasBrought) {
    for (const bool coversOwn : {false, true}) {
        for (const char* name : {"a/x", "a/y", "c/x", "d/x"})
            put(name, name);
        put("b/x", "former");
        put("b/y", "former");
        prompts.log.clear();
        prompts.answers = {{Answer::Replace, true}};
        if (coversOwn) prompts.answers.push_back({Answer::Replace, true});
        run(plan(Kind::Move, {"a/x", "a/y", "c/x", "d/x"}));
        EXPECT_EQ(prompts.log, QStringList({u"conflict x"_s, u"conflict x"_s}));
        EXPECT_EQ(read("b/y"), "a/y");
        EXPECT_EQ(read("b/x"), coversOwn ? "d/x" : "a/x");
        EXPECT_EQ(read("c/x"), coversOwn ? "" : "c/x");
    }
}

TEST_F(FileTransferTest, ontoItselfAFileIsDuplicatedOrStays) {
    put("a/x.jpg", "x");
    for (int time = 0; time < 2; ++time)
        run(plan(Kind::Copy, {"a/x.jpg"}, "a"));
    run(plan(Kind::Move, {"a/x.jpg"}, "a"));
    run(plan(Kind::Duplicate, {"a/x copy.jpg", "a/gone.jpg"}));
    EXPECT_EQ(names(u"a"_s).join(u'|'), u"x copy 1.jpg|x copy 2.jpg|x copy.jpg|x.jpg"_s);
    EXPECT_TRUE(prompts.log.isEmpty());
    // The same folder by another way.
    ASSERT_TRUE(QFile::link(at("a"), at("way")));
    run(plan(Kind::Move, {"a/x.jpg"}, "way"));
    EXPECT_EQ(read("a/x.jpg"), "x");
    EXPECT_TRUE(prompts.log.isEmpty());
}

/// At each step in turn, with each fault: each end has the whole file, its former one or none, the
/// file is not lost, and what the result says is so.
TEST_F(FileTransferTest, whateverStepFailsNothingIsHalfOrLost) {
    const QByteArray former(3000, 'o');
    const QByteArray fresh(70'000, 'n');
    constexpr std::array faults = {
        std::errc::no_space_on_device,        std::errc::permission_denied,
        std::errc::read_only_file_system,     std::errc::filename_too_long,
        std::errc::no_such_file_or_directory, std::errc::io_error};
    int runs = 0;
    for (const Kind kind : {Kind::Copy, Kind::Move}) {
        for (const bool isReplacement : {false, true}) {
            for (const bool isOtherDisk : {false, true}) {
                for (int step = 1;; ++step) {
                    QFile::remove(at("b/x"));
                    put("a/x", fresh);
                    if (isReplacement) put("b/x", former);
                    files = {};
                    files.failAt = step;
                    files.fault = faults[static_cast<std::size_t>(step) % faults.size()];
                    if (isOtherDisk) files.otherDisk = path("b");
                    prompts.answers = {{Answer::Replace, false}};
                    const bool isDone = !run(plan(kind, {"a/x"})).files.empty();
                    if (files.failed.isEmpty()) break;
                    ++runs;
                    SCOPED_TRACE(files.failed.toStdString() + " " + std::to_string(step));

                    const bool hasSource = QFile::exists(at("a/x"));
                    const QByteArray made = read("b/x");
                    EXPECT_TRUE(!hasSource || read("a/x") == fresh);
                    EXPECT_TRUE(made == fresh || made == (isReplacement ? former : QByteArray()));
                    EXPECT_TRUE(hasSource || made == fresh);
                    EXPECT_TRUE(!isDone || made == fresh);
                    EXPECT_EQ(hasSource, kind == Kind::Copy || !isDone);
                    EXPECT_TRUE(isDone || isReplacement || made.isEmpty());
                    EXPECT_LE(names(u"b"_s).size(), 1);
                }
            }
        }
    }
    EXPECT_GT(runs, 70);
}

TEST_F(FileTransferTest, aSourceOrADiskThatGoesByItselfLeavesTheCopyThatMayBeTheLast) {
    files.otherDisk = path("b");
    files.goesByItself = path("a/x");
    for (const bool leaves : {false, true}) {
        put("a/x", "only one");
        if (leaves) files.leaves = path("a");
        EXPECT_EQ(run(plan(Kind::Move, {"a/x"})).files.size(), leaves ? 0U : 1U);
        EXPECT_EQ(read("b/x"), "only one");
        QFile::remove(at("b/x"));
    }
    EXPECT_EQ(prompts.log, QStringList(u"failed x"_s));
}

TEST_F(FileTransferTest, whatIsWrittenIntoASourceMeanwhileIsNotDeleted) {
    put("b/x", "former");
    for (const QByteArray name : {"x", "y"}) {
        put("a/" + name, "early");
        files.otherDisk = path("b");
        files.growsByItself = path("a/" + name);
        prompts.answers = {{Answer::Replace, false}};
        EXPECT_TRUE(run(plan(Kind::Move, {"a/" + name})).files.empty());
        EXPECT_EQ(read("a/" + name), "early!");
    }
    EXPECT_EQ(names(u"b"_s), QStringList{u"x"_s});
}

TEST_F(FileTransferTest, attributesComeAlongAndLinksLeadOn) {
    const QByteArray odd = "l\n\"'\\\xff .jpg";
    put("a/x", "picture");
    ASSERT_EQ(::rename(path("a/x").constData(), path("a/" + odd).constData()), 0);
    const QByteArray source = path("a/" + odd);
    const timespec dates[] = {{1000, 5}, {2000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, source.constData(), dates, 0), 0);
    ASSERT_EQ(::chmod(source.constData(), 0640), 0);
    const bool hasAttributes =
        ::setxattr(source.constData(), "user.note", "sea", 3, 0) == 0; // not on every disk
    ASSERT_EQ(::symlink(odd.constData(), path("a/link").constData()), 0);

    for (const Kind kind : {Kind::Copy, Kind::Move}) {
        files.otherDisk = path("b");
        run(plan(kind, {"a/" + odd}));
        struct stat status {};
        ASSERT_EQ(::stat(path("b/" + odd).constData(), &status), 0);
        EXPECT_EQ(status.st_mtim.tv_sec, 2000);
        EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'789);
        EXPECT_EQ(status.st_mode & 07777, 0640U);
        std::array<char, 8> note{};
        ::getxattr(path("b/" + odd).constData(), "user.note", note.data(), note.size());
        EXPECT_EQ(std::string(note.data()), hasAttributes ? "sea" : "");
        ASSERT_EQ(::rename(path("b/" + odd).constData(), source.constData()), 0);
    }
    // A copy of a link is a photograph; a link that moves still finds its own.
    run(plan(Kind::Copy, {"a/link"}));
    EXPECT_FALSE(QFileInfo(at("b/link")).isSymLink());
    ASSERT_TRUE(QFile::remove(at("b/link")));
    run(plan(Kind::Move, {"a/link"}));
    EXPECT_TRUE(QFileInfo(at("b/link")).isSymLink());
    EXPECT_EQ(read("b/link"), "picture");
    EXPECT_EQ(::unlink(source.constData()), 0); // as a temporary folder can't
}

TEST_F(FileTransferTest, aLinkNeverTakesThePlaceOfItsOwnFile) {
    put("b/x", "photograph");
    ASSERT_EQ(::symlink("../b/x", path("a/middle").constData()), 0);
    ASSERT_EQ(::symlink("middle", path("a/x").constData()), 0);
    prompts.answers = {{Answer::Replace, false}};
    EXPECT_TRUE(run(plan(Kind::Move, {"a/x"})).files.empty());
    EXPECT_EQ(prompts.log, QStringList({u"conflict x"_s, u"skip? x"_s}));
    EXPECT_FALSE(QFileInfo(at("b/x")).isSymLink());
    // Nor does what is made of it; a copy is one onto itself.
    TransferPlan exported;
    exported.addFile(
        {.source = path("a/x"),
         .folder = path("b"),
         .name = "x",
         .make = support::making("other"),
         .replaces = true});
    EXPECT_TRUE(run(exported).files.empty());
    run(plan(Kind::Copy, {"a/x"}));
    EXPECT_EQ(names(u"b"_s), QStringList({u"x"_s, u"x copy"_s}));
    EXPECT_EQ(read("b/x") + read("b/x copy"), "photographphotograph");
}

TEST_F(FileTransferTest, twoNamesOfOneFileInTwoFoldersAreTwoFilesToTheUser) {
    put("a/x", "photograph");
    ASSERT_EQ(::link(path("a/x").constData(), path("b/x").constData()), 0);
    run(plan(Kind::Copy, {"a/x"}));
    EXPECT_EQ(prompts.log, QStringList(u"conflict x"_s));
    prompts.answers = {{Answer::Replace, false}};
    EXPECT_EQ(run(plan(Kind::Move, {"a/x"})).files.size(), 1U);
    EXPECT_EQ(names(u"a"_s), QStringList());
    EXPECT_EQ(read("b/x"), "photograph");
}

TEST_F(FileTransferTest, groupsBecomeFoldersAlsoWhereTheDiskRefusesTheirNames) {
    for (const char* name : {"a/1", "a/2", "a/3"})
        put(name, name);
    put("b/taken", "a file");
    files.refusesColon = true;
    TransferPlan plan{.kind = Kind::Copy, .steps = {}};
    plan.addFolder(path("b/2019"));
    plan.addFolder(path("b/2019/A:B"));
    plan.addFile(path("a/1"), path("b/2019/A:B"));
    plan.addFolder(path("b/taken"));
    plan.addFile(path("a/2"), path("b/taken"));
    plan.addFolder(path("b/2019"));
    plan.addFile(path("a/3"), path("b/2019"));
    EXPECT_EQ(run(plan).files.size(), 2U);
    EXPECT_EQ(read("b/2019/A_B/1"), "a/1");
    EXPECT_EQ(read("b/2019/3"), "a/3");
    EXPECT_EQ(prompts.log, QStringList(u"skip? taken"_s));
    // Never over a folder.
    put("a/2019", "file");
    prompts.answers = {{Answer::Replace, false}};
    run(this->plan(Kind::Copy, {"a/2019"}));
    EXPECT_EQ(read("b/2019/3"), "a/3");
    EXPECT_EQ(prompts.log.last(), u"skip? 2019"_s);
}

TEST_F(FileTransferTest, temporariesOfARunThatWasCutShortGoWithTheNextStart) {
    QByteArray left;
    int file = -1;
    ASSERT_FALSE(temporaries.create(path("b"), left, file));
    ::close(file);
    EXPECT_TRUE(platform::nameOfPath(left).startsWith('.'));
    put("b/photo.jpg", "mine");
    const QByteArray away = "away/.velmora-0000000000000000.part";
    put("journal", read("journal") + path("b/photo.jpg") + '\n' + path(away) + '\n');
    fileactions::TemporaryFiles::removeLeft(files, path("journal"));
    EXPECT_EQ(names(u"b"_s), QStringList(u"photo.jpg"_s));
    // A disk may be away; when it is back, the file goes.
    put(away, "half");
    fileactions::TemporaryFiles::removeLeft(files, path("journal"));
    EXPECT_TRUE(names(u"away"_s).isEmpty());
    EXPECT_FALSE(QFile::exists(at("journal")));
}

TEST_F(FileTransferTest, whatADiskThatLeavesKeepsOfACopyGoesWhenItIsBack) {
    put("a/x", "whole");
    files.leaves = path("b");
    EXPECT_TRUE(run(plan(Kind::Copy, {"a/x"})).files.empty());
    EXPECT_EQ(names(u"b"_s).size(), 1); // hidden
    files.leaves.clear();
    EXPECT_EQ(run(plan(Kind::Copy, {"a/x"})).files.size(), 1U); // which forgets nothing
    fileactions::TemporaryFiles::removeLeft(files, path("journal"));
    EXPECT_EQ(names(u"b"_s), QStringList(u"x"_s));
}

struct FileEditTest : FileTransferTest {
    platform::Trash trash{
        files,
        {.homeTrash = path("Trash"),
         .userId = ::getuid(),
         .topFolder = [](const QByteArray&) { return QByteArray(); },
         .deletionDate = [] { return QByteArray("2026-01-02T03:04:05"); }}};
    fileactions::FileEditor::Environment environment{files, temporaries, trash,
                                                     none,  prompts,     u"copy"_s};
    const fileactions::FileEditor editor{environment, {}};
    fileactions::FileOutcome
    perform(const fileactions::FileEdit& edit, const std::stop_token& stop = {}) const {
        return fileactions::FileEditor(environment, stop).perform(edit);
    }
    QString state() const { return names(u"a"_s).join(u',') + u'|' + names(u"b"_s).join(u','); }
};

/// Each command, taken back, done again, taken back half-way, the rest, and that part done again.
TEST_F(FileEditTest, whatWasDoneCanBeTakenBackAndRepeatedAlsoFromHalfWay) {
    const std::tuple<QByteArray, Kind, QString> commands[] = {
        {"move", Kind::Move, u"|1,2,3"_s},
        {"copy", Kind::Copy, u"1,2,3|1,2,3"_s},
        {"trash", Kind::Move, u"|"_s}};
    for (const auto& [what, kind, done] : commands) {
        SCOPED_TRACE(what.constData());
        for (const QByteArray name : {"1", "2", "3"})
            put("a/" + name, name);
        const auto command = what == "trash"
                                 ? editor.moveToTrash({path("a/1"), path("a/2"), path("a/3")})
                                 : editor.transfer(plan(kind, {"a/1", "a/2", "a/3"}));
        EXPECT_EQ(state(), done);
        const auto undone = perform(command.inverse);
        EXPECT_EQ(state(), u"1,2,3|"_s);
        const auto redone = perform(undone.inverse);
        EXPECT_EQ(state(), done);
        std::stop_source stop;
        prompts.onProgress = [&stop](const fileactions::FileProgress& progress) {
            if (progress.number == 2) stop.request_stop();
        };
        const auto half = perform(redone.inverse, stop.get_token());
        prompts.onProgress = {};
        EXPECT_TRUE(half.isCancelled && !half.isStillToDo);
        const QString between = state();
        EXPECT_NE(between, done);
        const auto rest = perform(half.rest);
        EXPECT_EQ(state(), u"1,2,3|"_s);
        EXPECT_EQ(read("a/3"), "3");
        EXPECT_TRUE(rest.rest.isEmpty());
        perform(rest.inverse);
        EXPECT_EQ(state(), between);
        const auto again = perform(half.inverse);
        EXPECT_EQ(state(), done);
        perform(again.inverse);
        EXPECT_EQ(state(), between);
        for (const char* left : {"a/1", "a/2", "a/3", "b/1", "b/2", "b/3"})
            QFile::remove(at(left));
    }
}

TEST_F(FileEditTest, foldersOfGroupsGoWithWhatWasMadeInThemUnlessThereIsMore) {
    for (const Kind kind : {Kind::Copy, Kind::Move}) {
        put("a/1", "1");
        TransferPlan plan{.kind = kind, .steps = {}};
        for (const char* made : {"b/2019", "b/2019/may", "b/2020"})
            plan.addFolder(path(made));
        plan.addFile(path("a/1"), path("b/2019/may"));
        const auto copied = editor.transfer(plan);
        const QString after = state();
        EXPECT_EQ(after, kind == Kind::Copy ? u"1|2019,2020"_s : u"|2019,2020"_s);
        const auto undone = perform(copied.inverse);
        EXPECT_EQ(state(), u"1|"_s);
        const auto redone = perform(undone.inverse);
        EXPECT_EQ(state(), after);
        EXPECT_EQ(read("b/2019/may/1"), "1");
        put("b/2019/mine", "mine");
        perform(redone.inverse);
        EXPECT_EQ(state(), u"1|2019"_s);
        EXPECT_EQ(names(u"b/2019"_s), QStringList(u"mine"_s));
        ASSERT_TRUE(QDir(at("b/2019")).removeRecursively());
    }
}

TEST_F(FileEditTest, whatSomebodyChangedStaysAndWhatCouldNotBeTakenBackCanBeTriedAgain) {
    put("a/1", "1");
    put("a/2", "2");
    const auto copied = editor.transfer(plan(Kind::Copy, {"a/1", "a/2"}));
    put("b/2", "edited");
    perform(copied.inverse);
    EXPECT_EQ(state(), u"1,2|2"_s);
    EXPECT_TRUE(prompts.log.isEmpty());
    EXPECT_FALSE(perform(copied.inverse).isStillToDo);
    // As long as there is something.
    const auto moved = editor.transfer(plan(Kind::Move, {"a/1"}));
    put("a/1", "in its way");
    EXPECT_TRUE(perform(moved.inverse).isStillToDo);
    ASSERT_TRUE(QFile::remove(at("b/1")));
    EXPECT_FALSE(perform(moved.inverse).isStillToDo);
    const auto trashed = editor.moveToTrash({path("a/1")});
    put("a/1", "in its way");
    EXPECT_TRUE(perform(trashed.inverse).isStillToDo);
    ASSERT_TRUE(QDir(at("Trash/files")).removeRecursively());
    EXPECT_TRUE(perform(trashed.inverse).isStillToDo); // its disk may be away
    ASSERT_TRUE(QDir(folder.path()).mkpath(u"Trash/files"_s));
    EXPECT_FALSE(perform(trashed.inverse).isStillToDo);
}

TEST_F(FileTransferTest, whatIsSkippedIsNeverMade) {
    int makes = 0;
    TransferPlan plan;
    for (const QByteArray name : {"1", "2", "3"}) {
        put("a/" + name, "source");
        if (name != "3") put("b/" + name, "former");
        plan.addFile(
            {.source = path("a/" + name),
             .folder = path("b"),
             .name = name,
             .make = [&makes](const std::stop_token&, QByteArray& content) {
                 content = "made" + QByteArray::number(++makes);
                 return std::error_code();
             }});
    }
    prompts.answers = {{Answer::Skip, false}, {Answer::Replace, false}};
    EXPECT_EQ(run(plan).files.size(), 2U);
    EXPECT_EQ(read("b/1") + read("b/2") + read("b/3"), "formermade1made2");
    EXPECT_EQ(prompts.log, QStringList({u"conflict 1"_s, u"conflict 2"_s}));
}

TEST_F(FileTransferTest, whatIsNewIsMadeInItsTurnUnderAFreeNameAndCountedOnlyIfItIsSaid) {
    put("a/p.png", "former");
    TransferPlan plan;
    for (const QByteArray source : {"x", "y", "z", "bad"})
        plan.addFile(
            {.source = source,
             .folder = path("a"),
             .name = "p.png",
             .content = QByteArray(),
             .make =
                 support::making(source, source == "bad" ? std::errc::bad_message : std::errc()),
             .isCounted = source != "x"});
    QStringList told;
    prompts.onProgress = [&](const fileactions::FileProgress& progress) {
        told += QString::fromUtf8(progress.path) + QString::number(progress.number);
    };
    EXPECT_EQ(run(plan).files.size(), 3U);
    told.removeDuplicates();
    EXPECT_EQ(told.join(u' '), u"x1 y1 z2 bad3");
    EXPECT_EQ(
        read("a/p.png") + read("a/p copy.png") + read("a/p copy 1.png") + read("a/p copy 2.png"),
        "formerxyz");
    EXPECT_EQ(prompts.log.join(u','), u"failed bad"_s);
    // Others may read what is new, as far as the user lets them, but not where files were.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    struct stat status {};
    ASSERT_EQ(::stat(path("a/p copy.png").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0666U & ~mask);
    ASSERT_EQ(::stat(path("journal").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

} // namespace
