#include "codec/metadata/IptcProperties.h"

#include "codec/metadata/ExifProperties.h"
#include "codec/metadata/TextDecoding.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>

namespace codec {

namespace {

/// A data set of IPTC's application record (number 2), and the XMP property that stands for it.
struct DataSet {
    std::uint16_t number;
    QStringView key;
    bool repeatable;
    const char* xmp;
};

/// IIM 4.2 and the mapping of the IPTC photo metadata standard.
constexpr DataSet dataSets[] = {
    {3, u"ObjectTypeReference", false, nullptr},
    {4, u"ObjectAttributeReference", true, "Xmp.iptc.IntellectualGenre"},
    {5, u"ObjectName", false, "Xmp.dc.title"},
    {7, u"EditStatus", false, nullptr},
    {8, u"EditorialUpdate", false, nullptr},
    {10, u"Urgency", false, "Xmp.photoshop.Urgency"},
    {12, u"SubjectReference", true, "Xmp.iptc.SubjectCode"},
    {15, u"Category", false, "Xmp.photoshop.Category"},
    {20, u"SupplementalCategory", true, "Xmp.photoshop.SupplementalCategories"},
    {22, u"FixtureIdentifier", false, nullptr},
    {25, u"Keywords", true, "Xmp.dc.subject"},
    {26, u"ContentLocationCode", true, nullptr},
    {27, u"ContentLocationName", true, nullptr},
    {30, u"ReleaseDate", false, nullptr},
    {35, u"ReleaseTime", false, nullptr},
    {37, u"ExpirationDate", false, nullptr},
    {38, u"ExpirationTime", false, nullptr},
    {40, u"SpecialInstructions", false, "Xmp.photoshop.Instructions"},
    {42, u"ActionAdvised", false, nullptr},
    {45, u"ReferenceService", true, nullptr},
    {47, u"ReferenceDate", true, nullptr},
    {50, u"ReferenceNumber", true, nullptr},
    {55, u"DateCreated", false, nullptr},
    {60, u"TimeCreated", false, nullptr},
    {62, u"DigitalCreationDate", false, nullptr},
    {63, u"DigitalCreationTime", false, nullptr},
    {65, u"OriginatingProgram", false, nullptr},
    {70, u"ProgramVersion", false, nullptr},
    {75, u"ObjectCycle", false, nullptr},
    {80, u"Byline", true, "Xmp.dc.creator"},
    {85, u"BylineTitle", true, "Xmp.photoshop.AuthorsPosition"},
    {90, u"City", false, "Xmp.photoshop.City"},
    {92, u"SubLocation", false, "Xmp.iptc.Location"},
    {95, u"Province/State", false, "Xmp.photoshop.State"},
    {100, u"Country/PrimaryLocationCode", false, "Xmp.iptc.CountryCode"},
    {101, u"Country/PrimaryLocationName", false, "Xmp.photoshop.Country"},
    {103, u"OriginalTransmissionReference", false, "Xmp.photoshop.TransmissionReference"},
    {105, u"Headline", false, "Xmp.photoshop.Headline"},
    {110, u"Credit", false, "Xmp.photoshop.Credit"},
    {115, u"Source", false, "Xmp.photoshop.Source"},
    {116, u"CopyrightNotice", false, "Xmp.dc.rights"},
    {118, u"Contact", true, nullptr},
    {120, u"Caption/Abstract", false, "Xmp.dc.description"},
    {122, u"Writer/Editor", true, "Xmp.photoshop.CaptionWriter"},
    {130, u"ImageType", false, nullptr},
    {131, u"ImageOrientation", false, nullptr},
    {135, u"LanguageIdentifier", false, nullptr},
};

constexpr QStringView contactKeys[] = {u"CiAdrCity",  u"CiAdrCtry",   u"CiAdrExtadr",
                                       u"CiAdrPcode", u"CiAdrRegion", u"CiEmailWork",
                                       u"CiTelWork",  u"CiUrlWork"};

constexpr qsizetype mostValues = 1024;

PBValue valueOfTexts(const QStringList& texts, bool repeatable) {
    if (texts.isEmpty()) return {};
    if (!repeatable && texts.size() == 1) return texts.first();
    PBArray values;
    for (const QString& text : texts)
        values.emplace_back(text);
    return values;
}

QString decodeXmp(const std::string& text) {
    return decodeText(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

/// The texts of a property: the members of a list, or the default language's.
QStringList textsOf(const Exiv2::Xmpdatum& datum) {
    QStringList texts;
    const auto append = [&](const std::string& text) {
        const QString decoded = decodeXmp(text);
        if (!decoded.isEmpty()) texts.append(decoded);
    };
    if (const auto* languages = dynamic_cast<const Exiv2::LangAltValue*>(&datum.value())) {
        const auto preferred = languages->value_.find("x-default");
        if (preferred != languages->value_.end()) {
            append(preferred->second);
        } else if (!languages->value_.empty()) {
            append(languages->value_.begin()->second);
        }
        return texts;
    }
    if (datum.typeId() == Exiv2::xmpText) {
        append(datum.toString());
        return texts;
    }
    for (long position = 0; position < datum.count() && texts.size() < mostValues; ++position)
        append(datum.toString(position));
    return texts;
}

using XmpIndex = QHash<QByteArray, const Exiv2::Xmpdatum*>;

XmpIndex indexOf(const Exiv2::XmpData& xmp) {
    XmpIndex index;
    for (const Exiv2::Xmpdatum& datum : xmp)
        index.insert(QByteArray::fromStdString(datum.key()), &datum);
    return index;
}

QStringList textsOf(const XmpIndex& xmp, const char* key) {
    const Exiv2::Xmpdatum* datum = key ? xmp.value(key) : nullptr;
    return datum ? textsOf(*datum) : QStringList();
}

PBDictionary contactInfo(const Exiv2::XmpData& xmp) {
    PBDictionary contact;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        const std::string key = datum.key();
        if (!key.starts_with("Xmp.iptc.CreatorContactInfo/")) continue;
        const QString name = QString::fromStdString(key.substr(key.find_last_of(":/") + 1));
        const QStringList texts = textsOf(datum);
        if (std::ranges::find(contactKeys, QStringView(name)) != std::end(contactKeys) &&
            !texts.isEmpty()) {
            contact[name] = texts.join(u", ");
        }
    }
    return contact;
}

/// 0 to 5; a rejected picture (-1) has no rating here.
std::optional<int> starRating(const Metadata& metadata, const XmpIndex& xmp) {
    const QStringList texts = textsOf(xmp, "Xmp.xmp.Rating");
    bool whole = false;
    double rating = texts.isEmpty() ? 0 : texts.first().toDouble(&whole);
    if (!whole) {
        const auto found = metadata.exif().findKey(Exiv2::ExifKey("Exif.Image.Rating"));
        if (found == metadata.exif().end() || found->count() == 0) return std::nullopt;
        const auto number = numberAt(found->value(), 0);
        if (!number) return std::nullopt;
        rating = number->toDouble();
    }
    if (rating < 0 || rating > 5) return std::nullopt;
    return static_cast<int>(std::lround(rating));
}

QHash<std::uint16_t, QStringList> recordTexts(const Exiv2::IptcData& iptc) {
    QHash<std::uint16_t, QStringList> texts;
    for (const Exiv2::Iptcdatum& datum : iptc) {
        if (datum.record() != Exiv2::IptcDataSets::application2) continue;
        QString text;
        if (const auto* string = dynamic_cast<const Exiv2::StringValueBase*>(&datum.value())) {
            text = decodeXmp(string->value_);
        } else {
            // Dates and times as they stand in the file: "20100701", "120000+0200".
            text = decodeText(bytesOf(datum.value(), Exiv2::bigEndian));
        }
        QStringList& list = texts[datum.tag()];
        if (!text.isEmpty() && list.size() < mostValues) list.append(text);
    }
    return texts;
}

PBDictionary collect(const Metadata& metadata) {
    PBDictionary properties;
    const auto record = recordTexts(metadata.iptc());
    const XmpIndex xmp = indexOf(metadata.xmp());
    for (const DataSet& dataSet : dataSets) {
        QStringList texts = record.value(dataSet.number);
        if (texts.isEmpty()) texts = textsOf(xmp, dataSet.xmp);
        PBValue value = valueOfTexts(texts, dataSet.repeatable);
        if (value.hasValue()) properties[dataSet.key.toString()] = std::move(value);
    }
    const QStringList terms = textsOf(xmp, "Xmp.xmpRights.UsageTerms");
    if (!terms.isEmpty()) properties[QStringLiteral("UsageTerms")] = terms.first();
    const QStringList scenes = textsOf(xmp, "Xmp.iptc.Scene");
    if (!scenes.isEmpty()) properties[QStringLiteral("Scene")] = valueOfTexts(scenes, true);
    if (const auto rating = starRating(metadata, xmp)) {
        properties[QStringLiteral("StarRating")] = *rating;
    }
    PBDictionary contact = contactInfo(metadata.xmp());
    if (!contact.empty()) {
        properties[QStringLiteral("CreatorContactInfo")] = PBValue(std::move(contact));
    }
    return properties;
}

} // namespace

PBDictionary iptcProperties(const Metadata& metadata) {
    try {
        return collect(metadata);
    } catch (const std::exception&) {
        return {};
    }
}

QStringList iptcPropertyKeys() {
    QStringList keys{
        QStringLiteral("UsageTerms"), QStringLiteral("Scene"), QStringLiteral("StarRating")};
    for (const DataSet& dataSet : dataSets)
        keys.append(dataSet.key.toString());
    for (const QStringView key : contactKeys)
        keys.append(key.toString());
    return keys;
}

} // namespace codec
