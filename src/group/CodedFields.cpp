#include "group/CodedFields.h"

#include "platform/program/LocalizedTexts.h"

#include <algorithm>
#include <iterator>

namespace group {

namespace {

struct Code {
    QStringView key;
    qint64 code;
    QStringView text;
};

/// The codes of a field stand together.
constexpr Code codes[] = {
    {u"ExposureMode", 0, u"Auto exposure"},
    {u"ExposureMode", 1, u"Manual exposure"},
    {u"ExposureMode", 2, u"Auto bracket"},
    {u"ExposureProgram", 0, u"Not defined"},
    {u"ExposureProgram", 1, u"Manual"},
    {u"ExposureProgram", 2, u"Normal program"},
    {u"ExposureProgram", 3, u"Aperture priority"},
    {u"ExposureProgram", 4, u"Shutter priority"},
    {u"ExposureProgram", 5, u"Creative program"},
    {u"ExposureProgram", 6, u"Action program"},
    {u"ExposureProgram", 7, u"Portrait mode"},
    {u"ExposureProgram", 8, u"Landscape mode"},
    {u"MeteringMode", 0, u"Unknown"},
    {u"MeteringMode", 1, u"Average"},
    {u"MeteringMode", 2, u"CenterWeightedAveragem"},
    {u"MeteringMode", 3, u"Spot"},
    {u"MeteringMode", 4, u"MultiSpot"},
    {u"MeteringMode", 5, u"Pattern"},
    {u"MeteringMode", 6, u"Partial"},
    {u"MeteringMode", 255, u"Other"},
    {u"ColorSpace", 1, u"sRGB"},
    {u"ColorSpace", 65535, u"Uncalibrated"},
    {u"SensingMethod", 1, u"Not defined"},
    {u"SensingMethod", 2, u"One-chip color area sensor"},
    {u"SensingMethod", 3, u"Two-chip color area sensor"},
    {u"SensingMethod", 4, u"Three-chip color area sensor"},
    {u"SensingMethod", 5, u"Color sequential area sensor"},
    {u"SensingMethod", 7, u"Trilinear sensor"},
    {u"SensingMethod", 8, u"Color sequential linear sensor"},
    {u"SceneType", 1, u"Directly photographed image"},
    {u"FileSource", 3, u"Digital Still Camera"},
    {u"WhiteBalance", 0, u"Auto white balance"},
    {u"WhiteBalance", 1, u"Manual white balance"},
    {u"CustomRendered", 0, u"Normal process"},
    {u"CustomRendered", 1, u"Custom process"},
    {u"SceneCaptureType", 0, u"Standard"},
    {u"SceneCaptureType", 1, u"Landscape"},
    {u"SceneCaptureType", 2, u"Portrait"},
    {u"SceneCaptureType", 3, u"Night scene"},
    {u"GainControl", 0, u"None"},
    {u"GainControl", 1, u"Low gain up"},
    {u"GainControl", 2, u"High gain up"},
    {u"GainControl", 3, u"Low gain down"},
    {u"GainControl", 4, u"High gain down"},
    {u"SubjectDistRange", 0, u"Unknown"},
    {u"SubjectDistRange", 1, u"Macro"},
    {u"SubjectDistRange", 2, u"Close view"},
    {u"SubjectDistRange", 3, u"Distant view"},
    {u"Contrast", 0, u"Normal"},
    {u"Contrast", 1, u"Soft"},
    {u"Contrast", 2, u"Hard"},
    {u"Sharpness", 0, u"Normal"},
    {u"Sharpness", 1, u"Soft"},
    {u"Sharpness", 2, u"Hard"},
    {u"Saturation", 0, u"Normal"},
    {u"Saturation", 1, u"Low saturation"},
    {u"Saturation", 2, u"High saturation"},
    {u"LightSource", 0, u"Unknown"},
    {u"LightSource", 1, u"Daylight"},
    {u"LightSource", 2, u"Fluorescent"},
    {u"LightSource", 3, u"Tungsten (incandescent light)"},
    {u"LightSource", 4, u"Flash"},
    {u"LightSource", 9, u"Fine weather"},
    {u"LightSource", 10, u"Cloudy weather"},
    {u"LightSource", 11, u"Shade"},
    {u"LightSource", 12, u"Daylight fluorescent (D 5700 - 7100K)"},
    {u"LightSource", 13, u"Day white fluorescent (N 4600 - 5400K)"},
    {u"LightSource", 14, u"Cool white fluorescent (W 3900 - 4500K)"},
    {u"LightSource", 15, u"White fluorescent (WW 3200 - 3700K)"},
    {u"LightSource", 17, u"Standard light A"},
    {u"LightSource", 18, u"Standard light B"},
    {u"LightSource", 19, u"Standard light C"},
    {u"LightSource", 20, u"D55"},
    {u"LightSource", 21, u"D65"},
    {u"LightSource", 22, u"D75"},
    {u"LightSource", 23, u"D50"},
    {u"LightSource", 24, u"ISO studio tungsten"},
    {u"LightSource", 255, u"Other light source"},
    {u"Flash", 0, u"Flash did not fire"},
    {u"Flash", 1, u"Flash fired"},
    {u"Flash", 5, u"Strobe return light not detected"},
    {u"Flash", 7, u"Strobe return light detected"},
    {u"Flash", 9, u"Flash fired, compulsory flash mode"},
    {u"Flash", 13, u"Flash fired, compulsory flash mode, return light not detected"},
    {u"Flash", 15, u"Flash fired, compulsory flash mode, return light detected"},
    {u"Flash", 16, u"Flash did not fire, compulsory flash mode"},
    {u"Flash", 24, u"Flash did not fire, auto mode"},
    {u"Flash", 25, u"Flash fired, auto mode"},
    {u"Flash", 29, u"Flash fired, auto mode, return light not detected"},
    {u"Flash", 31, u"Flash fired, auto mode, return light detected"},
    {u"Flash", 32, u"No flash function"},
    {u"Flash", 65, u"Flash fired, red-eye reduction mode"},
    {u"Flash", 69, u"Flash fired, red-eye reduction mode, return light not detected"},
    {u"Flash", 71, u"Flash fired, red-eye reduction mode, return light detected"},
    {u"Flash", 73, u"Flash fired, compulsory flash mode, red-eye reduction mode"},
    {u"Flash", 77,
     u"Flash fired, compulsory flash mode, red-eye reduction mode, return light not detected"},
    {u"Flash", 79,
     u"Flash fired, compulsory flash mode, red-eye reduction mode, return light detected"},
    {u"Flash", 89, u"Flash fired, auto mode, red-eye reduction mode"},
    {u"Flash", 93, u"Flash fired, auto mode, return light not detected, red-eye reduction mode"},
    {u"Flash", 95, u"Flash fired, auto mode, return light detected, red-eye reduction mode"},
    {u"AltitudeRef", 0, u"Above Sea Level"},
    {u"AltitudeRef", 1, u"Below Sea Level"},
    {u"Differential", 0, u"Measurement without differential correction"},
    {u"Differential", 1, u"Differential correction applied"},
};

struct Letter {
    QStringView key;
    char16_t letter;
    QStringView text;
};

constexpr Letter letters[] = {
    {u"DestDistanceRef", u'K', u"Kilometers"}, {u"DestDistanceRef", u'M', u"Miles"},
    {u"DestDistanceRef", u'N', u"Knots"},      {u"SpeedRef", u'K', u"Kilometers per hour"},
    {u"SpeedRef", u'M', u"Miles per hour"},    {u"SpeedRef", u'N', u"Knots"},
    {u"TrackRef", u'T', u"True North"},        {u"TrackRef", u'M', u"Magnetic North"},
    {u"ImgDirectionRef", u'T', u"True North"}, {u"ImgDirectionRef", u'M', u"Magnetic North"},
    {u"DestBearingRef", u'T', u"True North"},  {u"DestBearingRef", u'M', u"Magnetic North"},
};

} // namespace

bool isCodedField(QStringView key) {
    return std::ranges::find(codes, key, &Code::key) != std::end(codes);
}

std::optional<QString> textOfCode(QStringView key, qint64 code) {
    const auto* found = std::ranges::find_if(
        codes, [&](const Code& row) { return row.key == key && row.code == code; });
    if (found != std::end(codes)) return platform::localizedString(found->text);
    // These two have one code each that means something to a photographer.
    if (key == u"SceneType" || key == u"FileSource") return QString();
    return std::nullopt;
}

std::optional<QString> textOfLetter(QStringView key, QStringView letter) {
    if (letter.size() != 1) return std::nullopt;
    const auto* found = std::ranges::find_if(letters, [&](const Letter& row) {
        return row.key == key && letter.front().toUpper() == QChar(row.letter);
    });
    if (found == std::end(letters)) return std::nullopt;
    return platform::localizedString(found->text);
}

} // namespace group
