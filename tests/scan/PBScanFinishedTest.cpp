#include "scan/ScanSupport.h"

#include "scan/PBScanFinishedManager.h"

namespace {

QStringList paths(const PBScanFinishedManager& manager) {
    QStringList result;
    for (const auto& entry : manager.scanFinishedArray())
        result.append(entry.relativePath().value_or(QStringLiteral("-")));
    result.sort();
    return result;
}

} // namespace

TEST_F(ScanTest, TheRegistryKeepsTheUppermostFinishedFolders) {
    const auto other = addRoot(QStringLiteral("other"));
    PBScanFinishedManager manager;
    const auto finish = [&](const std::shared_ptr<PBAliasObject>& alias, const char* relative) {
        manager.scanFinished(PBScanFinishedObject(
            alias, relative ? std::optional(QString::fromLatin1(relative)) : std::nullopt));
    };
    finish(root, "a/b");
    finish(root, "a/c");
    finish(root, "ab");
    EXPECT_EQ(
        paths(manager),
        (QStringList{QStringLiteral("a/b"), QStringLiteral("a/c"), QStringLiteral("ab")}));
    finish(root, "a");
    finish(root, "A/B");
    EXPECT_EQ(paths(manager), (QStringList{QStringLiteral("a"), QStringLiteral("ab")}));
    finish(other, nullptr);
    finish(root, nullptr);
    finish(root, "a");
    EXPECT_EQ(paths(manager), (QStringList{QStringLiteral("-"), QStringLiteral("-")}));
}

TEST_F(ScanTest, ACancelledScanRegistersOnlyTheFoldersThatItFinished) {
    for (const char* name : {"x/1.jpg", "y/2.jpg", "z/3.jpg"})
        makePicture(QString::fromLatin1(name));
    int read = 0;
    importers.willRead = [&](const QString&) {
        if (++read == 2) scanQueue.cancelAllOperations();
    };
    scan();
    EXPECT_EQ(finished, 0);
    EXPECT_EQ(paths(finishedManager).size(), 1);
    importers.willRead = {};
    scan();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(paths(finishedManager), QStringList{QStringLiteral("-")});
    EXPECT_EQ(shown().size(), 3);
}
