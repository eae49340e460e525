#include "shell/sidebar/SourceTreeModel.h"

#include "library/LibrarySupport.h"
#include "library/PBSourceTreeDataSource.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace {

struct SourceTreeModelTest : LibraryTest {
    /// The rows below the index as "name(children…)"; what was never opened is not opened.
    QString rowsBelow(const QModelIndex& index = {}) {
        QStringList rows;
        for (int row = 0; row < model.rowCount(index); ++row) {
            const QModelIndex child = model.index(row, 0, index);
            QString text = child.data().toString();
            if (model.rowCount(child) > 0) text += u'(' + rowsBelow(child) + u')';
            rows.append(text);
        }
        return rows.join(u' ');
    }
    void open(const PBFolderItem& item) { model.fetchMore(model.indexForItem(item)); }

    StoppableLister lister;
    PBSourceTreeDataSource tree{manager, lister};
    SourceTreeModel model{tree};
};

TEST_F(SourceTreeModelTest, rowsFollowTheItemsAndTellOnlyTheDifferences) {
    for (const char16_t* folder : {u"A/b", u"A/d/deep", u"A/f"})
        make(folder);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    tester.setUseFetchMore(false); // it would open every folder
    const auto root = addRoot(path(u"A"));
    const auto other = addRoot(make(u"Z\u202e"), PBAliasObject::Removable);
    tree.reloadCategoryItem();
    EXPECT_EQ(rowsBelow(), u"On This Computer(A) Removable Disks(Z\u202e)"_s);
    const QModelIndex disks = model.index(1, 0);
    const QPersistentModelIndex disk = model.index(0, 0, disks);
    EXPECT_TRUE(disk.flags().testFlag(Qt::ItemIsSelectable));
    EXPECT_FALSE(disks.flags().testFlag(Qt::ItemIsSelectable));
    for (const int role : {+Qt::ToolTipRole, +SourceTreeModel::DescriptionRole})
        EXPECT_TRUE(disk.data(role).toString().endsWith(u"/Z\ufffd")) << role;
    for (const bool isAway : {false, true}) {
        if (isAway) makeAbsent(*other);
        EXPECT_EQ(disk.data(SourceTreeModel::UnmountedRole).toBool(), isAway);
    }
    const auto item = tree.folderAliasItemWithAliasObject(*root);
    open(*item);
    EXPECT_EQ(rowsBelow(model.index(0, 0)), u"A(b d f)"_s);
    const auto d = item->childFolderWithFolderName(u"d"_s, false);
    open(*d);
    const QPersistentModelIndex kept = model.indexForItem(*d);

    QDir().rmdir(path(u"A/b"));
    for (const char16_t* folder : {u"A/a", u"A/c", u"A/e"})
        make(folder);
    QFile::rename(path(u"A/f"), path(u"A/0"));
    tree.refreshChilden({}, true);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    model.reloadData();
    EXPECT_EQ(rowsBelow(model.index(0, 0)), u"A(0 a c d(deep) e)"_s);
    EXPECT_EQ(model.itemForIndex(kept), d);
    model.reloadData(); // nothing changed, nothing told
    EXPECT_EQ((QList{inserted.count(), removed.count()}), (QList<qsizetype>{2, 2}));

    tree.removeFolderAlias(*item);
    EXPECT_EQ(rowsBelow(), u"Removable Disks(Z\u202e)"_s);
    EXPECT_FALSE(kept.isValid() || model.indexForItem(*d).isValid());
}

} // namespace
