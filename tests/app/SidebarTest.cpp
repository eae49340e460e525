#include "app/RunningProgram.h"
#include "library/PBPathHistory.h"
#include "shell/FolderPrompts.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

/// Notes what the user would be told, and chooses what the test says.
struct NotedPrompts final : FolderPrompts {
    void chooseFolder(const QString&, std::function<void(const QString&)> chosen) override {
        chosen(choice);
    }
    void alertFolderAliasIsAlreadyExist(const QString& name) override { told.append(u'=' + name); }
    void alertCantMount(const QString& name, const QString&) override { told.append(u'!' + name); }
    void alertCantAddFolder(const QString& path) override { told.append(u'-' + path); }

    QString choice;
    QStringList told;
};

/// One run of the program on a profile, with a sidebar of the test's own.
struct Session : RunningProgram {
    using RunningProgram::RunningProgram;
    ~Session() { sidebar.reset(); }

    [[nodiscard]] QString selected() { return selectedFolder(*sidebar); }
    [[nodiscard]] QStringList roots() {
        QStringList shown;
        for (const auto& category : sidebar->tree().dataSource().shownCategories())
            for (const auto& item : category->folderAliasItems())
                shown.append(item->folderPath());
        return shown;
    }
    void select(const QString& root, const QString& relativePath = {}) {
        const auto alias = controller->aliasManager().findAliasObjectByPath(root);
        const auto item =
            sidebar->tree().dataSource().folderItemWithAliasObject(*alias, relativePath, true);
        ASSERT_TRUE(item);
        sidebar->tree().select(*item);
    }

    QMainWindow window;
    NotedPrompts prompts;
    std::optional<SourceSidebar> sidebar{std::in_place, *controller, window, prompts, [] {}};
};

/// Also while a list of its folders is being read.
void unplug(const QByteArray& disk) {
    ASSERT_EQ(::umount2(disk.constData(), MNT_DETACH), 0);
}

struct SidebarTest : testing::Test {
    QString make(const QString& below) const {
        QDir().mkpath(folder.filePath(below));
        return folder.filePath(below);
    }
    QTemporaryDir folder;
    const QString profile = folder.filePath(u"profile"_s);
    const QString a = make(u"photos/A"_s);
    const QString b = make(u"photos/B"_s);
};

TEST_F(SidebarTest, rootsAndSelectionSurviveRestartsRenamesAndDeletion) {
    make(u"photos/A/x/y"_s);
    std::int64_t id = 0;
    {
        Session session(profile);
        EXPECT_TRUE(session.sidebar->commands().addOrSelectFolder(b));
        EXPECT_TRUE(session.sidebar->commands().addOrSelectFolder(a + u'/'));
        EXPECT_EQ(session.selected(), a);
        session.select(a, u"x/y"_s);
        EXPECT_EQ(session.window.windowTitle(), u"y"_s);
        id = session.controller->aliasManager().findAliasObjectByPath(a)->aliasId();
    }
    {
        Session session(profile);
        EXPECT_EQ(session.roots(), (QStringList{b, a}));
        session.sidebar->selection().doSelectLastFolder();
        // A busy disk brings the folders later.
        const QString last = a + u"/x/y"_s;
        EXPECT_TRUE(support::spinUntil([&] { return session.selected() == last; }));
    }
    ASSERT_TRUE(QFile::rename(a, a + u'2'));
    {
        Session session(profile);
        EXPECT_EQ(session.roots(), (QStringList{b, a + u'2'}));
        EXPECT_EQ(
            session.controller->aliasManager().findAliasObjectById(id)->path(), QString(a + u'2'));
        session.sidebar->selection().doSelectLastFolder();
        EXPECT_EQ(session.selected(), QString()) << "the stored place lies in no root any more";
    }
    QDir(a + u'2').removeRecursively();
    Session session(profile);
    EXPECT_EQ(session.roots(), QStringList{b});
}

TEST_F(SidebarTest, addingTwiceIsToldAndAFolderThatIsNoneToo) {
    Session session(profile);
    session.prompts.choice = a;
    session.sidebar->commands().addFolderAlias();
    ASSERT_TRUE(support::spinUntil([&] { return session.selected() == a; }));
    session.sidebar->addFolders({a, folder.filePath(u"none"_s)});
    ASSERT_TRUE(support::spinUntil([&] { return session.prompts.told.size() == 2; }));
    EXPECT_EQ(session.prompts.told, (QStringList{u'-' + folder.filePath(u"none"_s), u"=A"_s}));
    EXPECT_EQ(session.roots(), QStringList{a});
    session.prompts.choice.clear();
    session.sidebar->commands().addFolderAlias();
    EXPECT_TRUE(session.sidebar->commands().addOrSelectFolder(a));
    EXPECT_FALSE(session.sidebar->commands().addOrSelectFolder(u'/' + QString(4000, u'x')));
    EXPECT_EQ(session.roots(), QStringList{a});
}

TEST_F(SidebarTest, removedRootInsideAnotherComesBackAsItWas) {
    Session session(profile);
    const QString inner = make(u"photos/A/inner"_s);
    for (const QString& root : {a, inner, b})
        session.sidebar->commands().addOrSelectFolder(root);
    PBAliasManager& manager = session.controller->aliasManager();
    const auto id = manager.findAliasObjectByPath(inner)->aliasId();
    session.select(inner);
    EXPECT_TRUE(session.sidebar->commands().canRemoveFolderAlias());
    session.sidebar->commands().removeFolderAlias();
    EXPECT_EQ(session.roots(), (QStringList{a, b}));
    EXPECT_EQ(session.selected(), QString());
    EXPECT_TRUE(manager.findAliasObjectByPath(inner)->isZombie());
    session.sidebar->commands().doAddFolder(inner);
    EXPECT_EQ(manager.findAliasObjectByPath(inner)->aliasId(), id);
    EXPECT_EQ(session.selected(), inner);
    session.select(b);
    session.sidebar->commands().removeFolderAlias();
    EXPECT_FALSE(manager.findAliasObjectByPath(b)) << "nothing needs it, so it is forgotten";
}

TEST_F(SidebarTest, backPassesOverFoldersThatAreGone) {
    Session session(profile);
    make(u"photos/A/x"_s);
    session.controller->setFilter(3);
    session.controller->setSearchString(u"x"_s);
    session.sidebar->commands().addOrSelectFolder(a);
    EXPECT_EQ(session.controller->filter(), 0U) << "it lasts until the next selection";
    EXPECT_EQ(session.controller->searchString(), QString());
    session.sidebar->commands().addOrSelectFolder(b);
    PBPathHistory& history = session.controller->pathHistory();
    session.select(a, u"x"_s);
    session.select(b);
    session.sidebar->selection().back();
    EXPECT_EQ(session.selected(), QString(a + u"/x"_s));
    EXPECT_TRUE(history.canForward());
    session.sidebar->selection().forward();
    EXPECT_EQ(session.selected(), b);
    QDir().rmdir(a + u"/x"_s);
    session.sidebar->tree().dataSource().refreshChilden({}, true);
    session.sidebar->tree().dataSource().reloadData();
    session.sidebar->selection().back();
    EXPECT_EQ(session.selected(), b) << "the entry before the vanished one";
    session.sidebar->selection().back();
    EXPECT_EQ(session.selected(), a);
    EXPECT_FALSE(history.canBack());
    session.select(b);
    EXPECT_FALSE(history.canForward()) << "what lay ahead is forgotten";
}

TEST_F(SidebarTest, unpluggedDiskGreysItsRootAndComesBackWithIt) {
    const QByteArray disk = QFile::encodeName(make(u"disk"_s));
    if (::mount("none", disk.constData(), "tmpfs", 0, nullptr) != 0)
        GTEST_SKIP() << "not allowed to mount";
    // Keeps the file system alive while it is mounted nowhere, as a disk in a drawer is.
    const int drawer = ::open_tree(AT_FDCWD, disk.constData(), OPEN_TREE_CLONE | O_CLOEXEC);
    ASSERT_GE(drawer, 0);
    const QString root = make(u"disk/photos"_s);
    make(u"disk/photos/sub/deep"_s);
    {
        Session session(profile);
        // The program's own sidebar is the one that hears of volumes.
        SourceSidebar& sidebar = session.controller->mainWindowController().sourceSidebar();
        SourceTreeController& tree = sidebar.tree();
        EXPECT_TRUE(sidebar.commands().addOrSelectFolder(root));
        const auto item = std::dynamic_pointer_cast<PBFolderAliasItem>(tree.selectedItem());
        ASSERT_TRUE(item);
        const auto sub = [&] { return item->childFolderWithFolderName(u"sub"_s, true); };
        ASSERT_TRUE(support::spinUntil([&] { return sub() != nullptr; }));
        const auto deep = [&] {
            return sub() ? sub()->childFolderWithFolderName(u"deep"_s, true) : nullptr;
        };
        ASSERT_TRUE(support::spinUntil([&] { return deep() != nullptr; }));
        tree.select(*deep());
        EXPECT_EQ(tree.selectedItem(), deep());

        unplug(disk);
        EXPECT_TRUE(support::spinUntil([&] { return !item->aliasObject()->isMounted(); }));
        EXPECT_FALSE(tree.selectedItem());
        EXPECT_EQ(item->displayName(), u"photos"_s);
        EXPECT_TRUE(item->children().empty());

        ASSERT_EQ(::move_mount(drawer, "", AT_FDCWD, disk.constData(), MOVE_MOUNT_F_EMPTY_PATH), 0);
        EXPECT_TRUE(support::spinUntil([&] { return item->aliasObject()->isMounted(); }));
        ASSERT_TRUE(support::spinUntil([&] { return deep() != nullptr; }));
        EXPECT_FALSE(tree.selectedItem()) << "it comes back, but is not selected by itself";
        EXPECT_TRUE(support::spinUntil([&] { return tree.isExpanded(*sub()); }));
        unplug(disk);
    }
    ::close(drawer);
    Session session(profile);
    const auto roots = session.controller->aliasManager().aliasArray();
    ASSERT_EQ(roots.size(), 1u) << "kept, though out of reach";
    EXPECT_FALSE(roots[0]->isMounted());
}

} // namespace
