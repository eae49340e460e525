#include "group/ValueTexts.h"
#include "support/Support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct Case {
    QStringView key;
    PBValue value;
    QStringView text;
};

QString textOf(QStringView key, const PBValue& value) {
    const auto tagWithTagId = [](qint64 id) {
        return id == 3 ? QStringLiteral("sea") : id == 17 ? QStringLiteral("Anna, Ben") : QString();
    };
    return group::stringWithDbKey(key, value, tagWithTagId);
}

template <std::size_t count>
void expectTexts(const Case (&cases)[count]) {
    for (const Case& each : cases) {
        EXPECT_EQ(textOf(each.key, each.value), each.text.toString())
            << each.key.toString().toStdString() << " of " << each.value.toText().toStdString();
    }
}

PBValue text(QStringView content) {
    return content.toString();
}

TEST(ValueTextsTest, numbersAreShownAsPhotographersWriteThem) {
    expectTexts({
        {u"FNumber", 2.8, u"F/2.8"},
        {u"FNumber", 2.79999995, u"F/2.8"},
        {u"FNumber", 11, u"F/11"},
        {u"ExposureTime", 0.004, u"1/250 s"},
        {u"ExposureTime", 1.0 / 8000, u"1/8000 s"},
        {u"ExposureTime", 0.7, u"1/1 s"},
        {u"ExposureTime", 1, u"1 s"},
        {u"ExposureTime", 2.5, u"2.5 s"},
        {u"ExposureTime", 59.999, u"60 s"},
        {u"ExposureTime", 90, u"1.5 m"},
        {u"ExposureBiasValue", 0, u"±0EV"},
        {u"ExposureBiasValue", 0.33, u"+0.33EV"},
        {u"ExposureBiasValue", -0.67, u"-0.67EV"},
        {u"ExposureBiasValue", -0.001, u"±0EV"},
        {u"ExposureBiasValue", 2.0 / 3, u"+0.67EV"},
        {u"FocalLength", 50, u"50 mm"},
        {u"FocalLength", 4.247, u"4.25 mm"},
        {u"FocalLenIn35mmFilm", 26, u"26 mm"},
        {u"ISOSpeedRatings", text(u"400"), u"ISO-400"},
        {u"ShutterSpeedValue", 7.965784, u"7.97"},
        {u"BrightnessValue", -1.239, u"-1.24"},
        {u"Track", 0, u"0"},
        {u"SubjectDistance", 1.499, u"1.5 m"},
        {u"FocusDistance", 0.85, u"0.85 m"},
        {u"Altitude", 12.3456, u"12.35 m"},
        {u"ExifVersion", text(u"2,3,1"), u"2.3.1"},
        {u"FlashPixVersion", text(u"1,0"), u"1.0"},
        {u"Model", text(u"  M 10-R "), u"  M 10-R "},
    });
}

TEST(ValueTextsTest, codesGetTheirTexts) {
    expectTexts({
        {u"ExposureMode", 2, u"Auto bracket"},
        {u"ExposureProgram", 3, u"Aperture priority"},
        {u"MeteringMode", 2, u"Center-weighted average"},
        {u"MeteringMode", 255, u"Other"},
        {u"ColorSpace", 65535, u"Uncalibrated"},
        {u"SensingMethod", 6, u"6"},
        {u"WhiteBalance", 1, u"Manual white balance"},
        {u"Contrast", 1, u"Soft"},
        {u"Sharpness", 2, u"Hard"},
        {u"Saturation", 1, u"Low saturation"},
        {u"LightSource", 24, u"ISO studio tungsten"},
        {u"Flash", 0, u"Flash did not fire"},
        {u"Flash", 3, u"3"},
        {u"Flash", 95, u"Flash fired, auto mode, return light detected, red-eye reduction mode"},
        {u"SceneType", 1, u"Directly photographed image"},
        {u"SceneType", 2, u""},
        {u"FileSource", 3, u"Digital still camera"},
        {u"FileSource", 0, u""},
        {u"AltitudeRef", text(u"1"), u"Below sea level"},
        {u"AltitudeRef", text(u"rubbish"), u"Above sea level"},
        {u"Differential", 1, u"Differential correction applied"},
        {u"SpeedRef", text(u"k"), u"km/h"},
        {u"DestDistanceRef", text(u"N"), u"Knots"},
        {u"ImgDirectionRef", text(u"m"), u"Magnetic north"},
        {u"TrackRef", text(u"X"), u"X"},
    });
}

TEST(ValueTextsTest, valuesOfTheWrongTypeShowAsTheyAre) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    expectTexts({
        {u"FNumber", text(u"f eight"), u"f eight"},
        {u"FNumber", QByteArray("\x01"), u"\x01"},
        {u"Flash", text(u"on"), u"on"},
        {u"SceneType", text(u"?"), u"?"},
        {u"FNumber", PBNull{}, u""},
        {u"Flash", PBValue(), u""},
        {u"ExposureTime", 0, u"0 s"},
        {u"ExposureTime", -2, u"-2 s"},
        {u"ExposureTime", INFINITY, u"inf s"},
        {u"FocalLength", nan, u"nan mm"},
        {u"FocalLength", -INFINITY, u"-inf mm"},
        {u"FocalLength", 1e300, u"1e+300 mm"},
        {u"ExposureBiasValue", nan, u"±nanEV"},
        {u"MeteringMode", 1e300, u"1e+300"},
    });
}

TEST(ValueTextsTest, tagsAreNamedAndMissingOnesSkipped) {
    expectTexts({
        {u"Tag", text(u"3"), u"sea"},
        {u"Tag", text(u"3,17"), u"sea,Anna, Ben"},
        {u"Tag", text(u"17,4,3"), u"Anna, Ben,sea"},
        {u"Tag", text(u"4"), u""},
        {u"Tag", text(u""), u""},
        {u"Tag", text(u",x, 3 ,99999999999999999999"), u"sea"},
        {u"Tag", 3, u"sea"},
        {u"Tag", PBNull{}, u""},
    });
    EXPECT_EQ(group::stringWithDbKey(u"Tag", text(u"3"), nullptr), QString());
}

} // namespace
