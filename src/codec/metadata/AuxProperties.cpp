#include "codec/metadata/AuxProperties.h"

#include "codec/metadata/ExifProperties.h"
#include "codec/metadata/TextDecoding.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace codec {

namespace {

using Key = const char*;

constexpr Key lensNames[] = {
    "Exif.Photo.LensModel",       "Exif.Canon.LensModel",       "Exif.OlympusEq.LensModel",
    "Exif.CanonCs.LensType",      "Exif.NikonLd1.LensIDNumber", "Exif.NikonLd2.LensIDNumber",
    "Exif.NikonLd3.LensIDNumber", "Exif.NikonLd4.LensIDNumber", "Exif.Pentax.LensType",
    "Exif.PentaxDng.LensType",    "Exif.Minolta.LensID",        "Exif.SonyMinolta.LensID",
    "Exif.Sony2.LensID",          "Exif.Sony1.LensID",          "Exif.OlympusEq.LensType",
    "Exif.Panasonic.LensType",    "Exif.PanasonicRaw.LensType", "Exif.Samsung2.LensType",
    "Exif.Sigma.LensRange"};

constexpr Key lensIds[] = {
    "Exif.CanonCs.LensType",      "Exif.NikonLd1.LensIDNumber", "Exif.NikonLd2.LensIDNumber",
    "Exif.NikonLd3.LensIDNumber", "Exif.NikonLd4.LensIDNumber", "Exif.Pentax.LensType",
    "Exif.PentaxDng.LensType",    "Exif.Minolta.LensID",        "Exif.SonyMinolta.LensID",
    "Exif.Sony2.LensID",          "Exif.Sony1.LensID",          "Exif.OlympusEq.LensType",
    "Exif.Samsung2.LensType"};

constexpr Key lensSerials[] = {
    "Exif.OlympusEq.LensSerialNumber", "Exif.Panasonic.LensSerialNumber"};

constexpr Key serials[] = {
    "Exif.Canon.SerialNumber",
    "Exif.Nikon3.SerialNO",
    "Exif.Nikon3.SerialNumber",
    "Exif.OlympusEq.SerialNumber",
    "Exif.Olympus.SerialNumber2",
    "Exif.Fujifilm.SerialNumber",
    "Exif.Pentax.SerialNumber",
    "Exif.PentaxDng.SerialNumber",
    "Exif.Sigma.SerialNumber",
    "Exif.Image.CameraSerialNumber",
    "Exif.Panasonic.InternalSerialNumber"};

constexpr Key imageNumbers[] = {"Exif.Canon.FileNumber",        "Exif.CanonFi.FileNumber",
                                "Exif.Nikon3.ShutterCount",     "Exif.Pentax.ShutterCount",
                                "Exif.PentaxDng.ShutterCount",  "Exif.Image.ImageNumber",
                                "Exif.MinoltaCs7D.ImageNumber", "Exif.MinoltaCs5D.ImageNumber"};

constexpr Key owners[] = {"Exif.Canon.OwnerName"};

constexpr Key firmwares[] = {"Exif.Canon.FirmwareVersion",         "Exif.Panasonic.FirmwareVersion",
                             "Exif.OlympusEq.BodyFirmwareVersion", "Exif.Olympus.Firmware",
                             "Exif.Samsung2.FirmwareName",         "Exif.Sigma.Firmware",
                             "Exif.Casio2.FirmwareDate",           "Exif.Pentax.CPUFirmwareVersion",
                             "Exif.PentaxDng.CPUFirmwareVersion"};

constexpr Key focusModes[] = {
    "Exif.CanonCs.FocusMode",      "Exif.Nikon3.Focus",           "Exif.Nikon2.Focus",
    "Exif.Nikon1.Focus",           "Exif.Fujifilm.FocusMode",     "Exif.OlympusCs.FocusMode",
    "Exif.Olympus.FocusMode",      "Exif.Panasonic.FocusMode",    "Exif.Pentax.Focus",
    "Exif.PentaxDng.Focus",        "Exif.Sony1.FocusMode",        "Exif.Sony2.FocusMode",
    "Exif.MinoltaCsNew.FocusMode", "Exif.MinoltaCsOld.FocusMode", "Exif.Casio.FocusMode",
    "Exif.Casio2.FocusMode",       "Exif.Sigma.AutofocusMode"};

/// The printed forms are in metres, "1.26 m".
constexpr Key focusDistances[] = {
    "Exif.CanonSi.SubjectDistance", "Exif.NikonLd2.FocusDistance",
    "Exif.NikonLd3.FocusDistance",  "Exif.OlympusFi.FocusDistance",
    "Exif.Nikon3.FocusDistance",    "Exif.CanonFi.FocusDistanceUpper"};

constexpr Key flashCompensations[] = {
    "Exif.CanonSi.FlashBias",
    "Exif.Nikon3.FlashComp",
    "Exif.OlympusCs.FlashExposureComp",
    "Exif.Panasonic.FlashBias",
    "Exif.Sony1.FlashExposureComp",
    "Exif.Sony2.FlashExposureComp",
    "Exif.Minolta.FlashExposureComp",
    "Exif.Pentax.FlashExposureCompensation",
    "Exif.PentaxDng.FlashExposureCompensation"};

constexpr Key stabilizations[] = {
    "Exif.CanonCs.ImageStabilization",   "Exif.NikonVr.VibrationReduction",
    "Exif.OlympusCs.ImageStabilization", "Exif.Panasonic.ImageStabilization",
    "Exif.Sony1.ImageStabilization",     "Exif.Sony2.ImageStabilization",
    "Exif.Minolta.ImageStabilization",   "Exif.Casio2.ImageStabilization"};

constexpr Key filmSpeeds[] = {
    "Exif.Photo.RecommendedExposureIndex",
    "Exif.Photo.ISOSpeed",
    "Exif.Photo.StandardOutputSensitivity",
    "Exif.CanonSi.ISOSpeed",
    "Exif.CanonCs.ISOSpeed",
    "Exif.Nikon3.ISOSpeed",
    "Exif.Nikon2.ISOSpeed",
    "Exif.Nikon1.ISOSpeed",
    "Exif.MinoltaCsNew.ISOSetting",
    "Exif.MinoltaCsOld.ISOSetting",
    "Exif.OlympusSp.ISOSpeed",
    "Exif.Olympus.ISOSpeed",
    "Exif.Panasonic.ProgramISO",
    "Exif.PanasonicRaw.ISOSpeed",
    "Exif.Pentax.ISO",
    "Exif.PentaxDng.ISO",
    "Exif.Casio.ISO",
    "Exif.Casio2.ISO",
    "Exif.Samsung2.ISO",
    "Exif.Fujifilm.ISO"};

/// Lets texts of the program find the library's strings without copies of their own.
struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
};

/// The notes of one file by key: they may be thousands, so that no key is searched for in order.
class Notes {
public:
    explicit Notes(const Exiv2::ExifData& exif) : _exif(exif) {
        for (const Exiv2::Exifdatum& datum : exif) {
            if (datum.count() > 0) _data.emplace(datum.key(), &datum);
        }
    }

    [[nodiscard]] const Exiv2::Exifdatum* find(Key key) const {
        const auto found = _data.find(std::string_view(key));
        return found == _data.end() ? nullptr : found->second;
    }
    /// The value as the library describes it; empty when there is none.
    [[nodiscard]] QString described(Key key) const {
        const Exiv2::Exifdatum* datum = find(key);
        if (!datum) return {};
        try {
            return decodeText(QByteArray::fromStdString(datum->print(&_exif)));
        } catch (const std::exception&) {
            return {};
        }
    }
    [[nodiscard]] QString plain(Key key) const {
        const Exiv2::Exifdatum* datum = find(key);
        return datum ? textOf(datum->value()) : QString();
    }

    /// Bytes are numbers here.
    [[nodiscard]] QString code(Key key) const {
        const Exiv2::Exifdatum* datum = find(key);
        if (!datum || datum->typeId() == Exiv2::asciiString) return plain(key);
        return PBValue(numbersOf(datum->value())).toText();
    }

private:
    const Exiv2::ExifData& _exif;
    std::unordered_map<std::string, const Exiv2::Exifdatum*, TextHash, std::equal_to<>> _data;
};

using Reading = QString (Notes::*)(Key) const;

/// The first of the keys that has a text which means something.
QString firstText(
    const Notes& notes, std::span<const Key> keys, Reading reading,
    const std::function<bool(const QString&)>& accept) {
    for (const Key key : keys) {
        const QString text = (notes.*reading)(key);
        if (!text.isEmpty() && accept(text)) return text;
    }
    return {};
}

/// Texts such as "n/a", "(0)", "(22048)", "----" or "0 0 0" stand for nothing known.
bool isMeaningful(const QString& text) {
    static const QRegularExpression empty(
        QStringLiteral(
            "^(n/?a|none|unknown.*|manual lens|undefined|other|\\(.*\\)|[-0 .,_/]*|no lens.*|"
            "0(\\.0)? ?mm f/0(\\.0)?)$"),
        QRegularExpression::CaseInsensitiveOption);
    return !empty.match(text).hasMatch();
}

/// Cameras that know no lens have all bits set.
bool isLensCode(const QString& text) {
    return isMeaningful(text) && text != u"65535";
}

/// The lens of a name, not a bare number: where a maker's code is unknown, the code is printed.
bool isLensName(const QString& text) {
    return isMeaningful(text) &&
           std::ranges::any_of(text, [](QChar character) { return character.isLetter(); });
}

/// The number at the start of a described value: "1.26 m", "-2/3 EV", "+0.3 EV", "0 EV".
std::optional<double> leadingNumber(const QString& text) {
    static const QRegularExpression number(
        QStringLiteral("^\\s*([-+]?[0-9]+(?:\\.[0-9]+)?)(?:\\s*/\\s*([0-9]+))?"));
    const QRegularExpressionMatch match = number.match(text);
    if (!match.hasMatch()) return std::nullopt;
    const double numerator = match.captured(1).toDouble();
    if (!match.hasCaptured(2)) return numerator;
    const double denominator = match.captured(2).toDouble();
    if (denominator == 0) return std::nullopt;
    return numerator / denominator;
}

std::optional<double> firstNumber(const Notes& notes, std::span<const Key> keys) {
    for (const Key key : keys) {
        if (const auto number = leadingNumber(notes.described(key))) return number;
    }
    return std::nullopt;
}

QString xmpText(const Exiv2::XmpData& xmp, Key key) {
    const auto found = xmp.findKey(Exiv2::XmpKey(key));
    return found == xmp.end() ? QString()
                              : decodeText(QByteArray::fromStdString(found->toString()));
}

/// Focal lengths and apertures at both ends of a zoom, four numbers with 0 for what is unknown.
PBValue lensInfo(const Notes& notes, const Exiv2::XmpData& xmp) {
    const auto four = [](PBArray numbers) {
        const bool known = numbers.size() == 4 && numbers[0].toDouble() > 0;
        return known ? PBValue(std::move(numbers)) : PBValue();
    };
    for (const Key key : {"Exif.Nikon3.Lens", "Exif.Image.LensInfo"}) {
        const Exiv2::Exifdatum* datum = notes.find(key);
        PBValue info = datum ? four(numbersOf(datum->value())) : PBValue();
        if (info.hasValue()) return info;
    }
    // Longest and shortest focal length, and the units of both in a millimetre.
    if (const Exiv2::Exifdatum* canon = notes.find("Exif.CanonCs.Lens")) {
        const PBArray numbers = numbersOf(canon->value());
        // Notes that an editor has moved are read from the wrong place.
        const bool isRange = numbers.size() == 3 && numbers[2].toDouble() > 0 &&
                             numbers[0].toDouble() >= numbers[1].toDouble();
        if (isRange) {
            const double unit = numbers[2].toDouble();
            PBValue info = four({numbers[1].toDouble() / unit, numbers[0].toDouble() / unit, 0, 0});
            if (info.hasValue()) return info;
        }
    }
    PBArray ends;
    for (const Key key :
         {"Exif.Fujifilm.MinFocalLength", "Exif.Fujifilm.MaxFocalLength",
          "Exif.Fujifilm.MaxApertureAtMinFocal", "Exif.Fujifilm.MaxApertureAtMaxFocal"}) {
        if (const Exiv2::Exifdatum* datum = notes.find(key)) {
            ends.push_back(numberAt(datum->value(), 0).value_or(PBValue(0)));
        }
    }
    PBValue info = four(std::move(ends));
    if (info.hasValue()) return info;
    PBArray numbers;
    for (const QString& part : xmpText(xmp, "Xmp.aux.LensInfo").split(u' ', Qt::SkipEmptyParts))
        numbers.emplace_back(leadingNumber(part).value_or(0));
    return four(std::move(numbers));
}

/// Metres; "Infinite" and the codes that stand for it are left out.
std::optional<double> focusDistance(const Notes& notes, const Exiv2::XmpData& xmp) {
    auto distance = firstNumber(notes, focusDistances);
    if (!distance) distance = leadingNumber(xmpText(xmp, "Xmp.aux.ApproximateFocusDistance"));
    constexpr double farthest = 600; // beyond, makers mean infinity: 65535 cm, 4294967295 mm
    if (!distance || *distance <= 0 || *distance > farthest) return std::nullopt;
    return distance;
}

PBDictionary collect(const Metadata& metadata) {
    const Notes notes(metadata.exif());
    PBDictionary properties;
    const auto set = [&](const QString& key, const QString& noted, Key xmp) {
        const QString text = noted.isEmpty() && xmp ? xmpText(metadata.xmp(), xmp) : noted;
        if (!text.isEmpty() && isMeaningful(text)) properties[key] = text;
    };
    constexpr Reading described = &Notes::described;
    constexpr Reading plain = &Notes::plain;
    PBValue info = lensInfo(notes, metadata.xmp());
    if (info.hasValue()) properties[QStringLiteral("LensInfo")] = std::move(info);
    set(QStringLiteral("LensModel"), firstText(notes, lensNames, described, isLensName),
        "Xmp.aux.Lens");
    set(QStringLiteral("LensID"), firstText(notes, lensIds, &Notes::code, isLensCode),
        "Xmp.aux.LensID");
    set(QStringLiteral("LensSerialNumber"), firstText(notes, lensSerials, described, isMeaningful),
        "Xmp.aux.LensSerialNumber");
    set(QStringLiteral("SerialNumber"), firstText(notes, serials, plain, isMeaningful),
        "Xmp.aux.SerialNumber");
    set(QStringLiteral("ImageNumber"), firstText(notes, imageNumbers, described, isMeaningful),
        "Xmp.aux.ImageNumber");
    set(QStringLiteral("OwnerName"), firstText(notes, owners, described, isMeaningful),
        "Xmp.aux.OwnerName");
    set(QStringLiteral("Firmware"), firstText(notes, firmwares, described, isMeaningful),
        "Xmp.aux.Firmware");
    set(QStringLiteral("FocusMode"), firstText(notes, focusModes, described, isMeaningful),
        nullptr);
    auto flash = firstNumber(notes, flashCompensations);
    if (!flash) flash = leadingNumber(xmpText(metadata.xmp(), "Xmp.aux.FlashCompensation"));
    if (flash) properties[QStringLiteral("FlashCompensation")] = std::round(*flash * 100) / 100;
    if (const auto distance = focusDistance(notes, metadata.xmp())) {
        properties[QStringLiteral("FocusDistance")] = *distance;
    }
    for (const Key key : stabilizations) {
        const Exiv2::Exifdatum* datum = notes.find(key);
        const auto number = datum ? numberAt(datum->value(), 0) : std::nullopt;
        if (!number) continue;
        properties[QStringLiteral("ImageStabilization")] = number->toDouble();
        break;
    }
    return properties;
}

} // namespace

PBDictionary auxProperties(const Metadata& metadata) {
    if (metadata.exif().empty() && metadata.xmp().empty()) return {};
    try {
        return collect(metadata);
    } catch (const std::exception&) {
        return {};
    }
}

std::optional<PBValue> makerFilmSpeed(const Metadata& metadata) {
    try {
        const Notes notes(metadata.exif());
        for (const Key key : filmSpeeds) {
            const auto speed = leadingNumber(notes.described(key));
            // Below the slowest film are codes, not speeds.
            if (speed && *speed >= 6 && *speed < 10000000) return PBValue(std::llround(*speed));
        }
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return std::nullopt;
}

QStringList auxPropertyKeys() {
    return QStringLiteral("LensInfo LensModel SerialNumber LensID LensSerialNumber ImageNumber "
                          "FlashCompensation OwnerName Firmware FocusMode FocusDistance "
                          "ImageStabilization")
        .split(u' ');
}

} // namespace codec
