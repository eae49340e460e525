#include "app/OpenedPaths.h"
#include "app/RunningProgram.h"
#include "shell/FilterCommands.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct OpenFilesTest : testing::Test {
    QString makePicture(const QString& name) const {
        support::writePicture(folder.filePath(name));
        return folder.filePath(name);
    }
    PBImageBrowserView& browser() { return program.browser(); }
    QString selectedFolder() { return program.selectedFolder(program.window().sourceSidebar()); }
    QStringList selectedFiles() {
        return support::listed(browser().selection().selectedFileArray(true), [](const auto& item) {
            return item->fileName();
        });
    }
    QStringList roots() {
        return support::listed(
            controller->aliasManager().aliasArray(), [](const auto& root) { return root->path(); });
    }
    [[nodiscard]] bool showsAndSelects(qint64 count, const QStringList& names) {
        return support::spinUntil([&] {
            return browser().selection().itemCount(true) == count && selectedFiles() == names &&
                   !controller->isScanning() && !controller->openFiles();
        });
    }

    QTemporaryDir folder;
    RunningProgram program{folder.filePath(u"profile"_s)};
    std::optional<ApplicationController>& controller = program.controller;
};

TEST_F(OpenFilesTest, filesAreShownAmongTheirNeighboursInAFolderThatBecomesARoot) {
    const QString a = makePicture(u"p/a.png"_s);
    const QString b = makePicture(u"p/b.png"_s);
    makePicture(u"p/c.png"_s);
    const QString below = makePicture(u"p/q/d.png"_s);
    const QString p = folder.filePath(u"p"_s);
    controller->applicationOpenFiles({b});
    EXPECT_EQ(selectedFolder(), p);
    EXPECT_TRUE(showsAndSelects(4, {u"b.png"_s}));
    EXPECT_EQ(roots(), QStringList{p});

    // A filter would hide what is asked for.
    program.window().filterCommands().filter_Flag();
    program.window().filterCommands().search(u"nothing"_s);
    controller->applicationOpenFiles({a, b});
    EXPECT_EQ(controller->filter(), 0U);
    EXPECT_EQ(controller->searchString(), QString());
    EXPECT_TRUE(showsAndSelects(4, {u"a.png"_s, u"b.png"_s}));

    controller->applicationOpenFiles({below});
    EXPECT_TRUE(showsAndSelects(1, {u"d.png"_s}));
    EXPECT_EQ(selectedFolder(), p + u"/q"_s);
    EXPECT_EQ(roots(), QStringList{p});
    controller->applicationOpenFiles({p});
    EXPECT_TRUE(support::spinUntil([&] { return selectedFolder() == p; }));
}

TEST_F(OpenFilesTest, foldersFarApartBecomeRootsEachAndHiddenOnesTheirOwn) {
    makePicture(u"m/one/a.png"_s);
    makePicture(u"n/two/b.png"_s);
    const QString one = folder.filePath(u"m/one"_s);
    const QString two = folder.filePath(u"n/two"_s);
    controller->applicationOpenFiles({one, two});
    EXPECT_EQ(selectedFolder(), one);
    QStringList known = roots();
    known.sort();
    EXPECT_EQ(known, (QStringList{one, two}));

    const QString hidden = makePicture(u"m/one/.kept/h.png"_s);
    controller->applicationOpenFiles({hidden});
    EXPECT_EQ(selectedFolder(), one + u"/.kept"_s);
    EXPECT_TRUE(showsAndSelects(1, {u"h.png"_s}));

    controller->applicationOpenFiles({folder.filePath(u"gone.png"_s)});
    EXPECT_EQ(selectedFolder(), one + u"/.kept"_s);
}

TEST_F(OpenFilesTest, whatCannotBeOpenedIsToldInASentenceEach) {
    const QString picture = makePicture(u"p/a.png"_s);
    const QString text = folder.filePath(u"p/notes.txt"_s);
    const QString locked = folder.filePath(u"p/locked.png"_s);
    const QString pipe = folder.filePath(u"p/pipe.png"_s);
    support::writeFile(text, "x");
    support::writeFile(locked, "x");
    ASSERT_TRUE(QFile::setPermissions(locked, {}));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QStringList told;
    const auto openable = openablePaths(
        {picture + u'x', picture, text, locked, pipe, folder.path()},
        [&](const QString& sentence) { told.append(sentence); });
    const bool isRoot = ::geteuid() == 0; // who may read the locked one, too
    EXPECT_EQ(
        openable, isRoot ? (QStringList{picture, locked, folder.path()})
                         : (QStringList{picture, folder.path()}));
    EXPECT_EQ(told.size(), isRoot ? 3 : 4);
    EXPECT_TRUE(told.first().contains(picture + u'x'));
}

} // namespace
