#include "core/OpenedFolders.h"
#include "library/OpenedRoots.h"
#include "scan/ScanSupport.h"

namespace {

struct OpenFilesScanTest : ScanTest {
    OpenFilesScanTest() { makePictures("a.jpg b.jpg c.jpg sub/d.jpg other/e.jpg"); }
    void open(const PBOpenFolderArray& folders) {
        browsing.openFiles = std::make_shared<PBOpenFiles>(folders);
    }
    /// Every publication's new names, in the order of their coming.
    QStringList scanInOrder() {
        QStringList order;
        changeServices([&](ScanServices& watching) {
            watching.publish = [&](const std::shared_ptr<group::GroupPublication>& publication) {
                for (const QString& name : namesIn(publication->groupItemArray))
                    if (!order.contains(name)) order.append(name);
            };
        });
        finished = 0;
        scan();
        EXPECT_EQ(finished, 1);
        expectConsistentCatalogue();
        return order;
    }
};

} // namespace

TEST_F(OpenFilesScanTest, OneOpenedPictureComesFirstThenItsFolderThenTheRest) {
    const auto folder = opened(path({}));
    scan();
    folder->focusOpenFileObj = openedFile(u"c.jpg"_s);
    open({folder});
    EXPECT_EQ(scanInOrder().first(), u"c.jpg") << "known: by its row";
    EXPECT_EQ(scanInOrder().size(), 5);
    EXPECT_EQ(figures.rowsInserted, 5U);

    // New on disk: before the catalogue's other rows.
    makePicture(u"C.jpg"_s);
    folder->focusOpenFileObj = openedFile(u"C.jpg"_s);
    open({folder});
    const QStringList order = scanInOrder();
    EXPECT_EQ(order.first(), u"C.jpg") << "and not the one that is known";
    EXPECT_EQ(order.size(), 6);
    EXPECT_EQ(figures.rowsInserted, 6U);

    // An opened folder shows each photograph once, also the new ones below it.
    makePictures("new.jpg sub/new2.jpg other/new3.jpg");
    open({opened(path({})), opened(path(u"other"_s))});
    EXPECT_EQ(scanInOrder().size(), 9);
    EXPECT_EQ(items().size(), 9U);
}

TEST_F(OpenFilesScanTest, OpenedFilesAndFoldersComeBeforeTheOthers) {
    open({opened(path({}), "b.jpg missing.jpg")});
    const QStringList unknown = scanInOrder();
    EXPECT_EQ(unknown.size(), 5);
    EXPECT_EQ(unknown.first(), u"b.jpg");
    open({opened(path({}), "b.jpg"), opened(path(u"other"_s))});
    const QStringList known = scanInOrder();
    EXPECT_EQ(known.size(), 5);
    EXPECT_EQ(known.mid(0, 2), support::words("b.jpg e.jpg"));
}

TEST_F(OpenFilesScanTest, OpenedFilesOfOtherRootsComeTooAndBeforeTheRest) {
    makePictures("sub/y.jpg other/f.jpg");
    const auto far = addRoot(u"sub"_s);
    root = addRoot(u"other"_s);
    browsing.recurseSubFolder = false;
    for (const bool isKnown : {false, true}) {
        open({opened(root->path(), "e.jpg"), opened(far->path(), "d.jpg")});
        const QStringList order = scanInOrder();
        const QStringList first = order.mid(0, 2);
        EXPECT_TRUE(first.contains(u"e.jpg"_s) && first.contains(u"d.jpg"_s)) << isKnown;
        EXPECT_EQ(order.size(), 3) << "the folder that is selected is scanned whole";
    }
}

TEST_F(OpenFilesScanTest, OfAnOpenedRootNothingBelowItIsScanned) {
    makePicture(u"other/below/f.jpg"_s);
    root = addRoot(u"other"_s, OpenedRoots::openedState);
    scan();
    EXPECT_EQ(namesIn(*workTree), support::words("e.jpg"));
}
