#include "shell/SourceTreeModel.h"

#include "library/LibrarySupport.h"
#include "library/PBSourceTreeDataSource.h"
#include "shell/PBSourceOutlineView.h"
#include "support/Support.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QSignalSpy>

namespace {

class SourceTreeModelTest : public LibraryTest {
protected:
    /// The rows below the index as "name(children…)"; what was never opened is not opened.
    QString rowsBelow(const SourceTreeModel& model, const QModelIndex& index = {}) {
        QStringList rows;
        for (int row = 0; row < model.rowCount(index); ++row) {
            const QModelIndex child = model.index(row, 0, index);
            QString text = child.data().toString();
            if (model.rowCount(child) > 0) text += u'(' + rowsBelow(model, child) + u')';
            rows.append(text);
        }
        return rows.join(u' ');
    }
    static void open(SourceTreeModel& model, const QModelIndex& index) {
        if (model.canFetchMore(index)) model.fetchMore(index);
    }

    StoppableLister lister;
    PBSourceTreeDataSource tree{manager, lister};
    const QString local = QStringLiteral("On This Computer");
};

TEST_F(SourceTreeModelTest, rowsFollowTheItemsAndTellOnlyTheDifferences) {
    make(u"A/b");
    make(u"A/d/deep");
    make(u"A/f");
    SourceTreeModel model(tree);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    tester.setUseFetchMore(false); // it would open every folder
    const auto root = addRoot(path(u"A"));
    const auto other = addRoot(make(u"Z"), PBAliasObject::Removable);
    tree.reloadCategoryItem();
    EXPECT_EQ(rowsBelow(model), local + QStringLiteral("(A) Removable Disks(Z)"));
    const auto item = tree.folderAliasItemWithAliasObject(*root);
    open(model, model.indexForItem(*item));
    EXPECT_EQ(rowsBelow(model, model.index(0, 0)), QStringLiteral("A(b d f)"));
    const auto d = item->childFolderWithFolderName(QStringLiteral("d"), false);
    open(model, model.indexForItem(*d));
    const QPersistentModelIndex kept = model.indexForItem(*d);

    QDir().rmdir(path(u"A/b"));
    make(u"A/a");
    make(u"A/c");
    make(u"A/e");
    QFile::rename(path(u"A/f"), path(u"A/0"));
    tree.refreshChilden({}, true);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    model.reloadData();
    EXPECT_EQ(rowsBelow(model, model.index(0, 0)), QStringLiteral("A(0 a c d(deep) e)"));
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(removed.count(), 2);
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(model.itemForIndex(kept), d);
    model.reloadData();
    EXPECT_EQ(inserted.count() + removed.count(), 4) << "nothing changed, nothing told";

    tree.removeFolderAlias(*item);
    EXPECT_EQ(rowsBelow(model), QStringLiteral("Removable Disks(Z)"));
    EXPECT_FALSE(kept.isValid());
    EXPECT_FALSE(model.indexForItem(*d).isValid());
}

TEST_F(SourceTreeModelTest, slowFolderFillsWhenItAnswers) {
    make(u"A/one");
    make(u"A/two");
    SourceTreeModel model(tree);
    const auto root = addRoot(path(u"A"));
    tree.reloadCategoryItem();
    lister.isSlow = true;
    const QModelIndex index = model.indexForItem(*tree.folderAliasItemWithAliasObject(*root));
    open(model, index);
    EXPECT_EQ(model.rowCount(index), 0);
    EXPECT_TRUE(model.hasChildren(index));
    lister.letGo();
    EXPECT_EQ(rowsBelow(model, index), QStringLiteral("one two"));
}

TEST_F(SourceTreeModelTest, rowsAreSelectableMarkedAndGreyAsTheirItemsSay) {
    SourceTreeModel model(tree);
    const auto root = addRoot(make(u"A"), PBAliasObject::Removable);
    tree.reloadCategoryItem();
    const QModelIndex category = model.index(0, 0);
    const QModelIndex row = model.index(0, 0, category);
    EXPECT_FALSE(category.flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_TRUE(category.data(SourceTreeModel::GroupRole).toBool());
    EXPECT_TRUE(row.flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_FALSE(row.flags().testFlag(Qt::ItemIsEditable));
    EXPECT_EQ(row.data(Qt::ToolTipRole).toString(), path(u"A"));
    EXPECT_EQ(row.data(SourceTreeModel::HeightRole).toInt(), 32);
    EXPECT_FALSE(row.data(SourceTreeModel::UnmountedRole).toBool());
    answer(*root, platform::Resolution::Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_TRUE(row.data(SourceTreeModel::UnmountedRole).toBool());
    EXPECT_FALSE(row.data(SourceTreeModel::ContextRole).toBool());
    tree.setContextMenuItem(model.itemForIndex(row));
    EXPECT_TRUE(row.data(SourceTreeModel::ContextRole).toBool());
}

TEST_F(SourceTreeModelTest, selectionGoesWithItsRowInsteadOfToANeighbour) {
    make(u"A/one/deep");
    make(u"A/two");
    SourceTreeModel model(tree);
    const auto root = addRoot(path(u"A"));
    tree.reloadCategoryItem();
    PBSourceOutlineView view;
    view.setModel(&model);
    const auto item = tree.folderAliasItemWithAliasObject(*root);
    open(model, model.indexForItem(*item));
    view.expandAll();
    const auto one = item->childFolderWithFolderName(QStringLiteral("one"), false);
    open(model, model.indexForItem(*one));
    view.setCurrentIndex(
        model.indexForItem(*one->childFolderWithFolderName(QStringLiteral("deep"), false)));
    ASSERT_EQ(view.selectionModel()->selectedIndexes().size(), 1);
    QDir(path(u"A/one")).removeRecursively();
    tree.refreshChilden({}, true);
    model.reloadData();
    EXPECT_EQ(rowsBelow(model, model.indexForItem(*item)), QStringLiteral("two"));
    EXPECT_TRUE(view.selectionModel()->selectedIndexes().isEmpty());
    EXPECT_FALSE(view.currentIndex().isValid());
}

} // namespace
