#include "group/PBGroupItem.h"

#include "group/CatalogueFixture.h"
#include "group/GroupPublication.h"

using namespace group;
using support::describe;
using support::entries;
using support::makeItem;

namespace {

QString tagName(qint64 id) {
    return id == 3 ? u"sea"_s : QString();
}

std::unique_ptr<PBGroupItem> nodeOf(int type, PBValue value) {
    return PBGroupItem::groupItemWithParent(nullptr, type, std::move(value));
}

/// A tree by two links, of images told as model, stars and name.
struct Tree {
    explicit Tree(const char* told) {
        for (const QString& image : support::words(told))
            add(image);
    }
    void add(const QString& told) {
        const QStringList parts = told.split(u',');
        items.push_back(makeItem(parts[2], std::ssize(items) + 1));
        support::insertByModelAndStars(top, parts[0], parts[1].toInt(), items.back());
    }
    [[nodiscard]] PBGroupItemArray copy() const {
        PBGroupItemArray array;
        for (const auto& node : top)
            array.push_back(node->copyWithParent(nullptr));
        return array;
    }
    PBGroupItemArray top;
    PBImageFileList items;
};

TEST(PBGroupItemTest, namesByType) {
    const auto place = entries("SubLocality=Altstadt City=Bern State=BERN Country=Switzerland");
    const std::tuple<int, PBValue, const char16_t*> cases[] = {
        {AllImages, {}, u"All"},
        {ModificationMonth, PBDate{1614600000}, u"March 2021"},
        {ModificationYear, PBDate{std::nan("")}, u"1970"},
        {FileKind, PBNull{}, u"Unspecified"},
        {FileSizeBucket, 1, u"10 ~ 50K"},
        {PixelCountBucket, 12, u"Unknow Group Type"},
        {Flag, 1, u"Flagged"},
        {StarRating, 0, u"No stars"},
        {StarRating, 5, u"5 stars"},
        {Flag, 0, u"Unflagged"},
        {StarRating, 6, u"Unknow Group Type"},
        {Tags, u"3,4"_s, u"sea"},
        {Tags, u"4"_s, u"No Tags"},
        {Place, {}, u"No Location"},
        {Place, PBNull{}, u"Unknown Location"},
        {Place, PBDictionary(), u"Unknown Location"},
        {Place, place, u"Altstadt, Bern, Switzerland"},
        {22, 0.004, u"1/250 s"},
        {64, 1, u"Unknow Group Type"}};
    for (const auto& [type, value, name] : cases)
        EXPECT_EQ(nodeOf(type, value)->displayName(tagName), QStringView(name)) << type;
    using Kind = IconName::Kind;
    const std::tuple<int, PBValue, IconName> icons[] = {
        {StarRating, 1, {Kind::Named, u"star_16_s"_s}},
        {Flag, 0, {Kind::Named, u"flag_16_n"_s}},
        {FileKind, u"png"_s, {Kind::FileExtension, u"png"_s}},
        {FileKind, PBNull{}, {Kind::TypeIdentifier, u"public.image"_s}}};
    for (const auto& [type, value, icon] : icons)
        EXPECT_EQ(nodeOf(type, value)->displayIcon(), icon);
}

TEST(PBGroupItemTest, longNamesAndFolderNames) {
    const PBArray lines{u"Kramgasse 1/2"_s, u"3011 Bern"_s};
    const auto place =
        nodeOf(Place, PBDictionary{{u"City"_s, u"Bern"_s}, {u"FormattedAddressLines"_s, lines}});
    EXPECT_EQ(place->displayName(tagName), u"Bern"_s);
    EXPECT_EQ(place->fullDisplayName(tagName), u"Kramgasse 1/2, 3011 Bern"_s);
    EXPECT_EQ(place->groupCopyPathName(tagName), u"Kramgasse 1:2, 3011 Bern"_s);
    const auto folder = nodeOf(Folder, u"/Photos/Sea side"_s);
    EXPECT_EQ(folder->fullDisplayName(tagName), u"/Photos/Sea side"_s);
    EXPECT_EQ(folder->groupCopyPathName(tagName), u"Sea side"_s);

    const QString camera = u"\U0001F4F7"_s;
    const std::pair<QString, QString> titles[] = {
        {u".."_s, u"_.."_s},
        {u"../../etc"_s, u"..:..:etc"_s},
        {{}, u"_"_s},
        {u"."_s, u"_."_s},
        {u"a\0b"_s, u"ab"_s},
        {u"é"_s.repeated(1000), u"é"_s.repeated(120)},
        {u'x' + camera.repeated(100), u'x' + camera.repeated(59)}};
    for (const auto& [title, folderName] : titles)
        EXPECT_EQ(nodeOf(35, title)->groupCopyPathName(tagName), folderName);
}

TEST(PBGroupItemTest, valuesOfOneGroupCompareEqual) {
    const auto compare = [](int type, const PBValue& value, const PBValue& other) {
        const auto node = nodeOf(type, value);
        const auto second = nodeOf(type, other);
        const auto order = node->sortCompare(*second);
        EXPECT_EQ(second->sortCompare(*node), -order) << type;
        return order;
    };
    const double nan = std::nan("");
    const std::tuple<int, PBValue, PBValue, int> cases[] = {
        {CaptureYear, PBDate{-INFINITY}, PBDate{INFINITY}, -1},
        {Folder, u"/a10"_s, u"/a9"_s, 1},
        {Folder, u"/Day 1"_s, u"/Day 01"_s, 1},
        {64, 1, 2, 0},
        {26, u"400"_s, u"1600"_s, -1},
        {CameraModel, u"iPhone 6"_s, u"iPhone 11"_s, -1},
        {CameraModel, u"EOS 5"_s, u"EOS 05"_s, 1},
        {CameraModel, u"NIKON Z 6"_s, u"Nikon Z 6"_s, 0},
        {LensInfo, u"24,70,2.8,2.8"_s, u"24.0,70,2.799999,2.8"_s, 0},
        {ExposureTime, 0.77, 0.8, -1},
        {ExposureTime, 0.008, 0.00801, 0}, // both read 1/125 s
        {ExposureTime, 90.0, 90.1, 0},
        {Aperture, 2.8, 2.79999995, 0},
        {39, u"Cafe\u0301"_s, u"caf\u00E9"_s, 0},
        {21, 2.8, u"wide open"_s, -1},
        {21, nan, 8, 1},
        {21, nan, nan, 0},
        {CameraMake, PBNull{}, u"Canon"_s, 1},
        {Place, PBDictionary(), PBDictionary{{u"Zip"_s, 1}}, 0}};
    for (const auto& [type, value, other, order] : cases)
        EXPECT_EQ(compare(type, value, other), order)
            << type << ' ' << value.toText().toStdString();
    // Which types are ordered by number: 50 before 100, as text the other way round.
    const std::set<int> numeric{FileSizeBucket, PixelCountBucket, Resolution, Flag, StarRating};
    for (int type = Folder + 1; type < groupTypeCount; ++type) {
        // Of cameras and lenses the numbers in their names.
        const bool isNumeric = numeric.contains(type) || (type >= CameraMake && type < FirstIPTC);
        EXPECT_EQ(compare(type, 50, 100) == -1, isNumeric) << type;
    }
}

TEST(PBGroupItemTest, placesOrderByTheLargestPartThatDiffers) {
    const auto compare = [](const PBValue& left, const PBValue& right) {
        return GroupOrderKey(Place, left).compare(GroupOrderKey(Place, right));
    };
    // What has less content comes later.
    std::vector<PBValue> ascending;
    for (const char* told :
         {"Country=Austria State=Wien City=Zell", "Country=germany State=Bavaria City=Zorneding",
          "Country=Germany State=Hesse City=K2", "Country=Germany State=Hesse City=K10",
          "Country=Germany City=Aachen", "City=Ulm SubLocality=b", "City=Ulm SubLocality=c",
          "Name=a", "Name=b", "Latitude=1"})
        ascending.push_back(entries(told));
    ascending.insert(ascending.end(), {PBNull{}, {}});
    support::expectAscending(ascending, compare);
    // The same long text is the same place, whatever else differs.
    const auto lined = [](const QString& country, const PBArray& lines) {
        return PBDictionary{{u"Country"_s, country}, {u"FormattedAddressLines"_s, lines}};
    };
    EXPECT_EQ(compare(lined(u"X"_s, {u"A"_s, u"B"_s}), lined(u"Y"_s, {u"a"_s, u"b"_s})), 0);
}

TEST(PBGroupItemTest, copiesShareDataAndItemsAndNothingElse) {
    Tree tree("M0,0,a M1,1,b M2,0,c M0,1,d M0,0,e M1,0,f M0,1,g");
    const PBGroupItemArray copy = tree.copy();
    const QString before = describe(tree.top);
    EXPECT_EQ(describe(copy), before);
    EXPECT_EQ(copy[0]->data(), tree.top[0]->data());
    EXPECT_EQ(copy[0]->children()[0]->parent(), copy[0].get());
    EXPECT_EQ(tree.top[0]->data()->groupItem(), tree.top[0].get());
    copy[0]->updateDataGroupItem();
    EXPECT_EQ(tree.top[0]->children()[0]->data()->groupItem(), copy[0]->children()[0].get());

    tree.add(u"M0,1,new"_s);
    PBImageFileList some{tree.items[0], tree.items[1], tree.items[4]};
    tree.top[0]->removeImageFiles(some);
    EXPECT_EQ(describe(copy), before);
    EXPECT_EQ(describe(tree.top), u"M0(1(d g new)) M1(1(b) 0(f)) M2(0(c))"_s);
    EXPECT_EQ(some, PBImageFileList{tree.items[1]}) << "what is not below the node";

    auto node = nodeOf(Folder, u"/a"_s);
    const auto data = node->data();
    auto twin = node->copyWithParent(nullptr);
    twin->updateDataGroupItem();
    node.reset();
    EXPECT_EQ(data->groupItem(), twin.get());
    twin.reset();
    EXPECT_EQ(data->groupItem(), nullptr) << "a node that goes is forgotten by its data";
}

/// The chain of one leaf of a tree with only the given image in it.
PBGroupItemChain chainTo(const PBGroupItem& leaf, const PBImageFileList& images) {
    auto last = std::make_shared<PBGroupItem>(nullptr, leaf.data());
    for (const auto& item : images)
        last->sortAddImageFileItem(item, SortNone, false);
    return {std::make_shared<PBGroupItem>(nullptr, leaf.parent()->data()), last};
}

TEST(PBGroupItemTest, chainsOfACopyRemoveFromTheOriginal) {
    Tree tree("R5,1,a R5,2,b R5,2,c Z9,2,d");
    const auto& items = tree.items;
    const PBGroupItemArray live = tree.copy();
    const auto& leaves = leavesOf(live);
    const auto taken = removeFileItemInGroupArray(
        tree.top, {chainTo(*leaves[0], {items[1]}), chainTo(*leaves[2], {items[3], items[0]})});
    EXPECT_EQ(taken, (PBImageFileList{items[1], items[3]})) << "and not what was not there";
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
    EXPECT_EQ(describe(live), u"R5(2(b c) 1(a)) Z9(2(d))"_s);
    // The same chain again, and an empty one: nothing is found.
    removeFileItemInGroupArray(tree.top, {chainTo(*leaves[2], {items[3]}), {}});
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
    const std::vector chains{chainTo(*leaves[0], {items[2]}), chainTo(*leaves[1], {items[0]})};
    removeFileItemInGroupArray(tree.top, chains, [] { return true; });
    EXPECT_EQ(describe(tree.top), u"R5(2(c) 1(a))"_s);
    int asked = 0; // before the chain and its one top-level group, then before the next chain
    removeFileItemInGroupArray(tree.top, chains, [&] { return ++asked > 2; });
    EXPECT_EQ(describe(tree.top), u"R5(1(a))"_s);
}

TEST(PBGroupItemTest, vanishedFilesLeaveWithTheGroupsThatTheyEmpty) {
    Tree tree("A,1,kept A,1,lost A,2,lost B,1,lost");
    for (const auto& node : tree.top)
        node->checkFileItemExist([](auto& item) { return item.fileName() == u"lost"; });
    EXPECT_EQ(describe(tree.top), u"A(1(kept)) B()"_s);
}

TEST(PBGroupItemTest, copyWalkAnnouncesFoldersAndStopsWhenTold) {
    const Tree tree("R5/II,1,a R5/II,2,b");
    QStringList seen;
    int limit = 100;
    const CopyMoveBlock block = [&](const QString& path, const auto& item) {
        seen.append(item ? path + u'=' + item->fileName() : path);
        return seen.size() < limit;
    };
    EXPECT_TRUE(tree.top[0]->copyMoveToWithBlock(block, tagName));
    EXPECT_EQ(
        seen.join(u' '), u"R5:II R5:II/2 stars R5:II/2 stars=b R5:II/1 star R5:II/1 star=a"_s);
    seen.clear();
    limit = 3;
    EXPECT_FALSE(tree.top[0]->copyMoveToWithBlock(block, tagName, u"/to"_s));
    EXPECT_EQ(std::pair(seen.size(), seen.front()), std::pair(qsizetype{3}, u"/to/R5:II"_s));
}

TEST(PBImageFileItemTest, searchLooksAtTheNameAndFilterBitsCombineAsAnd) {
    // Words in any order, all of them; with the accent as one character or as two.
    const auto item = makeItem(u"Trip to Étretat, the cafe\u0301_2.jpg"_s);
    for (const auto& search :
         {QString(), u"  "_s, u"ÉTRETAT"_s, u"2.JPG"_s, u" caf\u00E9 "_s, u"2 TRIP"_s,
          u"\"the caf\u00E9\" trip"_s, u"\u201Cto étr"_s, u"\"\" trip"_s})
        EXPECT_TRUE(item->isMatchedForSearchString(search, 0)) << qPrintable(search);
    for (const auto& search : {u"sea"_s, u"trip sea"_s, u"\"trip the\""_s, u"\"2 \""_s})
        EXPECT_FALSE(item->isMatchedForSearchString(search, 0)) << qPrintable(search);
    for (quint64 passed = 0; passed <= (FilterFlagged | FilterRated); ++passed) {
        item->setFlagged((passed & FilterFlagged) != 0);
        item->setStar((passed & FilterRated) != 0 ? 4 : 0);
        for (quint64 filter = 0; filter <= (FilterFlagged | FilterRated); ++filter)
            EXPECT_EQ(item->isMatchedForSearchString({}, filter), (passed & filter) == filter);
    }
}

TEST(PBImageFileItemTest, keysThatAreMissingAndSortTypesWithoutAnOrder) {
    const auto item = makeItem(u"a"_s, 1, 0, 1000);
    const auto other = makeItem(u"b"_s, 2, 0, 2000);
    item->setImageSize({100, 50});
    for (const auto& [size, order] :
         {std::pair(QSizeF(50, 100), 0), {{1e12, 1e12}, -1}, {{std::nan(""), 5}, 1}}) {
        other->setImageSize(size);
        EXPECT_EQ(item->sortCompare(*other, SortPixelArea), order);
    }
    for (const int type : {-1, 0, 7}) {
        EXPECT_EQ(item->sortCompare(*other, type), -2) << type;
        EXPECT_EQ(item->sortCompare(*item, type), 0) << type;
    }
    // The date of modification stands in; kinds without an extension have no order.
    const std::tuple<int, PBValue, PBValue, int> cases[] = {
        {SortDateTaken, {}, PBDate{500}, 1},
        {SortDateTaken, PBDate{500}, PBNull{}, -1},
        {SortKind, {}, u"jpg"_s, -2},
        {SortKind, u"jpg"_s, PBNull{}, -2},
        {SortKind, u"jpg"_s, u"JPG"_s, 0}};
    for (const auto& [type, data, otherData, order] : cases) {
        item->setSortData(data);
        other->setSortData(otherData);
        EXPECT_EQ(item->sortCompare(*other, type), order) << type << data.toText().toStdString();
    }
}

TEST(PBImageFileItemTest, quarterTurnsExchangeWidthAndHeight) {
    const auto item = makeItem(u"a"_s);
    item->setImageSize({300, 200});
    for (const double angle : {90., 270., 450., -90., 0., 180., 45., 89.9, std::nan("")}) {
        item->setRotateAngle(angle);
        const bool isTurned = std::fmod(std::abs(angle), 180) == 90;
        EXPECT_EQ(item->displaySize(), isTurned ? QSizeF(200, 300) : QSizeF(300, 200)) << angle;
    }
}

TEST(PBImageFileItemTest, foldersWithAPathAreAskedForOnce) {
    const support::KnownFolders folders({{1, u"/p"_s}, {3, u"/"_s}});
    FolderPathCache cache;
    QStringList paths;
    // The last folder has no path: an unmounted root may come back.
    for (const qint64 folderId : {1, 1, 3, 3, 4, 4})
        paths += makeItem(u"a"_s, 1, 0, 0, folderId)->filePath(folders, cache);
    EXPECT_EQ(paths, (QStringList{u"/p/a"_s, u"/p/a"_s, u"/a"_s, u"/a"_s, {}, {}}));
    EXPECT_EQ(folders.asked, 4);
    EXPECT_EQ(makeItem(u"a"_s)->filePath(folders), u"/p/a"_s);
}

TEST(PBImageFileItemTest, aRenamedItemSortsByItsNewNameAndFormerNamesStayValid) {
    const auto item = makeItem(u"IMG_2"_s);
    const auto other = makeItem(u"IMG_10"_s);
    const QString& former = item->fileName();
    EXPECT_EQ(item->sortCompare(*other, SortFileName), -1);
    item->setFileName(u"IMG_11"_s);
    EXPECT_EQ(item->sortCompare(*other, SortFileName), 1);
    EXPECT_EQ(former + item->fileName(), u"IMG_2IMG_11"_s);
    // Names that only look alike have their places, too.
    for (const auto& [name, order] : {std::pair(u"img_10"_s, 1), {u"IMG_010"_s, -1}}) {
        item->setFileName(name);
        EXPECT_EQ(item->sortCompare(*other, SortFileName), order) << name.toStdString();
        EXPECT_EQ(other->sortCompare(*item, SortFileName), -order);
    }
    item->setFileName(other->fileName());
    EXPECT_EQ(item->sortCompare(*other, SortFileName), 0) << "in another folder";
    item->setStar(std::numeric_limits<quint64>::max());
    EXPECT_EQ(item->star(), 4294967295U);
}

} // namespace
