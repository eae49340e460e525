#include "shell/groups/GroupPanel.h"

#include "group/CatalogueFixture.h"

#include <QScrollBar>
#include <QTest>

namespace {

/// A tree of camera models with star ratings below, published as a scan does it.
struct GroupPanelTest : testing::Test {
    GroupPanelTest() {
        source.setGroupItemArray_work(work);
        view->resize(220, 200);
        view->show();
    }
    ~GroupPanelTest() override { delete view; }

    void insert(const PBValue& model, int stars = 0) {
        support::insertByModelAndStars(
            *work, model, stars, support::makeItem(u"a.jpg"_s, ++lastId));
    }
    void publishAlphaAndBeta() {
        insert(u"Alpha"_s, 0);
        for (const int stars : {5, 1})
            insert(u"Beta"_s, stars);
        publish();
    }
    void publishHundredModels() {
        for (int i = 100; i < 200; ++i)
            insert(u"Model %1"_s.arg(i));
        publish();
    }
    void publish() {
        source.groupItemArrayDidFinish(group::makeGroupPublication(work));
        (void)view->visualRect(row(0)); // rows are laid out
    }

    /// The row of the first level, or one below it.
    [[nodiscard]] QModelIndex row(int first, int second = -1) const {
        const QModelIndex index = view->model()->index(first, 0, view->rootIndex());
        return second < 0 ? index : view->model()->index(second, 0, index);
    }
    void click(const QModelIndex& index) {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
    }
    [[nodiscard]] QString selected() const {
        return view->selectionModel()->selectedIndexes().value(0).data().toString();
    }
    [[nodiscard]] int scrolledTo() const { return view->verticalScrollBar()->value(); }

    PBGroupTreeDataSource source;
    std::shared_ptr<PBGroupItemArray> work = std::make_shared<PBGroupItemArray>();
    std::vector<const PBGroupItemData*> scrolled;
    GroupPanel panel{
        source, [](qint64) { return QString(); },
        [this](const PBGroupItemData& leaf) { scrolled.push_back(&leaf); }};
    PBGroupOutlineView* view = panel.view();
    qint64 lastId = 0;
};

TEST_F(GroupPanelTest, rowsAreTheGroupsBelowAHiddenRoot) {
    insert(u"Beta"_s, 5);
    insert(PBNull{});
    publishAlphaAndBeta();
    const QAbstractItemModel& model = *view->model();
    ASSERT_EQ(model.rowCount(), 1);
    const QModelIndex root = model.index(0, 0);
    EXPECT_EQ(view->rootIndex(), root);
    EXPECT_EQ(view->visualRect(root).height(), 0);
    ASSERT_EQ(model.rowCount(root), 3);
    EXPECT_EQ(row(1).data(Qt::AccessibleTextRole), u"Beta, 3 photographs"_s);
    const QString alone = row(0).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(alone.startsWith(u"Alpha › ") && alone.endsWith(u", 1 photograph"));
    for (const int each : {0, 1, 2})
        EXPECT_EQ(row(each).data(GroupTreeModel::UnspecifiedRole).toBool(), each == 2);
    EXPECT_EQ(row(1, 0).data(GroupTreeModel::CountRole).toInt(), 2);
    EXPECT_TRUE(view->isExpanded(row(1))) << "never touched";
}

TEST_F(GroupPanelTest, aRowOfSeveralGroupsIsOpenedAndClosedAsOne) {
    publishAlphaAndBeta();
    EXPECT_EQ(view->model()->rowCount(row(0)), 0);
    view->collapse(row(1));
    insert(u"Alpha"_s, 2); // now two rows below it
    publish();
    EXPECT_EQ(row(0).data().toString(), u"Alpha"_s);
    EXPECT_EQ(view->model()->rowCount(row(0)), 2);
    EXPECT_TRUE(view->isExpanded(row(0)) && !view->isExpanded(row(1)));
}

TEST_F(GroupPanelTest, foldersOfOneNameAreToldApartByTheirParents) {
    for (const char16_t* path :
         {u"/p/Lisbon/Day 1", u"/p/Rome/Day 1", u"/p/a/x/Day 2", u"/p/b/x/Day 2",
          u"/p/Day\u202e 3"})
        group::pushImageFileItemToWorkGroupItemArray(
            {support::makeItem(u"a.jpg"_s), *work, std::array<int, 1>{group::Folder},
             PBArray{QString::fromUtf16(path)}});
    publish();
    const QStringList names = support::listed(
        std::array{0, 1, 2, 3, 4}, [&](int each) { return row(each).data().toString(); });
    EXPECT_EQ(
        support::sorted(names).join(u", "),
        u"Day 1 (Lisbon), Day 1 (Rome), Day 2 (a/x), Day 2 (b/x), Day\u202e 3");
    for (const int each : {0, 1, 2, 3, 4})
        EXPECT_FALSE(row(each).data(Qt::ToolTipRole).toString().contains(u'\u202e'));
}

TEST_F(GroupPanelTest, selectingARowShowsItsFirstLeaf) {
    publishAlphaAndBeta();
    const auto leaf = [this](std::size_t first, std::size_t second) {
        return source.groupItemArray()[first]->children()[second]->data().get();
    };
    for (const QModelIndex& each :
         {row(1), row(1, 1), row(1, 1)}) // the browser may have been moved
        click(each);
    const std::vector<const PBGroupItemData*> expected{leaf(1, 0), leaf(1, 1), leaf(1, 1)};
    EXPECT_EQ(scrolled, expected);

    // Neither the same groups nor others make the browser move, and the row stays selected.
    for (const QString& model : {u"Alpha"_s, u"Aaa"_s}) {
        insert(model, 0);
        publish();
        EXPECT_EQ(selected(), row(model == u"Aaa"_s ? 2 : 1, 1).data().toString());
    }
    source.setIgnoreSelectionChanged(true);
    click(row(0));
    source.setIgnoreSelectionChanged(false);
    EXPECT_EQ(scrolled, expected);

    // A group that goes takes the selection along.
    work = std::make_shared<PBGroupItemArray>();
    source.setGroupItemArray_work(work);
    insert(u"Other"_s, 0);
    publish();
    EXPECT_EQ(selected(), QString());
}

TEST_F(GroupPanelTest, onlyAPanelThatTheUserScrolledKeepsItsPlace) {
    publishHundredModels();
    insert(u"Early"_s); // a row above all others
    publish();
    EXPECT_EQ(scrolledTo(), 0);

    click(row(0)); // a selection out of sight does not scroll the panel
    view->verticalScrollBar()->setValue(1005);
    EXPECT_TRUE(source.isOutlineViewScrolled());
    const QModelIndex held = view->indexAt(view->viewport()->rect().center());
    const QString name = held.data().toString();
    const int top = view->visualRect(held).top();
    insert(u"Earlier still"_s);
    insert(u"Ear"_s);
    publish();
    const QModelIndex now = view->indexAt(view->viewport()->rect().center());
    EXPECT_EQ(now.data().toString(), name);
    EXPECT_EQ(std::pair(view->visualRect(now).top(), scrolledTo()), std::pair(top, 1005 + 2 * 20));
    EXPECT_TRUE(selected().startsWith(u"Early ›"));

    // A scan begins: the tree goes, and the panel is untouched again.
    source.setGroupItemArray({});
    panel.clear();
    EXPECT_FALSE(view->model()->hasChildren(view->rootIndex()));
    publishHundredModels();
    EXPECT_TRUE(scrolledTo() == 0 && !source.isOutlineViewScrolled());
}

} // namespace
