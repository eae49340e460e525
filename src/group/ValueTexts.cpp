#include "group/ValueTexts.h"

#include "group/CodedFields.h"
#include "group/ShownNumbers.h"
#include "platform/program/LocalizedTexts.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace group {

namespace {

QString general(double value) {
    return QString::number(value, 'g', 6);
}

QString exposureTime(double seconds) {
    if (const auto divisor = exposureDivisor(seconds))
        return QStringLiteral("1/%1 s").arg(general(*divisor));
    if (seconds < 60 || !std::isfinite(seconds))
        return general(roundedToHundredths(seconds)) + QStringLiteral(" s");
    return general(roundedToHundredths(seconds / 60)) + QStringLiteral(" m");
}

QString exposureBias(double value) {
    const double hundredths = roundedToHundredths(value);
    const QString number = general(hundredths) + QStringLiteral("EV");
    return hundredths < 0 ? number : (hundredths > 0 ? u'+' : u'±') + number;
}

using Format = QString (*)(double);
struct NumberField {
    QStringView key;
    Format format;
};

QString plainNumber(double value) {
    return general(roundedToHundredths(value));
}
QString aperture(double value) {
    return QStringLiteral("F/") + general(roundedToHundredths(value));
}
QString millimetres(double value) {
    return general(roundedToHundredths(value)) + QStringLiteral(" mm");
}
QString metres(double value) {
    return general(roundedToHundredths(value)) + QStringLiteral(" m");
}

constexpr std::array numberFields{
    NumberField{u"FNumber", aperture},
    NumberField{u"ExposureTime", exposureTime},
    NumberField{u"ExposureBiasValue", exposureBias},
    NumberField{u"FocalLength", millimetres},
    NumberField{u"SubjectDistance", metres},
    NumberField{u"FocusDistance", metres},
    NumberField{u"ShutterSpeedValue", plainNumber},
    NumberField{u"ApertureValue", plainNumber},
    NumberField{u"BrightnessValue", plainNumber},
    NumberField{u"MaxApertureValue", plainNumber},
    NumberField{u"FocalPlaneXResolution", plainNumber},
    NumberField{u"FocalPlaneYResolution", plainNumber},
    NumberField{u"DigitalZoomRatio", plainNumber},
    NumberField{u"Gamma", plainNumber},
    NumberField{u"DestDistance", plainNumber},
    NumberField{u"ImgDirection", plainNumber},
    NumberField{u"DestBearing", plainNumber},
    NumberField{u"Track", plainNumber},
};

QString tagTexts(const QString& tagIds, const TagLookup& tagWithTagId) {
    QStringList tags;
    for (const QStringView id : QStringView(tagIds).tokenize(u',')) {
        bool isNumber = false;
        const qint64 tagId = id.trimmed().toLongLong(&isNumber);
        const QString tag = isNumber && tagWithTagId ? tagWithTagId(tagId) : QString();
        if (!tag.isEmpty()) tags.append(tag);
    }
    return tags.join(u',');
}

QString codedText(QStringView key, const PBValue& value) {
    // These two count as codes even when the file gives them as texts.
    const bool anyType = key == u"AltitudeRef" || key == u"Differential";
    if (!anyType && !value.isNumber()) return value.toText();
    return textOfCode(key, value.toInteger()).value_or(value.toText());
}

/// Focal lengths and apertures at the ends of a zoom.
QString lensInfo(const QString& numbers) {
    QStringList parts = numbers.split(u',');
    for (QString& part : parts) {
        bool isNumber = false;
        const double number = part.toDouble(&isNumber);
        if (isNumber) part = plainNumber(number);
    }
    return parts.join(u',');
}

} // namespace

QString stringWithDbKey(QStringView key, const PBValue& value, const TagLookup& tagWithTagId) {
    if (!value.hasValue()) return {};
    const QString text = value.toText();
    const auto* field = std::ranges::find(numberFields, key, &NumberField::key);
    if (field != numberFields.end())
        return value.isNumber() ? field->format(value.toDouble()) : text;
    if (isCodedField(key)) return codedText(key, value);
    if (const auto letterText = textOfLetter(key, text)) return *letterText;
    if (key == u"Tag") return tagTexts(text, tagWithTagId);
    if (key == u"LensInfo") return lensInfo(text);
    if (key == u"FocalLenIn35mmFilm") return text + QStringLiteral(" mm");
    if (key == u"ISOSpeedRatings") return QStringLiteral("ISO-") + text;
    if (key == u"ExifVersion" || key == u"FlashPixVersion")
        return QString(text).replace(u',', u'.');
    if (key == u"Altitude") {
        return QStringLiteral("%1 %2").arg(
            QString::number(value.toDouble(), 'f', 2), platform::localizedString(u"Meters"));
    }
    return text;
}

} // namespace group
