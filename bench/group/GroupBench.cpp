// The grouping against the least that any program would do: insertion against one stable sort,
// reading of metadata against one joined select, publication against copying flat arrays; and the
// memory that an item takes in a tree.

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "core/LocalizedCompare.h"
#include "group/CalendarMonth.h"
#include "group/GroupPublication.h"
#include "group/GroupingStep.h"
#include "group/ItemOrder.h"
#include "support/Ratio.h"

#include <malloc.h>
#include <sqlite3.h>

#include <QTemporaryDir>

#include <cstdlib>
#include <random>
#include <string_view>

namespace {

using namespace group;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "bench_group: %s failed\n", what);
    std::exit(1);
}

struct Photo {
    QString name;
    PBDate taken;
    QString folder;
};

/// Photographs of twelve years in 240 folders. In order they come as a scan reads them: folder by
/// folder, by name within.
std::vector<Photo> makePhotos(int count, bool inOrder) {
    std::mt19937 random(7);
    constexpr int folders = 240;
    std::vector<Photo> photos;
    for (int number = 0; number < count; ++number) {
        const int folder = number * folders / count;
        const double year = 1.1e9 + (folder % 12) * 31'557'600.0;
        photos.push_back(
            {QStringLiteral("IMG_%1.JPG").arg(number % (count / folders), 4, 10, QChar(u'0')),
             PBDate{year + static_cast<double>(random() % 20'000'000)},
             QStringLiteral("/home/anna/Pictures/Trip %1").arg(folder)});
    }
    if (!inOrder) std::ranges::shuffle(photos, random);
    return photos;
}

std::vector<std::shared_ptr<PBImageFileItem>> makeItems(const std::vector<Photo>& photos) {
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    items.reserve(photos.size());
    qint64 id = 0;
    for (const Photo& photo : photos) {
        // A name of its own for each item, as it comes out of the catalogue.
        items.push_back(PBImageFileItem::imageFileItemWithId(
            ++id, 1, QString(photo.name.constData(), photo.name.size()), 4'000'000,
            photo.taken.secondsSince1970));
    }
    return items;
}

// Insertion

/// The collator makes as many keys for the tree as for the sort: both with and without that.
enum class Keys { MadeWithin, Ready };

double insertAll(const std::vector<Photo>& photos, Keys keys) {
    const auto items = makeItems(photos);
    if (keys == Keys::Ready) {
        const auto other = PBImageFileItem::imageFileItemWithId(0, 1, QString(), 0, 0);
        for (const auto& item : items)
            bench::keep(item->sortCompare(*other, SortFileName));
    }
    PBGroupItemArray tree;
    const std::vector<int> chain{CaptureYear, Folder};
    return bench::millisecondsOf([&] {
        for (std::size_t index = 0; index < photos.size(); ++index) {
            const PBArray data{photos[index].taken, photos[index].folder};
            pushImageFileItemToWorkGroupItemArray(
                {items[index], tree, chain, data, SortFileName, false});
        }
        bench::keep(tree);
    });
}

struct SortedPhoto {
    int year;
    QCollatorSortKey folder;
    QCollatorSortKey name;
    std::shared_ptr<PBImageFileItem> item;
};

std::vector<SortedPhoto> sortKeys(
    const std::vector<Photo>& photos, const std::vector<std::shared_ptr<PBImageFileItem>>& items) {
    std::vector<SortedPhoto> keys;
    keys.reserve(photos.size());
    for (std::size_t index = 0; index < photos.size(); ++index) {
        keys.push_back(
            {-calendarMonthOf(photos[index].taken).year,
             PBUtilities::recentSortKey(photos[index].folder),
             PBUtilities::localizedSortKey(photos[index].name), items[index]});
    }
    return keys;
}

/// One stable sort, and one pass that cuts the result into groups.
void sortAndCut(std::vector<SortedPhoto>& photos) {
    const auto compareGroups = [](const SortedPhoto& photo, const SortedPhoto& other) {
        if (photo.year != other.year) return photo.year < other.year ? -1 : 1;
        return photo.folder.compare(other.folder);
    };
    std::ranges::stable_sort(photos, [&](const SortedPhoto& photo, const SortedPhoto& other) {
        const int order = compareGroups(photo, other);
        return order != 0 ? order < 0 : photo.name.compare(other.name) < 0;
    });
    std::vector<std::vector<std::shared_ptr<PBImageFileItem>>> groups;
    const SortedPhoto* previous = nullptr;
    for (SortedPhoto& photo : photos) {
        if (!previous || compareGroups(*previous, photo) != 0) groups.emplace_back();
        groups.back().push_back(photo.item);
        previous = &photo;
    }
    bench::keep(groups);
}

double sortAll(const std::vector<Photo>& photos, Keys keys) {
    const auto items = makeItems(photos);
    std::vector<SortedPhoto> sorted;
    if (keys == Keys::Ready) sorted = sortKeys(photos, items);
    return bench::millisecondsOf([&] {
        if (keys == Keys::MadeWithin) sorted = sortKeys(photos, items);
        sortAndCut(sorted);
    });
}

bool measureInsertion() {
    constexpr int count = 100'000;
    struct Case {
        const char* name;
        bool inOrder;
        Keys keys;
    };
    bool met = true;
    for (const Case& each :
         {Case{"insert 100,000 shuffled / stable sort, keys made", false, Keys::MadeWithin},
          Case{"insert 100,000 shuffled / stable sort, keys ready", false, Keys::Ready},
          Case{"insert 100,000 in order / stable sort, keys made", true, Keys::MadeWithin},
          Case{"insert 100,000 in order / stable sort, keys ready", true, Keys::Ready}}) {
        const auto photos = makePhotos(count, each.inOrder);
        met &= bench::printRatio(
            each.name, 7, [&] { return sortAll(photos, each.keys); },
            [&] { return insertAll(photos, each.keys); }, 3.0);
    }
    return met;
}

// Metadata

constexpr int rowCount = 100'000;

void fillCatalogue(FMDatabase& database) {
    PBCatalogue catalogue(database);
    require(catalogue.checkTables_FilesDb(), "making the tables");
    database.setShouldCacheStatements(true);
    require(database.beginTransaction(), "begin");
    const QString models[] = {
        QStringLiteral("EOS R5"), QStringLiteral("Z 9"), QStringLiteral("X100V")};
    for (int number = 0; number < rowCount; ++number) {
        const auto id = catalogue.insertImageFileWithDictionary(
            {{QStringLiteral("FolderId"), 1},
             {QStringLiteral("FileName"), QStringLiteral("IMG_%1.JPG").arg(number)}});
        const QString taken = QStringLiteral("20%1:%2:%3 1%4:30:59")
                                  .arg(number % 15 + 10)
                                  .arg(number % 12 + 1, 2, 10, QChar(u'0'))
                                  .arg(number % 28 + 1, 2, 10, QChar(u'0'))
                                  .arg(number % 10);
        catalogue.insertExifWithImageFileId(
            id, {{QStringLiteral("DateTimeOriginal"), taken},
                 {QStringLiteral("FNumber"), 1.4 + number % 7},
                 {QStringLiteral("ExposureTime"), 0.004},
                 {QStringLiteral("ISOSpeedRatings"), QStringLiteral("400")},
                 {QStringLiteral("FocalLength"), 50}});
        catalogue.insertTiffWithImageFileId(
            id, {{QStringLiteral("Make"), QStringLiteral("Maker")},
                 {QStringLiteral("Model"), models[number % 3]}});
    }
    require(database.commit(), "commit");
}

/// What the catalogue's own interface takes for the same columns.
void selectJoined(sqlite3* handle) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(
        handle,
        "select I.Id, E.DateTimeOriginal, T.Model, E.FNumber from ImageFile I "
        "left join Exif E on E.FileId = I.Id left join Tiff T on T.FileId = I.Id",
        -1, &statement, nullptr);
    int rows = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        bench::keep(sqlite3_column_int64(statement, 0));
        bench::keep(sqlite3_column_text(statement, 1));
        bench::keep(sqlite3_column_text(statement, 2));
        bench::keep(sqlite3_column_double(statement, 3));
        ++rows;
    }
    sqlite3_finalize(statement);
    require(rows == rowCount, "joined select");
}

bool measureMetadata() {
    const QTemporaryDir folder;
    FMDatabase database(folder.filePath(QStringLiteral("files.db")));
    require(database.open(), "open");
    fillCatalogue(database);
    const std::vector<int> chain{CaptureYear, CameraModel, 21};
    GroupDataLoader loader(chain, SortFileName);
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    for (int id = 1; id <= rowCount; ++id)
        items.push_back(PBImageFileItem::imageFileItemWithId(id, 1, QString(), 0, 0));
    std::vector<qint64> fileIds;
    for (const auto& item : items)
        fileIds.push_back(item->fileId());
    return bench::printRatio(
        "metadata of (3,16,21), 100,000 rows / joined select", 5,
        [&] { selectJoined(database.sqliteHandle()); },
        [&] {
            loader.willLoad(fileIds);
            for (const auto& item : items) {
                PBArray data(chain.size(), PBNull{});
                bench::keep(loader.loadGroupAndSortData(*item, data, database));
                bench::keep(data);
            }
        },
        2.5);
}

// Publication

bool measurePublication() {
    constexpr int groups = 1000;
    constexpr int perGroup = 1000;
    auto work = std::make_shared<PBGroupItemArray>();
    std::vector<std::vector<std::shared_ptr<PBImageFileItem>>> flat(groups);
    qint64 id = 0;
    for (int number = 0; number < groups; ++number) {
        PBGroupItem& node = PBGroupItem::sortAddGroupItem(
            *work, nullptr, Folder, QStringLiteral("/Photos/%1").arg(number));
        for (int image = 0; image < perGroup; ++image) {
            auto item = PBImageFileItem::imageFileItemWithId(
                ++id, number, QStringLiteral("IMG_%1.JPG").arg(image), 1, 1);
            flat[static_cast<std::size_t>(number)].push_back(item);
            node.sortAddImageFileItem(std::move(item), SortNone, false);
        }
    }
    const auto copyFlat = [&] {
        const auto copy = flat; // NOLINT(performance-unnecessary-copy-initialization): measured
        bench::keep(copy);
    };
    bool met = bench::printRatio(
        "publish 1,000,000 in 1,000 groups / flat vectors", 7, copyFlat,
        [&] {
            const auto publication = makeGroupPublication(work);
            bench::keep(publication);
        },
        1.5);
    // What a scan pays in all: the copy, and then the chunks that its next items change.
    met &= bench::printRatio(
        "publish and add 100 items anywhere / flat vectors", 7, copyFlat,
        [&] {
            const auto publication = makeGroupPublication(work);
            for (std::size_t number = 0; number < groups; number += 10) {
                (*work)[number]->sortAddImageFileItem(flat[number].front(), SortFileName, false);
            }
            bench::keep(publication);
        },
        1.5);
    met &= bench::printRatio(
        "publish and change every group / flat vectors", 7, copyFlat,
        [&] {
            const auto publication = makeGroupPublication(work);
            for (std::size_t number = 0; number < groups; ++number) {
                (*work)[number]->sortAddImageFileItem(flat[number].front(), SortFileName, false);
            }
            bench::keep(publication);
        },
        1.5);
    return met;
}

// Memory

bool measureMemory() {
    constexpr std::size_t count = 100'000;
    constexpr double target = 400;
    const auto photos = makePhotos(count, false);
    const auto inUse = [] {
        const auto info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t before = inUse();
    PBGroupItemArray tree;
    const std::vector<int> chain{CaptureYear, Folder};
    for (const Photo& photo : photos) {
        auto item = PBImageFileItem::imageFileItemWithId(
            1, 1, QString(photo.name.constData(), photo.name.size()), 4'000'000, 1);
        const PBArray data{photo.taken, photo.folder};
        pushImageFileItemToWorkGroupItemArray(
            {std::move(item), tree, chain, data, SortFileName, false});
    }
    const std::size_t perItem = (inUse() - before) / count;
    return bench::printFigure(
        "memory per item, with name, sort key and tree slots", static_cast<double>(perItem),
        "bytes", target);
}

} // namespace

/// Without an argument all, else the named part.
int main(int argc, char** argv) {
    const auto wants = [&](const char* part) {
        return argc < 2 || std::string_view(argv[1]) == part;
    };
    bool met = true;
    if (wants("memory")) met &= measureMemory();
    if (wants("insertion")) met &= measureInsertion();
    if (wants("metadata")) met &= measureMetadata();
    if (wants("publication")) met &= measurePublication();
    return met ? 0 : 1;
}
