#include "app/OpenedPaths.h"
#include "app/RunningProgram.h"
#include "shell/panes/NoticeBar.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct OpenFilesTest : RunningProgramTest {
    [[nodiscard]] bool showsAndSelects(qint64 count, const QString& name) {
        return support::spinUntil([&] {
            const auto files = selection().selectedFileArray(FoldedLeaves::Included);
            return selection().itemCount(FoldedLeaves::Included) == count && files.size() == 1 &&
                   files[0]->fileName() == name && !controller->isScanning() &&
                   !controller->openFiles();
        });
    }
};

TEST_F(OpenFilesTest, filesAreShownAmongTheirNeighboursInAFolderThatBecomesARoot) {
    for (const QString& name : {u"p/a.png"_s, u"p/b.png"_s, u"n/two/c.png"_s})
        makePicture(name);
    const QString below = makePicture(u"p/q/d.png"_s);
    const QString hidden = makePicture(u"p/.kept/h.png"_s);
    const QString p = path(u"p"_s);
    controller->applicationOpenFiles({path(u"p/b.png"_s)});
    EXPECT_EQ(selectedFolder(), p);
    EXPECT_TRUE(showsAndSelects(3, u"b.png"_s));
    controller->applicationOpenFiles({below});
    EXPECT_TRUE(showsAndSelects(1, u"d.png"_s));
    EXPECT_EQ(roots(), QStringList{p});
    controller->applicationOpenFiles({p});
    EXPECT_TRUE(selects(p));

    // Far apart each becomes a root, and what the sidebar hides its own.
    controller->applicationOpenFiles({make(u"m/one"_s), path(u"n/two"_s)});
    EXPECT_EQ(selectedFolder(), path(u"m/one"_s));
    EXPECT_EQ(roots(), (QStringList{p, path(u"n/two"_s), path(u"m/one"_s)}));
    controller->applicationOpenFiles({hidden});
    EXPECT_TRUE(showsAndSelects(1, u"h.png"_s));
    controller->applicationOpenFiles({path(u"gone.png"_s)});
    EXPECT_EQ(selectedFolder(), p + u"/.kept"_s);
}

TEST_F(OpenFilesTest, whatCannotBeOpenedIsToldInASentenceEach) {
    const QString picture = makePicture(u"p/a.png"_s);
    const QString text = path(u"p/notes.txt"_s);
    const QString locked = path(u"p/locked.png"_s);
    const QString pipe = path(u"p/pipe.png"_s);
    for (const QString& file : {text, locked})
        support::writeFile(file, "x");
    ASSERT_TRUE(QFile::setPermissions(locked, {}));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QStringList told;
    QStringList openable = openablePaths(
        {picture + u'x', picture, text, locked, pipe, folder.path()},
        [&](const QString& sentence) { told.append(sentence); });
    if (::geteuid() == 0) // who may read the locked one, too
        EXPECT_TRUE(openable.removeOne(locked));
    else
        EXPECT_TRUE(told.takeAt(2).contains(locked));
    EXPECT_EQ(openable, (QStringList{picture, folder.path()}));
    EXPECT_EQ(told.size(), 3);
    EXPECT_TRUE(told.first().contains(picture + u'x'));
    NoticeBar& notice = controller->mainWindowController().noticeBar();
    controller->tellUnopened(told);
    EXPECT_FALSE(notice.text().isEmpty());
    controller->tellUnopened({});
    EXPECT_TRUE(notice.text().isEmpty()) << "the next request is another";
}

} // namespace
