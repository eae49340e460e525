#include "group/PBGroupItem.h"

#include "group/CatalogueFixture.h"
#include "group/GroupPublication.h"
#include "group/ItemOrder.h"
#include "info/geo/Addresses.h"
#include "support/Support.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <cmath>
#include <random>

using namespace group;
using support::describe;
using support::makeItem;
using support::text;

namespace {

PBDate localDate(int year, int month, int day) {
    const QDateTime noon(QDate(year, month, day), QTime(12, 0));
    return PBDate{static_cast<double>(noon.toSecsSinceEpoch())};
}

PBValue address(const PBDictionary& entries) {
    return entries;
}

QString tagName(qint64 id) {
    return id == 3 ? text(u"sea") : QString();
}

QString nameOf(int type, PBValue value) {
    return PBGroupItem::groupItemWithParent(nullptr, type, std::move(value))->displayName(tagName);
}

/// A tree by two links: for each pair of values the names of its images.
struct Tree {
    PBGroupItemArray top;
    std::vector<std::shared_ptr<PBImageFileItem>> items;

    std::shared_ptr<PBImageFileItem>
    add(const QString& model, int stars, const QString& name, qint64 folderId = 1) {
        auto item = makeItem(name, static_cast<qint64>(items.size()) + 1, 0, 0, folderId);
        const std::vector<int> chain{CameraModel, StarRating};
        const PBArray data{model, stars};
        pushImageFileItemToWorkGroupItemArray({item, top, chain, data, SortFileName, false});
        items.push_back(item);
        return item;
    }
    [[nodiscard]] PBGroupItemArray copy() const {
        PBGroupItemArray array;
        for (const auto& node : top)
            array.push_back(node->copyWithParent(nullptr));
        return array;
    }
};

TEST(PBGroupItemTest, namesByType) {
    const PBDictionary place{
        {text(u"SubLocality"), text(u"Altstadt")},
        {text(u"City"), text(u"Bern")},
        {text(u"State"), text(u"BERN")},
        {text(u"Country"), text(u"Switzerland")}};
    struct Case {
        int type;
        PBValue value;
        QStringView name;
    };
    const Case cases[] = {
        {AllImages, {}, u"All"},
        {CaptureYear, localDate(2021, 12, 31), u"2021"},
        {ModificationMonth, localDate(2021, 3, 1), u"March 2021"},
        {ModificationYear, PBDate{std::nan("")}, u"1970"},
        {Folder, text(u"/Photos/Sea side"), u"Sea side"},
        {Folder, text(u"/"), u"/"},
        {FileKind, text(u"jpg"), u"jpg"},
        {FileKind, PBNull{}, u"Unspecified"},
        {FileSizeBucket, 1, u"10 ~ 50K"},
        {PixelCountBucket, 12, u"Unknow Group Type"},
        {Resolution, 300, u"300"},
        {Flag, 1, u"Flagged"},
        {Flag, 0, u"Unflagged"},
        {StarRating, 0, u"No stars"},
        {StarRating, 5, u"Stars: 5"},
        {StarRating, 6, u"Unknow Group Type"},
        {Tags, text(u"3,4"), u"sea"},
        {Tags, text(u"4"), u"No Tags"},
        {Tags, PBNull{}, u"Unspecified"},
        {Place, {}, u"No Location"},
        {Place, PBNull{}, u"Unknown Location"},
        {Place, address({}), u"Unknown Location"},
        {Place, place, u"Altstadt, Bern, Switzerland"},
        {22, 0.004, u"1/250 s"},
        {40, PBNull{}, u"Unspecified"},
        {40, {}, u"Unspecified"},
        {64, 1, u"Unknow Group Type"},
        {-3, 1, u"Unknow Group Type"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(nameOf(each.type, each.value), each.name.toString()) << each.type;
    for (int month = 1; month <= 12; ++month)
        EXPECT_TRUE(nameOf(CaptureMonth, localDate(2004, month, 15)).endsWith(text(u" 2004")));
}

TEST(PBGroupItemTest, longNamesAndFolderNames) {
    const auto place = PBGroupItem::groupItemWithParent(
        nullptr, Place,
        address(
            {{text(u"City"), text(u"Bern")},
             {text(u"FormattedAddressLines"),
              PBArray{text(u"Kramgasse 1/2"), text(u"3011 Bern")}}}));
    EXPECT_EQ(place->displayName(tagName), text(u"Bern"));
    EXPECT_EQ(place->fullDisplayName(tagName), text(u"Kramgasse 1/2, 3011 Bern"));
    EXPECT_EQ(place->groupCopyPathName(tagName), text(u"Kramgasse 1:2, 3011 Bern"));
    const auto folder =
        PBGroupItem::groupItemWithParent(nullptr, Folder, text(u"/Photos/Sea side"));
    EXPECT_EQ(folder->fullDisplayName(tagName), text(u"/Photos/Sea side"));
    EXPECT_EQ(folder->groupCopyPathName(tagName), text(u"Sea side"));

    const auto folderName = [](const QString& title) {
        return PBGroupItem::groupItemWithParent(nullptr, 35, title)->groupCopyPathName(tagName);
    };
    EXPECT_EQ(folderName(text(u"..")), text(u"_.."));
    EXPECT_EQ(folderName(text(u"../../etc")), text(u"..:..:etc"));
    EXPECT_EQ(folderName(QString()), text(u"_"));
    EXPECT_LE(folderName(QString(1000, QChar(u'\u00e9'))).toUtf8().size(), 255);
    EXPECT_TRUE(folderName(text(u"\U0001F4F7").repeated(100)).isValidUtf16());
}

TEST(PBGroupItemTest, iconsTellFlagStarsAndKind) {
    using Kind = IconName::Kind;
    const auto iconOf = [](int type, PBValue value) {
        return PBGroupItem::groupItemWithParent(nullptr, type, std::move(value))->displayIcon();
    };
    EXPECT_EQ(iconOf(StarRating, 3), (IconName{Kind::Named, text(u"star_16_s")}));
    EXPECT_EQ(iconOf(StarRating, 0), (IconName{Kind::Named, text(u"star_16_n")}));
    EXPECT_EQ(iconOf(Flag, 1), (IconName{Kind::Named, text(u"flag_16_s")}));
    EXPECT_EQ(iconOf(Flag, 0), (IconName{Kind::Named, text(u"flag_16_n")}));
    EXPECT_EQ(iconOf(FileKind, text(u"nef")), (IconName{Kind::FileExtension, text(u"nef")}));
    EXPECT_EQ(iconOf(Folder, text(u"/a")).kind, Kind::Folder);
    EXPECT_EQ(iconOf(99, 1), IconName{});
}

TEST(PBGroupItemTest, valuesOfOneGroupCompareEqual) {
    const auto compare = [](int type, PBValue value, PBValue other) {
        const auto node = PBGroupItem::groupItemWithParent(nullptr, type, std::move(value));
        const auto second = PBGroupItem::groupItemWithParent(nullptr, type, std::move(other));
        const auto order = node->sortCompare(*second);
        EXPECT_EQ(second->sortCompare(*node), -order) << type;
        return order;
    };
    EXPECT_EQ(compare(CaptureMonth, localDate(2021, 5, 1), localDate(2021, 5, 31)), 0);
    EXPECT_EQ(compare(CaptureMonth, localDate(2020, 12, 1), localDate(2021, 1, 1)), -1);
    EXPECT_EQ(compare(CaptureYear, localDate(2021, 1, 1), localDate(2021, 12, 31)), 0);
    EXPECT_EQ(compare(CaptureYear, PBDate{-INFINITY}, PBDate{INFINITY}), -1);
    EXPECT_EQ(compare(CameraMake, text(u"NIKON"), text(u"Nikon")), 0);
    EXPECT_EQ(compare(Folder, text(u"/a/2"), text(u"/a/10")), -1);
    EXPECT_EQ(compare(26, text(u"400"), text(u"1600")), -1);
    EXPECT_EQ(compare(26, text(u"400"), 400), 0);
    EXPECT_EQ(compare(21, 2.8, text(u"wide open")), -1);
    EXPECT_EQ(compare(21, std::nan(""), 8), 1);
    EXPECT_EQ(compare(21, std::nan(""), std::nan("")), 0);
    EXPECT_EQ(compare(CameraMake, PBNull{}, text(u"Canon")), 1);
    EXPECT_EQ(compare(Place, {}, PBNull{}), 1);
    EXPECT_EQ(compare(AllImages, {}, {}), 0);
    EXPECT_EQ(compare(70, 1, 2), 0);

    const auto place = [](const QString& country, const QString& city) {
        return address({{text(u"Country"), country}, {text(u"City"), city}});
    };
    EXPECT_EQ(
        compare(Place, place(text(u"Chile"), text(u"b")), place(text(u"Chile"), text(u"B"))), 0);
    EXPECT_EQ(
        compare(Place, place(text(u"Chile"), text(u"Z")), place(text(u"Peru"), text(u"A"))), -1);
    EXPECT_EQ(compare(Place, address({}), place(text(u"Peru"), text(u"A"))), 1);
    EXPECT_EQ(compare(Place, address({}), address({{text(u"Zip"), 1}})), 0);
}

TEST(PBGroupItemTest, placesOrderAsTheirDictionariesCompare) {
    std::mt19937 random(17);
    const QString keys[] = {
        text(u"Country"), text(u"State"), text(u"City"), text(u"SubLocality"), text(u"Name")};
    const PBValue values[] = {text(u"a"), text(u"B"), text(u"b"), text(u"10"),
                              text(u"9"), QString(),  7};
    std::vector<PBValue> places{PBValue(), PBNull{}};
    for (int number = 0; number < 60; ++number) {
        PBDictionary entries;
        for (const QString& key : keys)
            if (random() % 2) entries[key] = values[random() % std::size(values)];
        if (random() % 3 == 0)
            entries[text(u"FormattedAddressLines")] = PBArray{values[random() % 4], text(u"x")};
        places.push_back(entries);
    }
    for (const PBValue& place : places) {
        for (const PBValue& other : places) {
            ASSERT_EQ(
                GroupOrderKey(Place, place).compare(GroupOrderKey(Place, other)),
                PBUtilities::compareAddressDictionary(place, other))
                << place.toText().toStdString() << " and " << other.toText().toStdString();
        }
    }
}

TEST(PBGroupItemTest, leavesInTreeOrderAndCounts) {
    Tree tree;
    tree.add(text(u"R5"), 1, text(u"c"));
    tree.add(text(u"D850"), 2, text(u"b"));
    tree.add(text(u"R5"), 3, text(u"a"));
    tree.add(text(u"r5"), 1, text(u"A9"));
    EXPECT_EQ(describe(tree.top), text(u"D850(2(b)) R5(3(a) 1(A9 c))"));
    PBGroupItem& r5 = *tree.top[1];
    ASSERT_EQ(r5.leafGroupItemArray().size(), 2U);
    EXPECT_EQ(r5.leafGroupItemArray()[0], r5.children()[0].get());
    EXPECT_EQ(r5.imageFileCount(), 3U);
    EXPECT_EQ(r5.firstLeafGroupItem(), r5.children()[0].get());
    EXPECT_TRUE(r5.children()[0]->leafGroupItemArray().empty());
    EXPECT_EQ(r5.children()[0]->parent(), &r5);
    const auto lone = PBGroupItem::groupItemWithParent(nullptr, 5, {});
    EXPECT_EQ(lone->firstLeafGroupItem(), nullptr);
    EXPECT_EQ(lone->imageFileCount(), 0U);
}

TEST(PBGroupItemTest, copiesShareDataAndItemsAndNothingElse) {
    Tree tree;
    for (int number = 0; number < 50; ++number)
        tree.add(text(u"M%1").arg(number % 3), number % 2, text(u"%1").arg(number));
    const PBGroupItemArray copy = tree.copy();
    const QString before = describe(tree.top);
    EXPECT_EQ(describe(copy), before);
    EXPECT_EQ(copy[0]->data(), tree.top[0]->data());
    EXPECT_EQ(copy[0]->children()[0]->parent(), copy[0].get());
    EXPECT_EQ(tree.top[0]->data()->groupItem(), tree.top[0].get());
    copy[0]->updateDataGroupItem();
    EXPECT_EQ(tree.top[0]->children()[0]->data()->groupItem(), copy[0]->children()[0].get());

    tree.add(text(u"M0"), 0, text(u"new"));
    PBImageFileList some{tree.items[0], tree.items[1]};
    tree.top[0]->removeImageFiles(some);
    EXPECT_EQ(describe(copy), before);
    EXPECT_NE(describe(tree.top), before);
}

TEST(PBGroupItemTest, aNodeThatGoesIsForgottenByItsData) {
    auto node = PBGroupItem::groupItemWithParent(nullptr, 5, text(u"/a"));
    const auto data = node->data();
    auto copy = node->copyWithParent(nullptr);
    copy->updateDataGroupItem();
    node.reset();
    EXPECT_EQ(data->groupItem(), copy.get());
    copy.reset();
    EXPECT_EQ(data->groupItem(), nullptr);
}

TEST(PBGroupItemTest, removalConsumesTheListAndEmptiedGroups) {
    Tree tree;
    const auto first = tree.add(text(u"R5"), 1, text(u"a"));
    const auto second = tree.add(text(u"R5"), 2, text(u"b"));
    const auto third = tree.add(text(u"R5"), 2, text(u"c"));
    const auto stranger = makeItem(text(u"x"));
    PBImageFileList list{stranger, second, first, second};
    tree.top[0]->removeImageFiles(list);
    EXPECT_EQ(list, (PBImageFileList{stranger, second}));
    EXPECT_EQ(describe(tree.top), text(u"R5(2(c))"));
    list = {third};
    PBGroupItem& leaf = *tree.top[0]->children()[0];
    leaf.removeImageFiles(list);
    EXPECT_TRUE(leaf.isLeafNode()) << "an emptied leaf stays one until its parent removes it";
    EXPECT_TRUE(leaf.isEmpty());
}

/// The chain of one leaf of a tree with only the given images in it.
PBGroupItemChain chainTo(const PBGroupItem& leaf, const PBImageFileList& images) {
    auto last = std::make_shared<PBGroupItem>(nullptr, leaf.data());
    for (const auto& item : images)
        last->sortAddImageFileItem(item, SortNone, false);
    PBGroupItemChain chain{last};
    for (const PBGroupItem* node = leaf.parent(); node; node = node->parent())
        chain.insert(chain.begin(), std::make_shared<PBGroupItem>(nullptr, node->data()));
    return chain;
}

TEST(PBGroupItemTest, chainsOfACopyRemoveFromTheOriginal) {
    Tree tree;
    const auto first = tree.add(text(u"R5"), 1, text(u"a"));
    const auto second = tree.add(text(u"R5"), 2, text(u"b"));
    const auto third = tree.add(text(u"R5"), 2, text(u"c"));
    const auto fourth = tree.add(text(u"Z9"), 2, text(u"d"));
    const PBGroupItemArray live = tree.copy();
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[0]->children()[0], {second}),
                   chainTo(*live[1]->children()[0], {fourth, first})});
    EXPECT_EQ(describe(tree.top), text(u"R5(2(c) 1(a))"));
    EXPECT_EQ(describe(live), text(u"R5(2(b c) 1(a)) Z9(2(d))"));
    // The same chains again, an empty one, and one of another tree: nothing is found.
    Tree other;
    other.add(text(u"R5"), 1, text(u"a"));
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[1]->children()[0], {fourth}),
                   {},
                   chainTo(*other.top[0]->children()[0], {first})});
    EXPECT_EQ(describe(tree.top), text(u"R5(2(c) 1(a))"));
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[0]->children()[0], {third})}, [] { return true; });
    EXPECT_EQ(describe(tree.top), text(u"R5(2(c) 1(a))"));
}

TEST(PBGroupItemTest, chainsReachASingleLevelToo) {
    PBGroupItemArray top;
    const auto item = makeItem(text(u"a"));
    const auto kept = makeItem(text(u"b"));
    for (const auto& each : {item, kept})
        pushImageFileItemToWorkGroupItemArray({each, top, {}, {}, SortFileName, false});
    EXPECT_EQ(describe(top), text(u"absent(a b)"));
    removeFileItemInGroupArray(top, {chainTo(*top[0], {item})});
    EXPECT_EQ(describe(top), text(u"absent(b)"));
    removeFileItemInGroupArray(top, {chainTo(*top[0], {kept})});
    EXPECT_TRUE(top.empty());
}

TEST(PBGroupItemTest, vanishedFilesLeaveAndFoldersAreLookedUpOnce) {
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(text(u"kept.jpg")), "x");
    const support::KnownFolders folders({{1, folder.path()}, {2, folder.filePath(text(u"gone"))}});
    Tree tree;
    tree.add(text(u"A"), 1, text(u"kept.jpg"));
    tree.add(text(u"A"), 1, text(u"lost.jpg"));
    tree.add(text(u"A"), 2, text(u"lost2.jpg"));
    tree.add(text(u"B"), 1, text(u"in gone folder"), 2);
    tree.add(text(u"B"), 1, text(u"in gone folder too"), 2);
    tree.add(text(u"B"), 1, text(u"in unknown folder"), 3);
    std::vector<qint64> fileIds;
    FolderExistence existence;
    for (const auto& node : tree.top)
        node->checkFileItemExist(fileIds, existence, folders);
    EXPECT_EQ(describe(tree.top), text(u"A(1(kept.jpg)) B()"));
    std::ranges::sort(fileIds);
    EXPECT_EQ(fileIds, (std::vector<qint64>{2, 3, 4, 5, 6}));
    EXPECT_EQ(existence.gone, (std::unordered_set<qint64>{2, 3}));
    EXPECT_EQ(folders.asked, 3);
}

TEST(PBGroupItemTest, copyWalkAnnouncesFoldersAndStopsWhenTold) {
    Tree tree;
    tree.add(text(u"R5/II"), 1, text(u"a"));
    tree.add(text(u"R5/II"), 2, text(u"b"));
    QStringList seen;
    std::size_t limit = 100;
    const CopyMoveBlock block = [&](const QString& path, const auto& item) {
        seen.append(item ? path + u'=' + item->fileName() : path);
        return static_cast<std::size_t>(seen.size()) < limit;
    };
    EXPECT_TRUE(tree.top[0]->copyMoveToWithBlock(block, tagName));
    EXPECT_EQ(
        seen, (QStringList{
                  text(u"R5:II"), text(u"R5:II/Stars: 2"), text(u"R5:II/Stars: 2=b"),
                  text(u"R5:II/Stars: 1"), text(u"R5:II/Stars: 1=a")}));
    seen.clear();
    limit = 3;
    EXPECT_FALSE(tree.top[0]->copyMoveToWithBlock(block, tagName, text(u"/to")));
    EXPECT_EQ(seen.size(), 3);
    EXPECT_EQ(seen.front(), text(u"/to/R5:II"));
}

} // namespace
