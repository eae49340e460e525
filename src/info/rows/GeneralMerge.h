#pragma once

#include "info/rows/InfoRow.h"
#include "platform/values/PBValue.h"

#include <QHash>
#include <QLocale>
#include <QStringList>

#include <array>
#include <map>
#include <span>
#include <vector>

/// The rows of the general page, in their order.
enum class GeneralRow {
    FileLocation,
    FileName,
    UTIType,
    FileSize,
    CreationDate,
    ModificationDate,
    ImageSize,
    ImageDPI,
    ColorModel,
    ColorSyncProfile,
    FileFlag,
    FileStars,
    Tag,
};
inline constexpr std::size_t generalRowCount = 13;

/// The name of the row; of most, also the key of the localised label.
[[nodiscard]] QStringView keyOfGeneralRow(GeneralRow row);

/// The tags of photographs by what has them: tags that all have, then those of some of them, each
/// in the order in which they were met.
struct MergedTags {
    QStringList ofAll;
    QStringList ofSome;

    bool operator==(const MergedTags&) const = default;
};

/// What the catalogue says of one photograph. A row that it has nothing for is absent. Dates are
/// `PBDate`s, the pixel size is a text; `Tag` is not looked at.
struct GeneralFacts {
    std::array<PBValue, generalRowCount> values;
    /// `Tags.Id`, each once.
    std::vector<qint64> tagIds;

    [[nodiscard]] PBValue& operator[](GeneralRow row) {
        return values[static_cast<std::size_t>(row)];
    }
};

/// "4000 x 3000": the size with its fractions cut off.
[[nodiscard]] QString imageSizeValue(double width, double height);
/// The ids of a text as `ImageFile.Tag` holds it, each once; what is no number is left out.
[[nodiscard]] std::vector<qint64> tagIdsOf(const QString& joinedIds);

/// Merges what is known of photographs, one after the other.
class GeneralMerge {
public:
    /// Whether photographs still change what is said in the row: not any more, once two differ.
    [[nodiscard]] bool wants(GeneralRow row) const;
    /// The values of rows that are not wanted may be absent.
    void add(const GeneralFacts& facts);

    [[nodiscard]] std::size_t count() const { return _count; }
    /// Absent, the null marker where they differ, or the common value.
    [[nodiscard]] const PBValue& value(GeneralRow row) const {
        return _values[static_cast<std::size_t>(row)];
    }
    /// Those that any photograph has, in the order in which they were met.
    [[nodiscard]] std::span<const qint64> tagIds() const { return _tagOrder; }
    /// With the texts of those; a tag without one is left out.
    [[nodiscard]] MergedTags tags(const QHash<qint64, QString>& texts) const;

    /// All thirteen rows. Where not all photographs were added, only what can't change any more is
    /// said. Empty without photographs.
    [[nodiscard]] InfoRows rows(bool isComplete, const QLocale& locale) const;

private:
    [[nodiscard]] QString text(GeneralRow row, const QLocale& locale) const;

    std::size_t _count = 0;
    std::array<PBValue, generalRowCount> _values;
    std::map<qint64, std::size_t> _tagCounts;
    std::vector<qint64> _tagOrder;
};
