// What nobody expects: odd pictures, odd names, and trees that change in the middle of something.

#include "BrowserViewFixture.h"

#include "group/PBGroupTreeDataSource.h"
#include "platform/MainLoop.h"
#include "support/Support.h"
#include "ui/PBThemes.h"

#include <QContextMenuEvent>
#include <QRegion>

namespace {

struct BrowserBadInputTest : BrowserViewTest {
    void shrinkTo(int count) {
        PBImageFileList gone;
        for (const auto& item : tree->tree[0]->imageFiles())
            if (count-- <= 0) gone.push_back(item);
        tree->swapForCopy();
        tree->tree[0]->removeImageFiles(gone);
        view->setLeafGroupItemArray(tree->leaves());
        view->reloadData();
    }
    void empty() {
        view->setLeafGroupItemArray({});
        view->reloadData();
    }
};

TEST_F(BrowserBadInputTest, oddPicturesAndNamesStayWithinTheirCells) {
    PBThemes::apply(PBThemes::Scheme::Light);
    show({9});
    constexpr double huge = std::numeric_limits<double>::infinity();
    const QSizeF sizes[] = {{0, 0}, {1, 30000}, {30000, 1},         {-5, 10},    {10, 0},
                            {1, 1}, {huge, 10}, {std::nan(""), 10}, {3000, 2000}};
    const QString names[] = {
        QString::fromUtf8("שלום עולם תמונה ארוכה מאוד מאוד.jpg"),
        u"two\nlines\r\nand\tmore"_s,
        QString(127, QChar(u'ü')) + u'x', // 255 bytes
        QString(),
        u" "_s,
        QString::fromUtf8("\u202Egpj.exe"),
        QString::fromUtf8("😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀😀"),
        QString(1, QChar(0xD800)) + u"half a pair"_s,
        u"plain.jpg"_s};
    for (int index = 0; index < 9; ++index) {
        const auto& item = tree->item(0, index);
        item->setImageSize(sizes[index]);
        item->setFileName(names[index]);
        if (index % 2 == 1) item->setThumbnailRef(plain(Qt::green, {1, 256}));
        item->setIsSelected(index == 0 || index == 3);
    }
    view->reloadData();
    scrollView.resize(600, 900);
    QApplication::processEvents();
    const QImage shown = picture();
    QRegion cells(0, 0, view->width(), 23);
    BrowserLayout& layout = view->browserLayout();
    for (int index = 0; index < 9; ++index) {
        const QRect cell = view->widgetRect({0, index});
        EXPECT_LE(cell.height(), 256 + 60) << index;
        cells += cell.adjusted(-7, -7, 7, 7); // with the shadow
        // Each can be taken hold of, and has its name where it belongs.
        EXPECT_EQ(view->indexAt(layout.hitTarget(cell, {0, index}).center().toPoint()).item, index);
    }
    const QColor background = PBThemes::imageBrowserBackgroundColor();
    const auto isPainted = [&](QPoint point) { return shown.pixelColor(point) != background; };
    int strays = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x)
            if (!cells.contains(QPoint(x, y)) && isPainted({x, y})) ++strays;
    EXPECT_EQ(strays, 0);
    for (const int index : {0, 1, 2, 5, 7, 8}) {
        const QRect label = layout.fileNameRectWithCellRect(view->widgetRect({0, index})).toRect();
        int painted = 0;
        for (int x = label.left(); x <= label.right(); ++x)
            painted += isPainted({x, label.center().y()}) ? 1 : 0;
        EXPECT_GT(painted, 5) << index;
    }
}

TEST_F(BrowserBadInputTest, aTreeMayShrinkUnderTheMouse) {
    show({60, 5});
    // A band that has taken in images that go.
    send(QEvent::MouseButtonPress, {4, 60});
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 10});
    EXPECT_GT(view->selection().selectCount(true), 5);
    shrinkTo(4);
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 20});
    EXPECT_TRUE(tree->item(0, 3)->isSelected());
    empty();
    send(QEvent::MouseMove, {view->width() - 5, 70});
    send(QEvent::MouseButtonRelease, {view->width() - 5, 70});
    EXPECT_FALSE(view->isDragging());
    picture();

    // An image that goes between press and drag, or between the clicks of a double click.
    view->setLeafGroupItemArray(tree->leaves());
    view->reloadData();
    const QPoint last = at({0, 3});
    int entered = 0;
    QObject::connect(
        view.get(), &PBImageBrowserView::enterToLargeViewRequested, view.get(), [&] { ++entered; });
    send(QEvent::MouseButtonPress, last);
    shrinkTo(2);
    send(QEvent::MouseMove, last + QPoint(40, 0));
    send(QEvent::MouseButtonRelease, last + QPoint(40, 0));
    press(*view, Qt::Key_Right); // from an image that is gone: the first
    EXPECT_EQ(tree->selected(), u"a0");
    // The second click of two meets another image than the first.
    click(last);
    shrinkTo(1);
    send(QEvent::MouseButtonDblClick, at({0, 0}));
    send(QEvent::MouseButtonRelease, at({0, 0}));
    EXPECT_EQ(entered, 0);
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, last, last);
    QApplication::sendEvent(view.get(), &menu);
    EXPECT_EQ(tree->selected(), u"a0");
}

TEST_F(BrowserBadInputTest, theFieldOfANameFollowsItsImageAndGoesWithIt) {
    show({6});
    int taken = 0;
    QObject::connect(
        view.get(), &PBImageBrowserView::renameRequested, view.get(), [&] { ++taken; });
    view->renameIndex({0, 5});
    QPointer field = nameField();
    ASSERT_TRUE(field);
    tree->tree[0]->sortAddImageFileItem(
        PBImageFileItem::imageFileItemWithId(99, 1, u"Z"_s, 1, 1), 0, true);
    view->reloadData();
    const auto index = view->leaves().indexForImageFile(tree->item(0, 5));
    EXPECT_NEAR(field->geometry().center().x(), nameAt(index).x(), 1);
    const auto moved = view->leaves().indexForImageFile(tree->item(0, 6));
    EXPECT_NE(moved, index);
    shrinkTo(2);
    EXPECT_FALSE(nameField());
    EXPECT_TRUE(support::spinUntil([&] { return !field; }));
    EXPECT_EQ(taken, 0);
    press(*view, Qt::Key_End);
    EXPECT_EQ(view->selection().selectCount(true), 1);
}

/// Shows a live tree as the window does.
struct Display final : group::GroupTreeDisplay {
    Display(PBGroupTreeDataSource& source, PBImageBrowserView& view)
        : _source(source), _view(view) {
        _source.setDisplay(this);
    }
    ~Display() override { _source.setDisplay(nullptr); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    [[nodiscard]] bool isScrollingOrDragging() const override { return _view.isDragging(); }
    void updateImageBrowserViewData() override {
        ++swaps;
        _view.setLeafGroupItemArray(_source.leafGroupItemArray());
        _view.reloadData();
    }
    void updateLargeViewData() override {}
    void updateImageBrowserTipView() override {}
    void updateBrowserScrollCapture() override {}
    int swaps = 0;

private:
    PBGroupTreeDataSource& _source;
    PBImageBrowserView& _view;
};

TEST_F(BrowserBadInputTest, aDragKeepsItsTreeWhileTheScanPublishes) {
    show({6});
    PBGroupTreeDataSource source;
    Display display(source, *view);
    const std::shared_ptr<PBGroupItemArray> work(&tree->tree, [](PBGroupItemArray*) {});
    source.setGroupItemArray_work(work);
    const auto publish = [&, publisher = source.publisher()] {
        tree->add(0, u"new"_s);
        publisher(group::makeGroupPublication(work));
    };
    publish();
    ASSERT_TRUE(support::spinUntil([&] { return display.swaps == 1; }));
    send(QEvent::MouseButtonPress, {4, 60});
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 10});
    const std::int64_t before = view->selection().itemCount(true);
    for (int times = 0; times < 5; ++times)
        publish();
    // Whatever else the loop has to do goes on.
    bool hasRun = false;
    QMetaObject::invokeMethod(
        view.get(), [&] { hasRun = true; }, Qt::QueuedConnection);
    ASSERT_TRUE(support::spinUntil([&] { return hasRun; }));
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 30});
    EXPECT_EQ(display.swaps, 1);
    EXPECT_EQ(view->selection().itemCount(true), before);
    const std::int64_t selected = view->selection().selectCount(true);
    EXPECT_EQ(selected, before);
    send(QEvent::MouseButtonRelease, {view->width() - 5, view->height() - 30});
    ASSERT_TRUE(
        support::spinUntil([&] { return view->selection().itemCount(true) == before + 5; }));
    EXPECT_EQ(view->selection().selectCount(true), selected); // the flags are the images' own
}

} // namespace
