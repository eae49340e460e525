#include "catalogue/marks/Stars.h"
#include "core/Paths.h"
#include "group/CalendarMonth.h"
#include "group/PBGroupItem.h"
#include "places/Addresses.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// Longest name of a folder on the common file systems, in bytes of UTF-8, less some room for what
/// a copy adds to make it unique.
constexpr qsizetype maximalFolderNameBytes = 240;

QString unknownType() {
    return QStringLiteral("Unknow Group Type");
}

QString dateText(int type, const PBValue& value) {
    const auto* date = value.getIf<PBDate>();
    if (!date) return value.toText();
    const group::CalendarMonth month = group::calendarMonthOf(*date);
    const QString year = QString::number(month.year);
    if (type == group::ModificationYear || type == group::CaptureYear) return year;
    return localizedFormat(QStringLiteral("month_%1").arg(month.month), {year});
}

QString folderText(const QString& path) {
    const QStringList components = PBUtilities::pathComponents(path);
    return components.isEmpty() ? QString() : components.last();
}

QString bucketText(const PBValue& value) {
    const QString label = group::sizeBucketLabel(value.toInteger());
    return label.isEmpty() ? unknownType() : label;
}

QString starText(const PBValue& value) {
    const qint64 stars = value.toInteger();
    if (stars == 0) return localizedString(u"NoStar");
    if (stars < 1 || stars > marks::mostStars) return unknownType();
    return localizedFormat(stars == 1 ? u"Star" : u"Stars", {stars});
}

QString placeText(const PBValue& value) {
    if (value.isAbsent()) return localizedString(u"NoGPS");
    const QString place = PBUtilities::shortLocationStringForAddressDictionary(value);
    return place.isEmpty() ? localizedString(u"Unknown Location") : place;
}

QString columnText(int type, const PBValue& value, const group::TagLookup& tagWithTagId) {
    const QString key = group::dbKeyWithGroupType(type);
    if (key.isEmpty()) return unknownType();
    if (value.isAbsent()) return localizedString(u"Unspecified");
    return group::stringWithDbKey(key, value, tagWithTagId);
}

/// A single component of a path, whatever the metadata of an image say.
QString folderName(QString name) {
    name.replace(u'/', u':');
    name.remove(QChar(u'\0'));
    while (name.toUtf8().size() > maximalFolderNameBytes) {
        name.chop(name.size() > 1 && name.back().isLowSurrogate() ? 2 : 1);
    }
    if (name.isEmpty() || name == u"." || name == u"..") name.prepend(u'_');
    return name;
}

} // namespace

QString PBGroupItem::displayName(const group::TagLookup& tagWithTagId) const {
    const int groupType = type();
    if (value().isNull() && groupType != group::Tags)
        return localizedString(groupType == group::Place ? u"Unknown Location" : u"Unspecified");
    switch (groupType) {
    case group::AllImages:
        return localizedString(u"All");
    case group::ModificationYear:
    case group::ModificationMonth:
    case group::CaptureYear:
    case group::CaptureMonth:
        return dateText(groupType, value());
    case group::Folder:
        return folderText(value().toText());
    case group::FileSizeBucket:
    case group::PixelCountBucket:
        return bucketText(value());
    case group::Flag:
        return localizedString(value().toInteger() != 0 ? u"Flagged" : u"Unflagged");
    case group::StarRating:
        return starText(value());
    case group::Tags: {
        const QString tags = group::stringWithDbKey(u"Tag", value(), tagWithTagId);
        return tags.isEmpty() ? localizedString(u"NoTag") : tags;
    }
    case group::Place:
        return placeText(value());
    default:
        return columnText(groupType, value(), tagWithTagId);
    }
}

QString PBGroupItem::fullDisplayName(const group::TagLookup& tagWithTagId) const {
    if (type() == group::Folder && value().hasValue()) return value().toText();
    if (type() == group::Place) {
        if (QString address = PBUtilities::longLocationStringForAddressDictionary(value());
            !address.isEmpty())
            return address;
    }
    return displayName(tagWithTagId);
}

QString PBGroupItem::groupCopyPathName(const group::TagLookup& tagWithTagId) const {
    const QString address = type() == group::Place
                                ? PBUtilities::longLocationStringForAddressDictionary(value())
                                : QString();
    return folderName(address.isEmpty() ? displayName(tagWithTagId) : address);
}

group::IconName PBGroupItem::displayIcon() const {
    using Kind = group::IconName::Kind;
    const bool isSet = value().toInteger() != 0;
    switch (type()) {
    case group::StarRating:
        return {Kind::Named, isSet ? QStringLiteral("star_16_s") : QStringLiteral("star_16_n")};
    case group::Flag:
        return {Kind::Named, isSet ? QStringLiteral("flag_16_s") : QStringLiteral("flag_16_n")};
    case group::FileKind:
        if (value().hasValue()) return {Kind::FileExtension, value().toText()};
        [[fallthrough]];
    default:
        return group::imageWithGroupType(type());
    }
}

bool PBGroupItem::copyMoveToWithBlock(
    const group::CopyMoveBlock& block, const group::TagLookup& tagWithTagId,
    const QString& parentPath) const {
    const QString name = groupCopyPathName(tagWithTagId);
    const QString path = parentPath.isEmpty() ? name : platform::pathInFolder(parentPath, name);
    if (!block(path, nullptr)) return false;
    for (const auto& item : imageFiles())
        if (!block(path, item)) return false;
    for (const auto& child : _children)
        if (!child->copyMoveToWithBlock(block, tagWithTagId, path)) return false;
    return true;
}
