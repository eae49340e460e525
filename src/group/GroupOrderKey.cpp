#include "group/GroupOrderKey.h"

#include "core/LocalizedCompare.h"
#include "group/CalendarMonth.h"
#include "group/GroupTypes.h"
#include "group/ShownNumbers.h"
#include "group/ValueTexts.h"

#include <cmath>
#include <utility>

namespace group {

namespace {

/// Not a number stands behind all numbers, equal to itself.
int compareNumbers(double number, double other) {
    if (number < other) return -1;
    if (number > other) return 1;
    return static_cast<int>(std::isnan(number)) - static_cast<int>(std::isnan(other));
}

bool isNumericType(int type) {
    return (type >= FileSizeBucket && type <= Resolution) || type == Flag || type == StarRating ||
           (type >= FocalLength && type < FirstIPTC);
}

double numberAsShown(int type, double number) {
    switch (type) {
    case ExposureTime:
        return exposureAsShown(number);
    case FocalLength:
    case Aperture:
    case ExposureBias:
    case FocusDistance:
        return roundedToHundredths(number);
    default:
        return number;
    }
}

int compareInAnyCase(const QString& text, const QString& other) {
    const int order = text.compare(other, Qt::CaseInsensitive);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

} // namespace

GroupOrderKey::GroupOrderKey(int type, const PBValue& value) : _key(makeKey(type, value)) {}

/// Some numeric columns hold their numbers as texts, the speeds of films among them.
GroupOrderKey::Key GroupOrderKey::numberKey(int type, const PBValue& value) {
    if (value.isNumber()) return numberAsShown(type, value.toDouble());
    const QString text = value.toText();
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (isNumber) return number;
    return text;
}

GroupOrderKey::Key GroupOrderKey::makeKey(int type, const PBValue& value) {
    if (value.isAbsent()) return Absent{};
    if (value.isNull()) return Null{};
    if (type <= AllImages || type >= groupTypeCount) return Same{};
    if (type <= CaptureMonth) {
        const auto* date = value.getIf<PBDate>();
        if (!date) return value.toText();
        const CalendarMonth month = calendarMonthOf(*date);
        const bool byYear = type == ModificationYear || type == CaptureYear;
        return byYear ? double(month.year) : month.year * 12.0 + month.month;
    }
    if (type == Folder) {
        QString path = value.toText();
        return FolderPath{PBUtilities::recentSortKey(path), std::move(path)};
    }
    if (type == Place && value.isDictionary()) return AddressOrder::recent(value);
    if (isNumericType(type)) return numberKey(type, value);
    QString text = value.toText().normalized(QString::NormalizationForm_C);
    if (type < CameraMake || type > LensInfo) return text;
    if (type == LensInfo) text = stringWithDbKey(u"LensInfo", value, {});
    return Name{PBUtilities::recentSortKey(text), std::move(text)};
}

int GroupOrderKey::FolderPath::compare(const FolderPath& other) const {
    if (const int order = PBUtilities::compareSortKeys(sortKey, other.sortKey)) return order;
    const int order = path.compare(other.path);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int GroupOrderKey::Name::compare(const Name& other) const {
    if (const int order = PBUtilities::compareSortKeys(sortKey, other.sortKey)) return order;
    return compareInAnyCase(text, other.text); // "EOS 5" is not "EOS 05"
}

int GroupOrderKey::compare(const GroupOrderKey& other) const {
    if (_key.index() != other._key.index()) return _key.index() < other._key.index() ? -1 : 1;
    if (const auto* number = std::get_if<double>(&_key))
        return compareNumbers(*number, *std::get_if<double>(&other._key));
    if (const auto* text = std::get_if<QString>(&_key))
        return compareInAnyCase(*text, *std::get_if<QString>(&other._key));
    if (const auto* name = std::get_if<Name>(&_key))
        return name->compare(*std::get_if<Name>(&other._key));
    if (const auto* folder = std::get_if<FolderPath>(&_key))
        return folder->compare(*std::get_if<FolderPath>(&other._key));
    if (const auto* address = std::get_if<Address>(&_key))
        return (*address)->compare(**std::get_if<Address>(&other._key));
    return 0;
}

} // namespace group
