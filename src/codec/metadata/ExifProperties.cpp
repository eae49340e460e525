#include "codec/metadata/ExifProperties.h"

#include "codec/metadata/ExifTable.h"
#include "codec/metadata/TextDecoding.h"

#include <QRegularExpression>

#include <exiv2/value.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <map>

namespace codec {

namespace {

using exiftable::Form;
using exiftable::Group;
using exiftable::Row;

using RowIndex = std::map<std::pair<Group, std::uint16_t>, std::vector<const Row*>>;

const RowIndex& rowIndex() {
    static const RowIndex index = [] {
        RowIndex made;
        for (const Row& row : exiftable::rows)
            made[{row.group, row.tag}].push_back(&row);
        return made;
    }();
    return index;
}

std::optional<Group> groupOf(const Exiv2::Exifdatum& datum) {
    const std::string name = datum.groupName();
    if (name == "Photo") return Group::Photo;
    if (name == "Image") return Group::Image;
    if (name == "GPSInfo") return Group::Gps;
    return std::nullopt;
}

bool isEndless(const Exiv2::URational& rational) {
    return rational.second == 0 || rational.first == 0xFFFFFFFFU;
}

PBValue versionOf(const QByteArray& bytes) {
    PBArray digits;
    for (const char byte : bytes.first(std::min<qsizetype>(bytes.size(), 4))) {
        // Some writers put the numbers themselves in place of their digits.
        const int digit = byte >= '0' && byte <= '9' ? byte - '0'
                          : byte >= 0 && byte < 10   ? byte
                                                     : -1;
        if (digit < 0) return {};
        digits.emplace_back(digit);
    }
    if (digits.size() < 4) return {};
    digits[1] = digits[0].toInteger() * 10 + digits[1].toInteger();
    digits.erase(digits.begin());
    return digits;
}

PBValue lettersOf(const QByteArray& bytes) {
    const bool letters = std::ranges::all_of(bytes, [](char byte) {
        return byte == '\0' || byte == '\n' || byte == '\r' || byte == '\t' ||
               (byte >= ' ' && byte < 0x7F);
    });
    QString text = letters ? decodeText(bytes) : QString();
    return text.isEmpty() ? PBValue() : PBValue(text);
}

/// The sum of up to three numbers by sixtieths; nothing without the first.
std::optional<double> sexagesimal(const Exiv2::Value& value) {
    const auto first = numberAt(value, 0);
    if (!first) return std::nullopt;
    double sum = std::abs(first->toDouble());
    double unit = 1;
    for (long position = 1; position < std::min(value.count(), 3L); ++position) {
        unit /= 60;
        if (const auto number = numberAt(value, position))
            sum += std::abs(number->toDouble()) * unit;
    }
    return sum;
}

PBValue coordinateOf(const Exiv2::Value& value, double limit) {
    const auto degrees = sexagesimal(value);
    return degrees && *degrees <= limit ? PBValue(*degrees) : PBValue();
}

PBValue timeStampOf(const Exiv2::Value& value) {
    const auto hours = sexagesimal(value);
    if (!hours || *hours >= 24) return {};
    // In hundredths of a second, so that 59.999 never becomes 60.
    const auto hundredths = std::min<qint64>(std::llround(*hours * 360000.0), 8639999);
    const auto twoDigits = [](qint64 number) {
        return QString::number(number).rightJustified(2, u'0');
    };
    return QString(
        twoDigits(hundredths / 360000) + u':' + twoDigits(hundredths / 6000 % 60) + u':' +
        twoDigits(hundredths / 100 % 60) + u'.' + twoDigits(hundredths % 100));
}

PBValue valueAs(Form form, const Exiv2::Value& value, Exiv2::ByteOrder byteOrder) {
    const auto optionalText = [](const QString& text) {
        return text.isEmpty() ? PBValue() : PBValue(text);
    };
    switch (form) {
    case Form::Number:
        return numberAt(value, 0).value_or(PBValue());
    case Form::Positive: {
        const PBValue number = numberAt(value, 0).value_or(PBValue());
        return number.toDouble() > 0 ? number : PBValue();
    }
    case Form::Text:
        return optionalText(textOf(value));
    case Form::Date: {
        const QString text = textOf(value);
        const bool meant = std::ranges::any_of(
            text, [](QChar character) { return character >= u'1' && character <= u'9'; });
        return meant ? PBValue(text) : PBValue();
    }
    case Form::Array: {
        PBArray numbers = numbersOf(value);
        return numbers.empty() ? PBValue() : PBValue(std::move(numbers));
    }
    case Form::Version:
        return versionOf(bytesOf(value, byteOrder));
    case Form::Comment:
        // Some cameras write it as a text, without the name of its characters.
        if (value.typeId() == Exiv2::asciiString) return optionalText(textOf(value));
        return optionalText(
            decodeComment(bytesOf(value, byteOrder), byteOrder == Exiv2::littleEndian));
    case Form::Letters:
        return lettersOf(bytesOf(value, byteOrder));
    case Form::Latitude:
        return coordinateOf(value, 90);
    case Form::Longitude:
        return coordinateOf(value, 180);
    case Form::TimeStamp:
        return timeStampOf(value);
    }
    return {};
}

/// Absent for a value that the library itself can't make sense of.
PBValue valueOf(const Exiv2::Exifdatum& datum, Form form, Exiv2::ByteOrder byteOrder) {
    try {
        return valueAs(form, datum.value(), byteOrder);
    } catch (const std::exception&) {
        return {};
    }
}

/// "2010-07-01T12:00:00.25+02:00" as "2010:07:01 12:00:00", the time on the spot; empty for what is
/// no date.
QString dateOfXmp(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral(
        "^(\\d{4})[-:](\\d{2})[-:](\\d{2})(?:[T ](\\d{2}):(\\d{2})(?::(\\d{2}))?)?"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) return {};
    const auto part = [&match](int number) {
        const QString digits = match.captured(number);
        return digits.isEmpty() ? QStringLiteral("00") : digits;
    };
    return QString(
        part(1) + u':' + part(2) + u':' + part(3) + u' ' + part(4) + u':' + part(5) + u':' +
        part(6));
}

/// Dates that stand in XMP alone; the first property that has one counts.
void addXmpDates(const Exiv2::XmpData& xmp, ExifProperties& properties) {
    struct Source {
        PBDictionary& dictionary;
        QString key;
        const char* property;
    };
    const QString original = QStringLiteral("DateTimeOriginal");
    const QString digitized = QStringLiteral("DateTimeDigitized");
    const QString changed = QStringLiteral("DateTime");
    const Source sources[] = {
        {properties.exif, original, "Xmp.exif.DateTimeOriginal"},
        {properties.exif, original, "Xmp.photoshop.DateCreated"},
        {properties.exif, digitized, "Xmp.exif.DateTimeDigitized"},
        {properties.exif, digitized, "Xmp.xmp.CreateDate"},
        {properties.tiff, changed, "Xmp.tiff.DateTime"},
        {properties.tiff, changed, "Xmp.xmp.ModifyDate"},
    };
    if (xmp.empty()) return;
    for (const Source& source : sources) {
        if (source.dictionary.contains(source.key)) continue;
        const auto found = xmp.findKey(Exiv2::XmpKey(source.property));
        if (found == xmp.end()) continue;
        const QString date = dateOfXmp(decodeText(QByteArray::fromStdString(found->toString())));
        if (!date.isEmpty()) source.dictionary.emplace(source.key, date);
    }
}

} // namespace

std::optional<PBValue> numberAt(const Exiv2::Value& value, long position) {
    if (position >= value.count()) return std::nullopt;
    const auto at = static_cast<std::size_t>(position);
    if (const auto* rationals = dynamic_cast<const Exiv2::URationalValue*>(&value)) {
        const Exiv2::URational& number = rationals->value_[at];
        if (isEndless(number)) return std::nullopt;
        return PBValue(static_cast<double>(number.first) / number.second);
    }
    if (const auto* rationals = dynamic_cast<const Exiv2::RationalValue*>(&value)) {
        const Exiv2::Rational& number = rationals->value_[at];
        if (number.second == 0) return std::nullopt;
        return PBValue(static_cast<double>(number.first) / number.second);
    }
    switch (value.typeId()) {
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble: {
        const auto number = static_cast<double>(value.toFloat(position));
        return std::isfinite(number) ? std::optional<PBValue>(number) : std::nullopt;
    }
    case Exiv2::asciiString: {
        bool whole = false;
        const double number = textOf(value).toDouble(&whole);
        return whole && position == 0 && std::isfinite(number) ? std::optional<PBValue>(number)
                                                               : std::nullopt;
    }
    default:
        return PBValue(qint64(value.toLong(position)));
    }
}

PBArray numbersOf(const Exiv2::Value& value) {
    constexpr long mostNumbers = 1024;
    PBArray numbers;
    const long count = value.typeId() == Exiv2::asciiString ? 1 : value.count();
    for (long position = 0; position < std::min(count, mostNumbers); ++position) {
        const auto number = numberAt(value, position);
        if (!number && value.typeId() == Exiv2::asciiString) break;
        numbers.push_back(number.value_or(PBValue(0)));
    }
    return numbers;
}

QByteArray bytesOf(const Exiv2::Value& value, Exiv2::ByteOrder byteOrder) {
    constexpr long mostBytes = 65536;
    if (const auto* text = dynamic_cast<const Exiv2::StringValueBase*>(&value)) {
        // As they stand: the library's own copy of a comment changes its byte order.
        return QByteArray::fromStdString(text->value_.substr(0, mostBytes));
    }
    if (value.size() <= 0 || value.size() > (mostBytes << 8)) return {};
    QByteArray bytes(value.size(), '\0');
    value.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), byteOrder);
    bytes.truncate(mostBytes);
    return bytes;
}

QString textOf(const Exiv2::Value& value) {
    switch (value.typeId()) {
    case Exiv2::asciiString:
    case Exiv2::string:
    case Exiv2::undefined:
    case Exiv2::unsignedByte:
    case Exiv2::comment: {
        QByteArray bytes = bytesOf(value, Exiv2::littleEndian);
        // A copyright may be a photographer's, empty here, and then an editor's.
        qsizetype start = 0;
        while (start < bytes.size() && (bytes[start] == '\0' || bytes[start] == ' '))
            ++start;
        return decodeText(QByteArrayView(bytes).sliced(start));
    }
    default:
        return PBValue(numbersOf(value)).toText();
    }
}

ExifProperties exifProperties(const Metadata& metadata) {
    ExifProperties properties;
    PBDictionary tiffEp;
    const auto dictionaryOf = [&](const Row& row) -> PBDictionary& {
        if (row.dictionary == ExifDictionary::Tiff) return properties.tiff;
        if (row.dictionary == ExifDictionary::Gps) return properties.gps;
        return row.group == Group::Image ? tiffEp : properties.exif;
    };
    for (const Exiv2::Exifdatum& datum : metadata.exif()) {
        const auto group = groupOf(datum);
        if (!group || datum.count() == 0) continue;
        const auto found = rowIndex().find({*group, datum.tag()});
        if (found == rowIndex().end()) continue;
        for (const Row* row : found->second) {
            PBDictionary& dictionary = dictionaryOf(*row);
            const QString key = row->key.toString();
            if (dictionary.contains(key)) continue; // a repeated tag: the first counts
            PBValue value = valueOf(datum, row->form, metadata.byteOrder);
            if (value.hasValue()) dictionary.emplace(key, std::move(value));
        }
    }
    properties.exif.merge(tiffEp);
    addXmpDates(metadata.xmp(), properties);
    return properties;
}

QStringList exifPropertyKeys(ExifDictionary dictionary) {
    QStringList keys;
    for (const Row& row : exiftable::rows) {
        if (row.dictionary == dictionary && !keys.contains(row.key))
            keys.append(row.key.toString());
    }
    return keys;
}

} // namespace codec
