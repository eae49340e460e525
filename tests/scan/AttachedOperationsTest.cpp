#include "scan/ScanSupport.h"

#include "group/ItemOrder.h"

namespace {

struct Note final : PBScanAttachOperation {
    Note(QStringList& notes, QString name) : _notes(notes), _name(std::move(name)) {}
    void runWithOwnerNSOperation(platform::Operation&, bool isLast) override {
        _notes.append(isLast ? _name + u" last"_s : _name);
    }

private:
    QStringList& _notes;
    const QString _name;
};

using Chains = std::vector<PBGroupItemChain>;

struct AttachTest : ScanTest {
    /// A chain for some items of the work tree, which has one leaf at the top.
    PBGroupItemChain chainOf(const QStringList& wanted) const {
        const PBGroupItem& leaf = *workTree->front();
        std::shared_ptr<PBGroupItem> node = PBGroupItem::groupItemWithParent(nullptr, leaf.data());
        for (const auto& item : leaf.imageFiles())
            if (wanted.contains(item->fileName())) node->sortAddImageFileItem(item, 0, false);
        return {node};
    }
    PBScanDictionaryRef dictionary() const {
        return factory->makeDictionary(root, {}, workTree, browsing);
    }
};

} // namespace

TEST_F(AttachTest, AttachedWorkRunsWithoutAScanAndInOrderWithin) {
    QStringList notes;
    factory->attach(std::make_shared<Note>(notes, u"alone"_s));
    scanQueue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(notes, names({"alone last"}));

    notes.clear();
    makePicture(u"a.jpg"_s);
    importers.willRead = [&](const QString&) {
        for (const char* name : {"1", "2", "3"})
            factory->attach(std::make_shared<Note>(notes, QString::fromLatin1(name)));
    };
    scan();
    EXPECT_EQ(notes, names({"1", "2", "3 last"}));
    EXPECT_EQ(shown(), names({"a.jpg"}));
}

TEST_F(AttachTest, WhatACancelledOwnerTookOutIsLostAndTheRestStays) {
    QStringList notes;
    class Cancel final : public PBScanAttachOperation {
        void runWithOwnerNSOperation(platform::Operation& owner, bool) override { owner.cancel(); }
    };
    const auto array = std::make_shared<PBAttachOperationArray>();
    array->add(std::make_shared<Cancel>());
    array->add(std::make_shared<Note>(notes, u"lost"_s));
    scanQueue.addOperation(PBCheckScanAttachOperationOperation::checkScanAttachOperation(array));
    scanQueue.waitUntilAllOperationsAreFinished();
    array->add(std::make_shared<Note>(notes, u"next"_s));
    scanQueue.addOperation(PBCheckScanAttachOperationOperation::checkScanAttachOperation(array));
    scanQueue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(notes, names({"next last"}));
}

TEST_F(AttachTest, EditsMoveItemsAndABurstOfThemIsPublishedOnce) {
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        makePicture(QString::fromLatin1(name));
    scan();
    ASSERT_TRUE(files.executeUpdate(u"update ImageFile set FileFlag = 1"_s));
    browsing.filter = group::FilterFlagged;
    scan();
    ASSERT_EQ(shown().size(), 3);
    const std::size_t before = publications();
    scanQueue.setSuspended(true);
    for (const auto& item : items())
        if (item->fileName() != u"b.jpg") item->setFlagged(false);
    factory->attach(std::make_shared<PBUpdateFileItemOperation>(
        dictionary(), Chains{chainOf(names({"a.jpg"}))}));
    factory->attach(std::make_shared<PBUpdateFileItemOperation>(
        dictionary(), Chains{chainOf(names({"b.jpg"}))}));
    factory->attach(std::make_shared<PBUpdateFileItemOperation>(
        dictionary(), Chains{chainOf(names({"c.jpg"}))}, true));
    scanQueue.setSuspended(false);
    waitForQueues();
    EXPECT_EQ(shown(), names({"b.jpg"}));
    EXPECT_EQ(publications(), before + 1);

    factory->attach(std::make_shared<PBRemoveFileItemOperation>(
        dictionary(), Chains{chainOf(names({"b.jpg"}))}));
    waitForQueues();
    EXPECT_TRUE(workTree->empty()) << "an emptied group goes";
    EXPECT_EQ(shown(), QStringList());
}

TEST_F(AttachTest, ChangesOnDiskReachTheTreeAndTheCatalogue) {
    for (int i = 0; i < 250; ++i)
        makePicture(u"%1/%2.jpg"_s.arg(i % 3).arg(i), {2, 2});
    browsing.groupTypeArray = std::make_shared<const std::vector<int>>(std::vector<int>{5});
    scan();
    for (int i = 0; i < 250; ++i)
        QFile::remove(path(u"%1/%2.jpg"_s.arg(i % 3).arg(i)));
    makePicture(u"0/new.jpg"_s);
    makePicture(u"1/below/deep.jpg"_s);
    makePicture(u"2/unseen.jpg"_s);

    const std::size_t before = publications();
    WatchedChanges changes;
    changes.checkExist = true;
    factory->attachChanges(changes, workTree, browsing);
    waitForQueues();
    // 84, 83 and 83 in their groups: above 100 after the second, the rest at the end.
    EXPECT_EQ(publications(), before + 2);
    EXPECT_EQ(shown(), QStringList());
    EXPECT_EQ(rows(u"select count(*) from ImageFile"_s), names({"0"}));
    EXPECT_EQ(thumbnailRows(u"select count(*) from Thumbnail"_s), names({"0"}));
    EXPECT_EQ(rows(u"select count(*) from Folder"_s), names({"3"}));

    finished = 0;
    changes.rescans = {{path(u"0"_s), false}, {path(u"1"_s), true}, {u"/nowhere"_s, true}};
    factory->attachChanges(changes, workTree, browsing);
    waitForQueues();
    EXPECT_EQ(shown(), names({"new.jpg", "deep.jpg"}));
    EXPECT_EQ(finished, 2) << "each look into a folder ends by itself";

    QFile::remove(path(u"0/new.jpg"_s));
    changes.rescans = {{path(u"2"_s), false}};
    factory->attachChanges(changes, workTree, browsing);
    waitForQueues();
    EXPECT_EQ(shown(), names({"deep.jpg", "unseen.jpg"}));
    expectConsistentCatalogue();
}

TEST_F(AttachTest, NothingIsPublishedForATreeWithoutItems) {
    makePicture(u"note.jpg"_s);
    workTree = std::make_shared<PBGroupItemArray>();
    WatchedChanges changes;
    changes.checkExist = true;
    factory->attachChanges(changes, workTree, browsing);
    scanQueue.addOperation(std::make_shared<PBCheckFileItemExistOperation>(dictionary()));
    waitForQueues();
    EXPECT_EQ(publications(), 0U);
}
