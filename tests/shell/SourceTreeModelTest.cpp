#include "shell/SourceTreeModel.h"

#include "library/LibrarySupport.h"
#include "library/PBSourceTreeDataSource.h"
#include "shell/PBSourceOutlineView.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace {

struct SourceTreeModelTest : LibraryTest {
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
    const QString local = u"On This Computer"_s;
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
    EXPECT_EQ(rowsBelow(model), local + u"(A) Removable Disks(Z)"_s);
    const auto item = tree.folderAliasItemWithAliasObject(*root);
    open(model, model.indexForItem(*item));
    EXPECT_EQ(rowsBelow(model, model.index(0, 0)), u"A(b d f)"_s);
    const auto d = item->childFolderWithFolderName(u"d"_s, false);
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
    EXPECT_EQ(rowsBelow(model, model.index(0, 0)), u"A(0 a c d(deep) e)"_s);
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(removed.count(), 2);
    EXPECT_TRUE(kept.isValid());
    EXPECT_EQ(model.itemForIndex(kept), d);
    model.reloadData();
    EXPECT_EQ(inserted.count() + removed.count(), 4) << "nothing changed, nothing told";

    tree.removeFolderAlias(*item);
    EXPECT_EQ(rowsBelow(model), u"Removable Disks(Z)"_s);
    EXPECT_FALSE(kept.isValid());
    EXPECT_FALSE(model.indexForItem(*d).isValid());
}

TEST_F(SourceTreeModelTest, rowsAreSelectableMarkedAndGreyAsTheirItemsSay) {
    SourceTreeModel model(tree);
    const auto root = addRoot(make(u"A"), PBAliasObject::Removable);
    tree.reloadCategoryItem();
    const QModelIndex category = model.index(0, 0);
    const QModelIndex row = model.index(0, 0, category);
    EXPECT_FALSE(category.flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_TRUE(row.flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_FALSE(row.data(SourceTreeModel::UnmountedRole).toBool());
    answer(*root, platform::Resolution::Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_TRUE(row.data(SourceTreeModel::UnmountedRole).toBool());
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
    const auto one = item->childFolderWithFolderName(u"one"_s, false);
    open(model, model.indexForItem(*one));
    view.setCurrentIndex(model.indexForItem(*one->childFolderWithFolderName(u"deep"_s, false)));
    ASSERT_EQ(view.selectionModel()->selectedIndexes().size(), 1);
    QDir(path(u"A/one")).removeRecursively();
    tree.refreshChilden({}, true);
    model.reloadData();
    EXPECT_EQ(rowsBelow(model, model.indexForItem(*item)), u"two"_s);
    EXPECT_TRUE(view.selectionModel()->selectedIndexes().isEmpty());
    EXPECT_FALSE(view.currentIndex().isValid());
}

} // namespace
