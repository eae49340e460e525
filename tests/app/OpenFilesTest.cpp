#include "app/ApplicationController.h"
#include "app/OpenedPaths.h"
#include "browser/PBImageBrowserView.h"
#include "platform/Places.h"
#include "shell/FilterCommands.h"
#include "shell/PBMainWindowController.h"
#include "shell/SourceSidebar.h"

#include "support/Support.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QMainWindow>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class OpenFilesTest : public testing::Test {
protected:
    OpenFilesTest() {
        platform::Places::setProfile(folder.filePath(QStringLiteral("profile")));
        controller.emplace();
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
    }
    ~OpenFilesTest() override {
        controller.reset();
        platform::Places::setProfile({});
    }

    QString makePicture(const QString& name) const {
        const QString path = folder.filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        EXPECT_TRUE(image.save(path));
        return path;
    }
    PBImageBrowserView& browser() {
        return *controller->mainWindowController().window().findChild<PBImageBrowserView*>();
    }
    QString selectedFolder() {
        const auto selected =
            controller->mainWindowController().sourceSidebar().tree().selectedFolder();
        return selected ? selected->folderPath() : QString();
    }
    QStringList selectedFiles() {
        QStringList names;
        for (const auto& item : browser().selection().selectedFileArray(true))
            names.append(item->fileName());
        return names;
    }
    QStringList roots() {
        QStringList paths;
        for (const auto& root : controller->aliasManager().aliasArray())
            paths.append(root->path());
        return paths;
    }
    [[nodiscard]] bool showsAndSelects(qint64 count, const QStringList& names) {
        return support::spinUntil([&] {
            return browser().selection().itemCount(true) == count && selectedFiles() == names &&
                   !controller->isScanning() && !controller->openFiles();
        });
    }

    QTemporaryDir folder;
    std::optional<ApplicationController> controller;
};

TEST_F(OpenFilesTest, filesAreShownAmongTheirNeighboursInAFolderThatBecomesARoot) {
    const QString a = makePicture(QStringLiteral("p/a.png"));
    const QString b = makePicture(QStringLiteral("p/b.png"));
    makePicture(QStringLiteral("p/c.png"));
    const QString below = makePicture(QStringLiteral("p/q/d.png"));
    const QString p = folder.filePath(QStringLiteral("p"));
    controller->applicationOpenFiles({b});
    EXPECT_EQ(selectedFolder(), p);
    EXPECT_TRUE(showsAndSelects(4, {QStringLiteral("b.png")}));
    EXPECT_EQ(roots(), QStringList{p});

    // A filter would hide what is asked for.
    controller->mainWindowController().filterCommands().filter_Flag();
    controller->mainWindowController().filterCommands().search(QStringLiteral("nothing"));
    controller->applicationOpenFiles({a, b});
    EXPECT_EQ(controller->filter(), 0U);
    EXPECT_EQ(controller->searchString(), QString());
    EXPECT_TRUE(showsAndSelects(4, {QStringLiteral("a.png"), QStringLiteral("b.png")}));

    controller->applicationOpenFiles({below});
    EXPECT_TRUE(showsAndSelects(1, {QStringLiteral("d.png")}));
    EXPECT_EQ(selectedFolder(), p + QStringLiteral("/q"));
    EXPECT_EQ(roots(), QStringList{p});
    controller->applicationOpenFiles({p});
    EXPECT_TRUE(support::spinUntil([&] { return selectedFolder() == p; }));
}

TEST_F(OpenFilesTest, foldersFarApartBecomeRootsEachAndHiddenOnesTheirOwn) {
    makePicture(QStringLiteral("m/one/a.png"));
    makePicture(QStringLiteral("n/two/b.png"));
    const QString one = folder.filePath(QStringLiteral("m/one"));
    const QString two = folder.filePath(QStringLiteral("n/two"));
    controller->applicationOpenFiles({one, two});
    EXPECT_EQ(selectedFolder(), one);
    QStringList known = roots();
    known.sort();
    EXPECT_EQ(known, (QStringList{one, two}));

    const QString hidden = makePicture(QStringLiteral("m/one/.kept/h.png"));
    controller->applicationOpenFiles({hidden});
    EXPECT_EQ(selectedFolder(), one + QStringLiteral("/.kept"));
    EXPECT_TRUE(showsAndSelects(1, {QStringLiteral("h.png")}));

    controller->applicationOpenFiles({folder.filePath(QStringLiteral("gone.png"))});
    EXPECT_EQ(selectedFolder(), one + QStringLiteral("/.kept"));
}

TEST_F(OpenFilesTest, whatCannotBeOpenedIsToldInASentenceEach) {
    const QString picture = makePicture(QStringLiteral("p/a.png"));
    const QString text = folder.filePath(QStringLiteral("p/notes.txt"));
    const QString locked = folder.filePath(QStringLiteral("p/locked.png"));
    const QString pipe = folder.filePath(QStringLiteral("p/pipe.png"));
    support::writeFile(text, "x");
    support::writeFile(locked, "x");
    ASSERT_TRUE(QFile::setPermissions(locked, {}));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QStringList told;
    const auto openable = openablePaths(
        {picture + u'x', picture, text, locked, pipe, folder.path()},
        [&](const QString& sentence) { told.append(sentence); });
    if (::geteuid() == 0) {
        EXPECT_EQ(openable, (QStringList{picture, locked, folder.path()}));
        EXPECT_EQ(told.size(), 3);
    } else {
        EXPECT_EQ(openable, (QStringList{picture, folder.path()}));
        EXPECT_EQ(told.size(), 4);
    }
    EXPECT_TRUE(told.first().contains(picture + u'x'));
}

} // namespace
