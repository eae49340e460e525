#include "image/PBThumbnailBufferManager.h"

#include "group/PBImageFileItem.h"
#include "support/Support.h"

namespace {

using Items = std::vector<std::shared_ptr<PBImageFileItem>>;

struct PBThumbnailBufferManagerTest : ::testing::Test, BrowserOrder {
    PBImageBrowserIndex indexForImageFile(const PBImageFileItem& imageFile) const override {
        for (std::size_t group = 0; group < leaves.size(); ++group)
            for (std::size_t item = 0; item < leaves[group].size(); ++item)
                if (leaves[group][item].get() == &imageFile)
                    return {static_cast<int>(group), static_cast<int>(item)};
        return {};
    }
    std::int64_t leafCount() const override { return std::ssize(leaves); }
    std::int64_t imageFileCount(std::int64_t group) const override {
        return std::ssize(leaves.at(static_cast<std::size_t>(group)));
    }
    bool isCollapsedForBrowser(std::int64_t group) const override { return group == collapsed; }
    void makeLeaves(std::initializer_list<int> counts) {
        qint64 id = 0;
        for (const int count : counts) {
            Items items;
            for (int item = 0; item < count; ++item)
                items.push_back(PBImageFileItem::imageFileItemWithId(++id, 1, u"a"_s, 1, 1));
            leaves.push_back(items);
        }
        manager.setBrowserOrder(this);
    }
    const std::shared_ptr<PBImageFileItem>& shared(int group, int index) {
        return leaves.at(static_cast<std::size_t>(group)).at(static_cast<std::size_t>(index));
    }
    /// Which items hold a thumbnail, as digits, with "|" between the leaves.
    QString held() {
        const auto digitsOf = [](const Items& leaf) {
            QString digits;
            for (std::size_t index = 0; index < leaf.size(); ++index)
                if (leaf[index]->hasThumbnail()) digits += QString::number(index);
            return digits;
        };
        return support::listed(leaves, digitsOf).join(u'|');
    }
    QString push(int group, std::initializer_list<int> indexes) {
        for (const int index : indexes) {
            shared(group, index)->setThumbnailRef(image);
            manager.pushImageFileItem(shared(group, index), PBImageBrowserIndex{group, index});
        }
        return held();
    }
    QString apply(int index, QSize size) {
        EXPECT_TRUE(manager.applyPreloadThumbnail(shared(0, index), QImage(size, image.format())));
        return held();
    }

    const QImage image{4, 4, QImage::Format_ARGB32_Premultiplied};
    std::vector<Items> leaves;
    std::int64_t collapsed = -1;
    PBThumbnailBufferManager manager{4};
};

TEST_F(PBThumbnailBufferManagerTest, whatIsFarthestFromTheLatestGoesAndTheFrontOnATie) {
    makeLeaves({20});
    manager.setBufferCount(0);
    EXPECT_EQ(manager.bufferCount(), 1U);
    EXPECT_EQ(push(0, {0, 0}), u"0") << "not cleared by its own push";
    manager.setBufferCount(4);
    EXPECT_EQ(push(0, {0, 1, 2, 3, 4, 5, 6, 7}), u"4567");
    EXPECT_EQ(push(0, {3, 2}), u"2345");
    manager.clearThumbnailBuffer();
    push(0, {0, 4, 10, 12});
    EXPECT_EQ(push(0, {3}), u"03410"); // 3 from the front, 9 from the back
    EXPECT_EQ(push(0, {5}), u"34510"); // 5 and 5
}

TEST_F(PBThumbnailBufferManagerTest, theirBytesAreBoundedToo) {
    makeLeaves({9});
    manager.setByteLimit(3 * image.sizeInBytes());
    EXPECT_EQ(push(0, {0, 1, 2, 3}), u"123");
    // One of more pixels takes the place of its own, and of as many others as it needs.
    EXPECT_EQ(apply(1, {4, 8}), u"12");
    EXPECT_FALSE(manager.applyPreloadThumbnail(shared(0, 1), image));
    EXPECT_EQ(manager.byteCount(), 3 * image.sizeInBytes());
    EXPECT_EQ(apply(5, {40, 40}), u"5"); // what is looked at is never dropped for its size
    EXPECT_EQ(push(0, {4}), u"4");
    EXPECT_EQ(manager.byteCount(), image.sizeInBytes());
    manager.clearThumbnailBuffer();
    EXPECT_EQ(manager.byteCount(), 0);
}

TEST_F(PBThumbnailBufferManagerTest, foldedLeavesCountForNothing) {
    makeLeaves({10, 1000, 10});
    push(0, {0, 1});
    push(2, {6, 7});
    collapsed = 1;
    EXPECT_EQ(push(0, {9}), u"19||67"); // 9 from the front, 8 from the back
    collapsed = -1;
    EXPECT_EQ(push(0, {8}), u"189||6"); // 7 from the front, far from the back
}

TEST_F(PBThumbnailBufferManagerTest, anItemThatIsNotShownLosesItsThumbnail) {
    makeLeaves({2});
    const auto stray = PBImageFileItem::imageFileItemWithId(99, 1, u"b"_s, 1, 1);
    EXPECT_TRUE(manager.applyPreloadThumbnail(stray, image));
    EXPECT_FALSE(stray->hasThumbnail());
    EXPECT_TRUE(manager.applyPreloadThumbnail(shared(0, 1), image));
    EXPECT_FALSE(manager.applyPreloadThumbnail(shared(0, 1), image)); // has one
    EXPECT_FALSE(manager.applyPreloadThumbnail(shared(0, 0), QImage()));
    EXPECT_EQ(manager.imageFileItemCount(), 1U);
}

TEST_F(PBThumbnailBufferManagerTest, theCountHoldsWhateverTheTreeDoes) {
    makeLeaves({5, 1, 2});
    push(0, {0, 1});
    push(2, {0, 1});
    leaves.resize(1); // what is stored lies beyond the tree now
    push(0, {2, 3, 4});
    EXPECT_EQ(manager.imageFileItemCount(), 4U);
    manager.setBrowserOrder(nullptr);
    push(0, {0, 1});
    EXPECT_EQ(manager.imageFileItemCount(), 4U);
}

} // namespace
