#include "shell/files/FileCommands.h"

#include "platform/desktop/Pasteboard.h"
#include "shell/FilesFixture.h"
#include "shell/files/PhotographDrops.h"
#include "shell/files/PhotographMimeData.h"

#include <QClipboard>
#include <QDialog>
#include <QDropEvent>
#include <QGuiApplication>
#include <QPushButton>

#include <latch>

namespace {

using Answer = ScriptedQuestions::Answer;

/// Photographs a.jpg and b.jpg of the selected folder "one", both chosen, and a folder "two".
struct FileCommandsTest : FilesFixture {
    FileCommandsTest() : FilesFixture(std::chrono::milliseconds(0)) {
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data")));
        make(u"one");
        questions.folder = make(u"two");
        for (const QString& name : {u"a.jpg"_s, u"b.jpg"_s}) {
            support::writeFile(path(u"one/"_s + name), name.toUtf8());
            items.push_back(support::makeItem(name, items.empty() ? 1 : 2));
        }
        QObject::connect(
            &commands, &FileCommands::didChangeFiles, &commands,
            [this](const fileactions::FileEdit& edit, const QString& text) {
                inverse = edit;
                undoText = text;
            });
    }
    ~FileCommandsTest() override {
        QGuiApplication::clipboard()->clear();
        qunsetenv("XDG_DATA_HOME");
    }
    QString names(QStringView folder) const {
        return QDir(path(folder)).entryList(QDir::Files | QDir::Hidden).join(u' ');
    }
    /// What lies in "one" after it.
    QString after(const auto& command) {
        std::invoke(command, commands);
        wait();
        return names(u"one");
    }
    FileCommands commands{
        {.imageImporterManager = importers,
         .groupTreeDataSource = source,
         .services = files,
         .folderPaths = folders,
         .tasks = tasks,
         .questions = questions,
         .tagWithTagId = [](qint64) { return QString(); },
         .chosen = choice,
         .selectedFolder = [this] { return path(u"one"); }}};
    fileactions::FileEdit inverse;
    QString undoText;
};

TEST_F(FileCommandsTest, commandsChangeFilesTellHowToTakeThemBackAndBringTheDisplayInStep) {
    const auto copy = [](FileCommands& its) { its.doCopyMoveTo(false); };
    const auto move = [](FileCommands& its) { its.doCopyMoveTo(true); };
    bool isBack = false;
    const auto takeBack = [&](FileCommands& its) {
        its.perform(fileactions::FileEdit(inverse), [&](const fileactions::FileOutcome& back) {
            isBack = !back.inverse.isEmpty();
        });
    };
    EXPECT_EQ(after(copy), u"a.jpg b.jpg");
    EXPECT_EQ(names(u"two"), u"a.jpg b.jpg");
    EXPECT_EQ(undoText, u"Copy of 2 Photographs");
    EXPECT_EQ(after(move), u"a.jpg b.jpg");
    EXPECT_EQ(questions.log, QStringList({u"conflict"_s, u"conflict"_s}));
    questions.answer = Answer::Replace;
    EXPECT_EQ(after(move), QString());
    EXPECT_EQ(after(takeBack), u"a.jpg b.jpg");
    EXPECT_TRUE(isBack);
    publish(items);
    items.pop_back();
    EXPECT_EQ(after(&FileCommands::doDuplicate), u"a copy.jpg a.jpg b.jpg");
    EXPECT_EQ(undoText, u"Duplication of a Photograph");
    EXPECT_EQ(after(&FileCommands::deleteClicked), u"a copy.jpg b.jpg");
    ASSERT_EQ(removedChains.size(), 1U);
    EXPECT_EQ(removedChains[0].back()->imageFiles().size(), 1U);
    EXPECT_EQ(after(takeBack), u"a copy.jpg a.jpg b.jpg");
    questions.deletes = false;
    EXPECT_EQ(after(&FileCommands::deleteForGood), u"a copy.jpg a.jpg b.jpg");
    EXPECT_EQ(questions.log.last(), u"delete 1?");
    // A scan may choose another one while the user thinks.
    questions.deletes = true;
    questions.whileAsked = [this] { items = {support::makeItem(u"b.jpg"_s, 2)}; };
    EXPECT_EQ(after(&FileCommands::deleteForGood), u"a copy.jpg b.jpg");
}

TEST_F(FileCommandsTest, thePasteboardTakesFilesInBothWaysAndPicturesWithoutAFile) {
    QClipboard& pasteboard = *QGuiApplication::clipboard();
    commands.copy(false);
    EXPECT_EQ(commands.photographsOf(*pasteboard.mimeData()).size(), 2U);
    const QString x = path(u"two/x.jpg");
    support::writeFile(x, "x");
    auto* cut = new QMimeData;
    platform::setFilesOfMimeData(*cut, {.paths = {QFile::encodeName(x)}, .isCut = true});
    pasteboard.setMimeData(cut);
    // What could not be moved is still cut.
    support::writeFile(path(u"one/x.jpg"), "in its way");
    EXPECT_EQ(after(&FileCommands::doPaste), u"a.jpg b.jpg x.jpg");
    EXPECT_EQ(questions.log, QStringList(u"conflict"_s));
    ASSERT_TRUE(QFile::remove(path(u"one/x.jpg")));
    EXPECT_EQ(after(&FileCommands::doPaste), u"a.jpg b.jpg x.jpg");
    const QMimeData* left = pasteboard.mimeData();
    EXPECT_TRUE(!left || platform::filesOfMimeData(*left).paths.empty());
    EXPECT_EQ(names(u"two"), QString());
    pasteboard.setImage(QImage(4, 3, QImage::Format_RGB32));
    EXPECT_EQ(after(&FileCommands::doPaste), u"a.jpg b.jpg Pasted Picture.png x.jpg");
    EXPECT_EQ(
        after(&FileCommands::doPaste),
        u"a.jpg b.jpg Pasted Picture copy.png Pasted Picture.png x.jpg");
    EXPECT_EQ(QImage(path(u"one/Pasted Picture.png")).size(), QSize(4, 3));
    EXPECT_EQ(undoText, u"Paste of a Photograph");
}

TEST_F(FileCommandsTest, thePictureOfACopyIsMadeBehindTheWindowAndEndsWithIt) {
    items.resize(1);
    items.front()->setRotateAngle(90);
    ASSERT_TRUE(QImage(40, 30, QImage::Format_RGB32).save(path(u"one/a.jpg")));
    const QClipboard& pasteboard = *QGuiApplication::clipboard();
    const auto picture = [&] {
        return QImage::fromData(pasteboard.mimeData()->data(u"image/png"_s));
    };
    commands.copy(false);
    EXPECT_TRUE(pasteboard.mimeData()->hasFormat(u"image/png"_s));
    EXPECT_TRUE(support::spinUntil([&] { return picture().size() == QSize(30, 40); }));
    commands.copy(true);
    EXPECT_FALSE(pasteboard.mimeData()->hasFormat(u"image/png"_s));

    platform::OperationQueue queue(u"slow"_s);
    auto data = std::make_unique<PhotographMimeData>();
    data->offerPicture(queue, [](const std::stop_token& stop) {
        while (!stop.stop_requested())
            std::this_thread::yield();
        return QByteArray("late");
    });
    EXPECT_TRUE(data->data(u"image/png"_s).isEmpty()) << "nobody waits for long";
    data.reset();
    queue.waitUntilAllOperationsAreFinished();
}

TEST_F(FileCommandsTest, aCancelledCommandClosesItsSheetAtOnceAndLeavesNothingHalf) {
    window.show();
    QFile large(path(u"one/a.jpg"));
    ASSERT_TRUE(large.open(QIODevice::ReadWrite) && large.resize(qint64(1) << 30)); // a hole
    commands.doCopyMoveTo(false);
    const auto sheet = [this]() -> QDialog* {
        auto* found = window.findChild<QDialog*>(u"PBFileProgressWindowController"_s);
        return found && found->isVisible() ? found : nullptr;
    };
    const auto cancel = [&] {
        ASSERT_TRUE(support::spinUntil([&] { return sheet() != nullptr; }));
        sheet()->findChild<QPushButton*>()->click();
        EXPECT_EQ(sheet(), nullptr);
    };
    cancel();
    wait();
    EXPECT_EQ(names(u"two"), QString());
    // The window doesn't wait for what a disk holds up.
    std::latch disk{1};
    tasks.start(
        {.counterKey = u"ItemCountInfoWithUndo"_s,
         .work =
             [&disk](const fileactions::FileEditor&) {
                 disk.wait();
                 return fileactions::FileOutcome();
             },
         .finished = [](const fileactions::FileOutcome&) {}});
    cancel();
    EXPECT_FALSE(tasks.isIdle());
    disk.count_down();
    wait();
    EXPECT_TRUE(questions.log.isEmpty() && undoText.isEmpty());
}

TEST_F(FileCommandsTest, whatADropDoesFollowsKeysDisksAndTheFolderUnderThePointer) {
    const auto both = Qt::CopyAction | Qt::MoveAction;
    // From another program: what is dragged within this one has a source, which no test can make.
    const struct {
        Qt::KeyboardModifiers modifiers;
        Qt::DropActions possible;
        bool isOneDisk;
        int y; ///< of the pointer: 0 is no folder, 10 the photographs' own, 20 another
        Qt::DropAction expected;
    } rows[] = {
        {Qt::NoModifier, both, true, 20, Qt::CopyAction},
        {Qt::ShiftModifier, both, false, 20, Qt::MoveAction},
        {Qt::ShiftModifier, Qt::CopyAction, true, 20, Qt::CopyAction},
        {Qt::ShiftModifier | Qt::ControlModifier, both, true, 20, Qt::CopyAction},
        {Qt::ControlModifier, Qt::MoveAction, true, 20, Qt::IgnoreAction},
        {Qt::ShiftModifier, both, true, 10, Qt::IgnoreAction},
        {Qt::NoModifier, both, true, 10, Qt::CopyAction},
        {Qt::NoModifier, both, true, 0, Qt::IgnoreAction}};
    for (const auto& row : rows) {
        QWidget rowsWidget;
        QStringList taken;
        bool isMarked = false;
        const QString folder = row.y == 0 ? QString() : row.y == 10 ? u"/own"_s : u"/another"_s;
        new PhotographDrops(
            rowsWidget,
            {.folderAt = [&](const QPoint& at) { return at.y() == row.y ? folder : u"/wrong"_s; },
             .mark = [&](const std::optional<QPoint>& point) { isMarked = point.has_value(); },
             .photographsOf =
                 [](const QMimeData&) { return std::vector<QByteArray>{"/own/a.jpg"}; },
             .areOnOneDisk = [&row](const auto&, const auto&) { return row.isOneDisk; },
             .transfer = [&](const QString& into, const auto&,
                             bool move) { taken += into + (move ? u" moved"_s : u" copied"_s); }});
        const QMimeData data;
        const QPoint point(5, row.y);
        const auto accepts = [&](QDropEvent&& event) {
            QCoreApplication::sendEvent(&rowsWidget, &event);
            return event.isAccepted();
        };
        EXPECT_TRUE(
            accepts(QDragEnterEvent(point, row.possible, &data, Qt::LeftButton, row.modifiers)));
        const bool isTaken = row.expected != Qt::IgnoreAction;
        EXPECT_EQ(
            accepts(QDragMoveEvent(point, row.possible, &data, Qt::LeftButton, row.modifiers)),
            isTaken);
        EXPECT_EQ(isMarked, isTaken);
        accepts(QDropEvent(point, row.possible, &data, Qt::LeftButton, row.modifiers));
        EXPECT_FALSE(isMarked);
        const QString deed = row.expected == Qt::MoveAction ? u" moved"_s : u" copied"_s;
        EXPECT_EQ(taken, isTaken ? QStringList(folder + deed) : QStringList());
    }
}

} // namespace
