#include "scan/ScanSupport.h"

#include <QFile>

namespace {

QStringList names(std::initializer_list<const char*> list) {
    QStringList result;
    for (const char* name : list)
        result.append(QString::fromLatin1(name));
    return result;
}

std::shared_ptr<PBOpenFolderObject> opened(const QString& path, const QStringList& files) {
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderPath = path;
    for (const QString& name : files)
        folder->fileArray.push_back(std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, name}));
    return folder;
}

class OpenFilesScanTest : public ScanTest {
protected:
    OpenFilesScanTest() {
        for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "sub/d.jpg", "other/e.jpg"})
            makePicture(QString::fromLatin1(name));
    }
    /// Every publication's new names, in the order of their coming.
    QStringList scanInOrder() {
        QStringList order;
        auto watching = std::make_shared<ScanServices>(*services);
        watching->publish = [&](const std::shared_ptr<group::GroupPublication>& publication) {
            for (const QString& name : namesIn(*publication)) {
                if (!order.contains(name)) order.append(name);
            }
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
    const auto open = [&] {
        auto folder = opened(path({}), {});
        folder->focusOpenFileObj =
            std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, QStringLiteral("C.jpg")});
        browsing.openFiles = std::make_shared<PBOpenFiles>(PBOpenFolderArray{folder});
    };
    scan();
    open();
    EXPECT_EQ(scanInOrder().first(), u"c.jpg") << "known: by its row, in any case";
    EXPECT_EQ(scanInOrder().size(), 5);
    EXPECT_EQ(figures.rowsInserted, 5U);

    // New on disk: before the catalogue's other rows.
    makePicture(QStringLiteral("0.jpg"));
    auto folder = opened(path({}), {});
    folder->focusOpenFileObj =
        std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, QStringLiteral("0.jpg")});
    browsing.openFiles = std::make_shared<PBOpenFiles>(PBOpenFolderArray{folder});
    const QStringList order = scanInOrder();
    EXPECT_EQ(order.first(), u"0.jpg");
    EXPECT_EQ(order.size(), 6);
    EXPECT_EQ(figures.rowsInserted, 6U);
}

TEST_F(OpenFilesScanTest, OpenedFilesAndFoldersComeBeforeTheOthers) {
    scan();
    browsing.openFiles = std::make_shared<PBOpenFiles>(PBOpenFolderArray{
        opened(path({}), {QStringLiteral("b.jpg")}), opened(path(QStringLiteral("other")), {})});
    QStringList order = scanInOrder();
    ASSERT_EQ(order.size(), 5);
    EXPECT_EQ(order.first(2), names({"b.jpg", "e.jpg"}));
    expectConsistentCatalogue();
}

TEST_F(OpenFilesScanTest, FilesOfAFolderThatTheCatalogueDoesNotKnow) {
    browsing.openFiles = std::make_shared<PBOpenFiles>(PBOpenFolderArray{
        opened(path({}), {QStringLiteral("b.jpg"), QStringLiteral("missing.jpg")})});
    const QStringList order = scanInOrder();
    EXPECT_EQ(order.size(), 5);
    EXPECT_EQ(order.first(), u"b.jpg");
    expectConsistentCatalogue();
}
