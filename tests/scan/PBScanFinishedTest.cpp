#include "scan/ScanSupport.h"

#include "scan/PBScanFinishedManager.h"

namespace {

QStringList paths(const PBScanFinishedManager& manager) {
    QStringList result = support::listed(manager.scanFinishedArray(), [](const auto& entry) {
        return entry.relativePath().value_or(u"-"_s);
    });
    result.sort();
    return result;
}

} // namespace

TEST_F(ScanTest, TheRegistryKeepsTheUppermostFinishedFolders) {
    const auto other = addRoot(u"other"_s);
    PBScanFinishedManager manager;
    const auto finish = [&](const std::shared_ptr<PBAliasObject>& alias, const char* relative) {
        manager.scanFinished(PBScanFinishedObject(
            alias, relative ? std::optional(QString::fromLatin1(relative)) : std::nullopt));
    };
    finish(root, "a/b");
    finish(root, "a/c");
    finish(root, "ab");
    EXPECT_EQ(paths(manager), (QStringList{u"a/b"_s, u"a/c"_s, u"ab"_s}));
    finish(root, "a");
    finish(root, "A/B");
    EXPECT_EQ(paths(manager), (QStringList{u"a"_s, u"ab"_s}));
    finish(other, nullptr);
    finish(root, nullptr);
    finish(root, "a");
    EXPECT_EQ(paths(manager), (QStringList{u"-"_s, u"-"_s}));
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
    EXPECT_EQ(paths(finishedManager), QStringList{u"-"_s});
    EXPECT_EQ(shown().size(), 3);
}
