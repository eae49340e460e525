#include "info/rows/GeneralMerge.h"

#include "core/Texts.h"
#include "group/GroupTypes.h"
#include "info/rows/DateTexts.h"
#include "platform/files/TypeIdentifiers.h"
#include "platform/program/LocalizedTexts.h"

#include <algorithm>
#include <cmath>

using platform::localizedString;

namespace {

constexpr std::array<QStringView, generalRowCount> keys{
    u"FileLocation",     u"FileName",  u"UTIType",  u"FileSize",   u"CreationDate",
    u"ModificationDate", u"ImageSize", u"ImageDPI", u"ColorModel", u"ColorSyncProfile",
    u"FileFlag",         u"FileStars", u"Tag"};

bool isSame(const PBValue& left, const PBValue& right) {
    if (left.isText() && right.isText())
        return left.toText().compare(right.toText(), Qt::CaseInsensitive) == 0;
    return left == right;
}

/// The criterion of the groups with this key counts pixels.
QStringView labelKey(GeneralRow row) {
    return row == GeneralRow::ImageSize ? QStringView(u"ImageDimensions") : keyOfGeneralRow(row);
}

InfoRow::Control controlOf(GeneralRow row) {
    if (row == GeneralRow::Tag) return InfoRow::Control::Below;
    return row >= GeneralRow::FileFlag ? InfoRow::Control::Beside : InfoRow::Control::None;
}

} // namespace

QStringView keyOfGeneralRow(GeneralRow row) {
    return keys[static_cast<std::size_t>(row)];
}

QString imageSizeValue(double width, double height) {
    return QStringLiteral("%1 x %2").arg(
        QString::number(static_cast<qint64>(width)), QString::number(static_cast<qint64>(height)));
}

std::vector<qint64> tagIdsOf(const QString& joinedIds) {
    std::vector<qint64> ids;
    for (const QStringView part : QStringView(joinedIds).tokenize(u',')) {
        bool isNumber = false;
        const qint64 id = part.trimmed().toLongLong(&isNumber);
        if (isNumber && std::ranges::find(ids, id) == ids.end()) ids.push_back(id);
    }
    return ids;
}

bool GeneralMerge::wants(GeneralRow row) const {
    return row == GeneralRow::Tag || !value(row).isNull();
}

void GeneralMerge::add(const GeneralFacts& facts) {
    for (std::size_t row = 0; row < generalRowCount; ++row) {
        PBValue& merged = _values[row];
        const PBValue& added = facts.values[row];
        if (_count == 0) {
            merged = added;
        } else if (!merged.isNull() && !isSame(merged, added)) {
            merged = PBNull();
        }
    }
    for (const qint64 id : facts.tagIds) {
        if (++_tagCounts[id] == 1) _tagOrder.push_back(id);
    }
    ++_count;
}

MergedTags GeneralMerge::tags(const QHash<qint64, QString>& texts) const {
    MergedTags merged;
    for (const qint64 id : _tagOrder) {
        const QString tag = texts.value(id);
        if (tag.isEmpty()) continue;
        (_tagCounts.at(id) == _count ? merged.ofAll : merged.ofSome).append(tag);
    }
    return merged;
}

QString GeneralMerge::text(GeneralRow row, const QLocale& locale) const {
    const PBValue& shown = value(row);
    switch (row) {
    case GeneralRow::UTIType: {
        const QString kind = platform::TypeIdentifiers::description(shown.toText());
        return kind.isEmpty() ? shown.toText() : kind;
    }
    case GeneralRow::FileSize:
        return PBUtilities::stringWithFileSize(static_cast<quint64>(shown.toInteger()));
    case GeneralRow::CreationDate:
    case GeneralRow::ModificationDate:
        return DateTexts::dateTimeText(
            QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(shown.toDouble()))),
            locale);
    case GeneralRow::FileFlag:
        return localizedString(shown.toInteger() != 0 ? u"FlagState_On" : u"FlagState_Off");
    case GeneralRow::FileStars:
        return platform::localizedFormat(
            shown.toInteger() == 1 ? u"StarsState_1" : u"StarsState", {shown.toInteger()});
    default:
        return shown.toText();
    }
}

InfoRows GeneralMerge::rows(bool isComplete, const QLocale& locale) const {
    InfoRows rows;
    for (std::size_t index = 0; index < generalRowCount; ++index) {
        const auto row = static_cast<GeneralRow>(index);
        InfoRow made{
            .key = keyOfGeneralRow(row).toString(),
            .label = group::descriptionWithDbKey(labelKey(row)),
            .control = controlOf(row)};
        if (value(row).isNull()) {
            made.state = InfoRow::State::Mixed;
        } else if (!isComplete) {
            made.state = InfoRow::State::Gathering;
        } else if (value(row).isAbsent()) {
            made.state = InfoRow::State::Missing;
        } else if (row != GeneralRow::Tag) {
            made.text = text(row, locale);
        }
        rows.push_back(std::move(made));
    }
    return rows;
}
