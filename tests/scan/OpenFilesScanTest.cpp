#include "scan/ScanSupport.h"

namespace {

std::shared_ptr<PBOpenFolderObject> opened(const QString& path, const QStringList& files) {
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderPath = path;
    for (const QString& name : files)
        folder->fileArray.push_back(std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, name}));
    return folder;
}

struct OpenFilesScanTest : ScanTest {
    OpenFilesScanTest() {
        for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "sub/d.jpg", "other/e.jpg"})
            makePicture(QString::fromLatin1(name));
    }
    /// Every publication's new names, in the order of their coming.
    QStringList scanInOrder() {
        QStringList order;
        auto watching = std::make_shared<ScanServices>(*services);
        watching->publish = [&](const std::shared_ptr<group::GroupPublication>& publication) {
            for (const QString& name : namesIn(*publication))
                if (!order.contains(name)) order.append(name);
        };
        factory = std::make_unique<ScanFactory>(
            ScanFactory::Environment{scanFiles, scanQueue, watching, [] {}});
        finished = 0;
        scan();
        EXPECT_EQ(finished, 1);
        return order;
    }
};

} // namespace

TEST_F(OpenFilesScanTest, OneOpenedPictureComesFirstThenItsFolderThenTheRest) {
    const auto open = [&](const QString& name) {
        auto folder = opened(path({}), {});
        folder->focusOpenFileObj = std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, name});
        browsing.openFiles = std::make_shared<PBOpenFiles>(PBOpenFolderArray{folder});
    };
    scan();
    open(u"C.jpg"_s);
    EXPECT_EQ(scanInOrder().first(), u"c.jpg") << "known: by its row, in any case";
    EXPECT_EQ(scanInOrder().size(), 5);
    EXPECT_EQ(figures.rowsInserted, 5U);

    // New on disk: before the catalogue's other rows.
    makePicture(u"0.jpg"_s);
    open(u"0.jpg"_s);
    const QStringList order = scanInOrder();
    EXPECT_EQ(order.first(), u"0.jpg");
    EXPECT_EQ(order.size(), 6);
    EXPECT_EQ(figures.rowsInserted, 6U);
}

TEST_F(OpenFilesScanTest, OpenedFilesAndFoldersComeBeforeTheOthers) {
    scan();
    browsing.openFiles = std::make_shared<PBOpenFiles>(
        PBOpenFolderArray{opened(path({}), {u"b.jpg"_s}), opened(path(u"other"_s), {})});
    QStringList order = scanInOrder();
    ASSERT_EQ(order.size(), 5);
    EXPECT_EQ(order.first(2), names({"b.jpg", "e.jpg"}));
    expectConsistentCatalogue();
}

TEST_F(OpenFilesScanTest, FilesOfAFolderThatTheCatalogueDoesNotKnow) {
    browsing.openFiles = std::make_shared<PBOpenFiles>(
        PBOpenFolderArray{opened(path({}), {u"b.jpg"_s, u"missing.jpg"_s})});
    const QStringList order = scanInOrder();
    EXPECT_EQ(order.size(), 5);
    EXPECT_EQ(order.first(), u"b.jpg");
    expectConsistentCatalogue();
}
