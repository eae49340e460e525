#include "group/PBGroupItem.h"

#include "group/CatalogueFixture.h"
#include "group/GroupPublication.h"
#include "group/ItemOrder.h"
#include "info/geo/Addresses.h"

#include <QDateTime>

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
    return id == 3 ? u"sea"_s : QString();
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
        {u"SubLocality"_s, u"Altstadt"_s},
        {u"City"_s, u"Bern"_s},
        {u"State"_s, u"BERN"_s},
        {u"Country"_s, u"Switzerland"_s}};
    const std::tuple<int, PBValue, const char16_t*> cases[] = {
        {AllImages, {}, u"All"},
        {CaptureYear, localDate(2021, 12, 31), u"2021"},
        {ModificationMonth, localDate(2021, 3, 1), u"March 2021"},
        {ModificationYear, PBDate{std::nan("")}, u"1970"},
        {Folder, u"/Photos/Sea side"_s, u"Sea side"},
        {FileKind, PBNull{}, u"Unspecified"},
        {FileSizeBucket, 1, u"10 ~ 50K"},
        {PixelCountBucket, 12, u"Unknow Group Type"},
        {Flag, 1, u"Flagged"},
        {StarRating, 0, u"No stars"},
        {StarRating, 6, u"Unknow Group Type"},
        {Tags, u"3,4"_s, u"sea"},
        {Tags, u"4"_s, u"No Tags"},
        {Tags, PBNull{}, u"Unspecified"},
        {Place, {}, u"No Location"},
        {Place, PBNull{}, u"Unknown Location"},
        {Place, address({}), u"Unknown Location"},
        {Place, place, u"Altstadt, Bern, Switzerland"},
        {22, 0.004, u"1/250 s"},
        {40, PBNull{}, u"Unspecified"},
        {64, 1, u"Unknow Group Type"},
        {-3, 1, u"Unknow Group Type"}};
    for (const auto& [type, value, name] : cases)
        EXPECT_EQ(nameOf(type, value), QStringView(name)) << type;
    for (int month = 1; month <= 12; ++month)
        EXPECT_TRUE(nameOf(CaptureMonth, localDate(2004, month, 15)).endsWith(u" 2004"_s));
}

TEST(PBGroupItemTest, longNamesAndFolderNames) {
    const auto place = PBGroupItem::groupItemWithParent(
        nullptr, Place,
        address(
            {{u"City"_s, u"Bern"_s},
             {u"FormattedAddressLines"_s, PBArray{u"Kramgasse 1/2"_s, u"3011 Bern"_s}}}));
    EXPECT_EQ(place->displayName(tagName), u"Bern"_s);
    EXPECT_EQ(place->fullDisplayName(tagName), u"Kramgasse 1/2, 3011 Bern"_s);
    EXPECT_EQ(place->groupCopyPathName(tagName), u"Kramgasse 1:2, 3011 Bern"_s);
    const auto folder = PBGroupItem::groupItemWithParent(nullptr, Folder, u"/Photos/Sea side"_s);
    EXPECT_EQ(folder->fullDisplayName(tagName), u"/Photos/Sea side"_s);
    EXPECT_EQ(folder->groupCopyPathName(tagName), u"Sea side"_s);

    const auto folderName = [](const QString& title) {
        return PBGroupItem::groupItemWithParent(nullptr, 35, title)->groupCopyPathName(tagName);
    };
    EXPECT_EQ(folderName(u".."_s), u"_.."_s);
    EXPECT_EQ(folderName(u"../../etc"_s), u"..:..:etc"_s);
    EXPECT_EQ(folderName(QString()), u"_"_s);
    EXPECT_LE(folderName(QString(1000, QChar(u'\u00e9'))).toUtf8().size(), 255);
    EXPECT_TRUE(folderName(u"\U0001F4F7"_s.repeated(100)).isValidUtf16());
}

TEST(PBGroupItemTest, valuesOfOneGroupCompareEqual) {
    const auto compare = [](int type, PBValue value, PBValue other) {
        const auto node = PBGroupItem::groupItemWithParent(nullptr, type, std::move(value));
        const auto second = PBGroupItem::groupItemWithParent(nullptr, type, std::move(other));
        const auto order = node->sortCompare(*second);
        EXPECT_EQ(second->sortCompare(*node), -order) << type;
        return order;
    };
    const double nan = std::nan("");
    const std::tuple<int, PBValue, PBValue, int> cases[] = {
        {CaptureYear, PBDate{-INFINITY}, PBDate{INFINITY}, -1},
        {26, u"400"_s, u"1600"_s, -1},
        {26, u"400"_s, 400, 0},
        {21, 2.8, u"wide open"_s, -1},
        {21, nan, 8, 1},
        {21, nan, nan, 0},
        {CameraMake, PBNull{}, u"Canon"_s, 1},
        {Place, {}, PBNull{}, 1},
        {AllImages, {}, {}, 0},
        {70, 1, 2, 0},
        {Place, address({}), address({{u"Zip"_s, 1}}), 0}};
    for (const auto& [type, value, other, order] : cases)
        EXPECT_EQ(compare(type, value, other), order)
            << type << ' ' << value.toText().toStdString();
}

TEST(PBGroupItemTest, placesOrderAsTheirDictionariesCompare) {
    std::mt19937 random(17);
    const QString keys[] = {u"Country"_s, u"State"_s, u"City"_s, u"SubLocality"_s, u"Name"_s};
    const PBValue values[] = {u"a"_s, u"B"_s, u"b"_s, u"10"_s, u"9"_s, QString(), 7};
    std::vector<PBValue> places{PBValue(), PBNull{}};
    for (int number = 0; number < 60; ++number) {
        PBDictionary entries;
        for (const QString& key : keys)
            if (random() % 2) entries[key] = values[random() % std::size(values)];
        if (random() % 3 == 0)
            entries[u"FormattedAddressLines"_s] = PBArray{values[random() % 4], u"x"_s};
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

TEST(PBGroupItemTest, copiesShareDataAndItemsAndNothingElse) {
    Tree tree;
    for (int number = 0; number < 50; ++number)
        tree.add(u"M%1"_s.arg(number % 3), number % 2, u"%1"_s.arg(number));
    const PBGroupItemArray copy = tree.copy();
    const QString before = describe(tree.top);
    EXPECT_EQ(describe(copy), before);
    EXPECT_EQ(copy[0]->data(), tree.top[0]->data());
    EXPECT_EQ(copy[0]->children()[0]->parent(), copy[0].get());
    EXPECT_EQ(tree.top[0]->data()->groupItem(), tree.top[0].get());
    copy[0]->updateDataGroupItem();
    EXPECT_EQ(tree.top[0]->children()[0]->data()->groupItem(), copy[0]->children()[0].get());

    tree.add(u"M0"_s, 0, u"new"_s);
    PBImageFileList some{tree.items[0], tree.items[1]};
    tree.top[0]->removeImageFiles(some);
    EXPECT_EQ(describe(copy), before);
    EXPECT_NE(describe(tree.top), before);
}

TEST(PBGroupItemTest, aNodeThatGoesIsForgottenByItsData) {
    auto node = PBGroupItem::groupItemWithParent(nullptr, 5, u"/a"_s);
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
    const auto first = tree.add(u"R5"_s, 1, u"a"_s);
    const auto second = tree.add(u"R5"_s, 2, u"b"_s);
    const auto third = tree.add(u"R5"_s, 2, u"c"_s);
    const auto stranger = makeItem(u"x"_s);
    PBImageFileList list{stranger, second, first, second};
    tree.top[0]->removeImageFiles(list);
    EXPECT_EQ(list, (PBImageFileList{stranger, second}));
    EXPECT_EQ(describe(tree.top), u"R5(2(c))"_s);
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
    const auto first = tree.add(u"R5"_s, 1, u"a"_s);
    const auto second = tree.add(u"R5"_s, 2, u"b"_s);
    const auto third = tree.add(u"R5"_s, 2, u"c"_s);
    const auto fourth = tree.add(u"Z9"_s, 2, u"d"_s);
    const PBGroupItemArray live = tree.copy();
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[0]->children()[0], {second}),
                   chainTo(*live[1]->children()[0], {fourth, first})});
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
    EXPECT_EQ(describe(live), u"R5(2(b c) 1(a)) Z9(2(d))"_s);
    // The same chains again, an empty one, and one of another tree: nothing is found.
    Tree other;
    other.add(u"R5"_s, 1, u"a"_s);
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[1]->children()[0], {fourth}),
                   {},
                   chainTo(*other.top[0]->children()[0], {first})});
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
    removeFileItemInGroupArray(
        tree.top, {chainTo(*live[0]->children()[0], {third})}, [] { return true; });
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
}

TEST(PBGroupItemTest, vanishedFilesLeaveAndFoldersAreLookedUpOnce) {
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(u"kept.jpg"_s), "x");
    const support::KnownFolders folders({{1, folder.path()}, {2, folder.filePath(u"gone"_s)}});
    Tree tree;
    tree.add(u"A"_s, 1, u"kept.jpg"_s);
    tree.add(u"A"_s, 1, u"lost.jpg"_s);
    tree.add(u"A"_s, 2, u"lost2.jpg"_s);
    tree.add(u"B"_s, 1, u"in gone folder"_s, 2);
    tree.add(u"B"_s, 1, u"in gone folder too"_s, 2);
    tree.add(u"B"_s, 1, u"in unknown folder"_s, 3);
    std::vector<qint64> fileIds;
    FolderExistence existence;
    for (const auto& node : tree.top)
        node->checkFileItemExist(fileIds, existence, folders);
    EXPECT_EQ(describe(tree.top), u"A(1(kept.jpg)) B()"_s);
    std::ranges::sort(fileIds);
    EXPECT_EQ(fileIds, (std::vector<qint64>{2, 3, 4, 5, 6}));
    EXPECT_EQ(existence.gone, (std::unordered_set<qint64>{2, 3}));
    EXPECT_EQ(folders.asked, 3);
}

TEST(PBGroupItemTest, copyWalkAnnouncesFoldersAndStopsWhenTold) {
    Tree tree;
    tree.add(u"R5/II"_s, 1, u"a"_s);
    tree.add(u"R5/II"_s, 2, u"b"_s);
    QStringList seen;
    std::size_t limit = 100;
    const CopyMoveBlock block = [&](const QString& path, const auto& item) {
        seen.append(item ? path + u'=' + item->fileName() : path);
        return static_cast<std::size_t>(seen.size()) < limit;
    };
    EXPECT_TRUE(tree.top[0]->copyMoveToWithBlock(block, tagName));
    EXPECT_EQ(
        seen, (QStringList{
                  u"R5:II"_s, u"R5:II/Stars: 2"_s, u"R5:II/Stars: 2=b"_s, u"R5:II/Stars: 1"_s,
                  u"R5:II/Stars: 1=a"_s}));
    seen.clear();
    limit = 3;
    EXPECT_FALSE(tree.top[0]->copyMoveToWithBlock(block, tagName, u"/to"_s));
    EXPECT_EQ(seen.size(), 3);
    EXPECT_EQ(seen.front(), u"/to/R5:II"_s);
}

} // namespace
