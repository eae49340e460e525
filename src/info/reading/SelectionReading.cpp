#include "info/reading/SelectionReading.h"

#include "catalogue/CatalogueSchema.h"
#include "catalogue/marks/Stars.h"
#include "catalogue/marks/TagRows.h"
#include "group/FolderPaths.h"
#include "platform/tasks/MainThread.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace {

/// Pictures without a word on it are taken for this by every program.
constexpr int usualDpi = 72;

/// Of the columns below.
enum Column { UTIType, CreationDate, ImageDPI, ColorModel, ColorSyncProfile, Flag, Stars, Tag };

QStringList imageFileColumns() {
    return {QStringLiteral("UTIType"),          QStringLiteral("CreationDate"),
            QStringLiteral("ImageDPI"),         QStringLiteral("ColorModel"),
            QStringLiteral("ColorSyncProfile"), QStringLiteral("FileFlag"),
            QStringLiteral("FileStars"),        QStringLiteral("Tag")};
}

/// Absent for an empty text, too.
PBValue textOrAbsent(const QString& text) {
    return text.isEmpty() ? PBValue() : PBValue(text);
}

PBValue textOrAbsent(const PBValue& value) {
    return value.hasValue() ? textOrAbsent(value.toText()) : PBValue();
}

} // namespace

SelectionReading::Clock SelectionReading::monotonicClock() {
    QElapsedTimer timer;
    timer.start();
    return [timer] { return static_cast<double>(timer.nsecsElapsed()) / 1e9; };
}

SelectionReading::SelectionReading(PBImageFileList items, FMDatabase& database, Clock clock)
    : _database(database), _items(std::move(items)), _clock(std::move(clock)) {}

bool SelectionReading::readSome() {
    platform::assertMainThread();
    const double start = _clock();
    double now = start;
    while (!isComplete() && now - start + _longestBatch <= sliceLength) {
        const Items batch =
            Items(_items).subspan(_readCount, std::min(FileRows::most, _items.size() - _readCount));
        std::vector<qint64> fileIds;
        fileIds.reserve(batch.size());
        for (const auto& item : batch)
            fileIds.push_back(item->fileId());
        _hasFailed = !readBatch(batch, fileIds);
        _readCount = isSettled() ? _items.size() : _readCount + batch.size();
        const double before = std::exchange(now, _clock());
        // One that alone takes longer than a slice must not stop all the others.
        _longestBatch = std::min(std::max(_longestBatch, now - before), sliceLength);
    }
    return isComplete();
}

GeneralReading::GeneralReading(
    PBImageFileList items, FMDatabase& database, const group::FolderPaths& folderPaths, Clock clock)
    : SelectionReading(std::move(items), database, std::move(clock)), _folderPaths(folderPaths),
      _rows(QStringLiteral("ImageFile"), QStringLiteral("Id"), imageFileColumns()) {}

bool GeneralReading::readBatch(Items items, std::span<const qint64> fileIds) {
    const auto rows = _rows.read(_database, fileIds);
    if (!rows) return false;
    for (std::size_t index = 0; index < items.size(); ++index)
        _merged.add(factsOf(*items[index], (*rows)[index]));
    return readTagTexts();
}

bool GeneralReading::readTagTexts() {
    const auto ids = _merged.tagIds().subspan(_readTagCount);
    if (ids.empty()) return true;
    const auto texts = marks::TagRows::texts(_database, ids);
    if (!texts) return false;
    _tagTexts.insert(*texts);
    _readTagCount += ids.size();
    return true;
}

GeneralFacts GeneralReading::factsOf(const PBImageFileItem& item, const PBArray& row) {
    using Row = GeneralRow;
    GeneralFacts facts;
    if (_merged.wants(Row::FileLocation))
        facts[Row::FileLocation] = textOrAbsent(item.folderPath(_folderPaths, _folderCache));
    if (_merged.wants(Row::FileName)) facts[Row::FileName] = item.fileName();
    facts[Row::FileSize] = item.fileSize();
    facts[Row::ModificationDate] = PBDate{item.modifiedDate()};
    const QSizeF size = item.displaySize();
    if (_merged.wants(Row::ImageSize) && !size.isEmpty())
        facts[Row::ImageSize] = imageSizeValue(size.width(), size.height());
    facts[Row::ImageDPI] = usualDpi;
    facts[Row::FileFlag] = item.flagged();
    facts[Row::FileStars] = item.star();
    if (row.empty()) return facts;
    facts[Row::UTIType] = textOrAbsent(row[UTIType]);
    if (row[CreationDate].isNumber())
        facts[Row::CreationDate] = PBDate{row[CreationDate].toDouble()};
    if (row[ImageDPI].isNumber()) facts[Row::ImageDPI] = row[ImageDPI];
    facts[Row::ColorModel] = textOrAbsent(row[ColorModel]);
    facts[Row::ColorSyncProfile] = textOrAbsent(row[ColorSyncProfile]);
    facts[Row::FileFlag] = row[Flag].toInteger() != 0;
    facts[Row::FileStars] = std::clamp<qint64>(row[Stars].toInteger(), 0, marks::mostStars);
    facts.tagIds = tagIdsOf(row[Tag].toText());
    return facts;
}

MoreReading::MoreReading(PBImageFileList items, FMDatabase& database, Clock clock)
    : SelectionReading(std::move(items), database, std::move(clock)) {
    for (const MetadataCategory category : metadataCategories) {
        const QStringView table = propertyTypeOfCategory(category);
        _rows.emplace_back(
            table.toString(), QStringLiteral("FileId"),
            CatalogueSchema::metadataColumnsOfTable(table));
    }
}

bool MoreReading::readBatch(Items, std::span<const qint64> fileIds) {
    for (const MetadataCategory category : metadataCategories) {
        if (!_merged.wants(category)) continue;
        const auto rows = _rows[static_cast<std::size_t>(category)].read(_database, fileIds);
        if (!rows) return false;
        for (const PBArray& row : *rows)
            _merged.add(category, row);
    }
    return true;
}

bool MoreReading::isSettled() const {
    return std::ranges::none_of(
        metadataCategories, [this](MetadataCategory category) { return _merged.wants(category); });
}
