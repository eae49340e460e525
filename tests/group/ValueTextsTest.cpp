#include "group/ValueTexts.h"
#include "support/Support.h"

namespace {

struct Case {
    QStringView key;
    PBValue value;
    QStringView text;
};

QString textOf(QStringView key, const PBValue& value) {
    const auto tagWithTagId = [](qint64 id) {
        return id == 3 ? u"sea"_s : id == 17 ? u"Anna, Ben"_s : QString();
    };
    return group::stringWithDbKey(key, value, tagWithTagId);
}

void expectTexts(std::span<const Case> cases) {
    for (const Case& each : cases) {
        EXPECT_EQ(textOf(each.key, each.value), each.text.toString())
            << each.key.toString().toStdString() << " of " << each.value.toText().toStdString();
    }
}

PBValue text(QStringView content) {
    return content.toString();
}

TEST(ValueTextsTest, numbersAndCodesAreShownAsPhotographersWriteThem) {
    // Keys, and their values with what they show.
    const std::pair<QStringView, const char*> numbers[] = {
        {u"FNumber", "2.8=F/2.8; 2.79999995=F/2.8; 11=F/11"},
        {u"ExposureTime",
         "0.004=1/250 s; 0.000125=1/8000 s; 0.7=1/1 s; 1=1 s; 2.5=2.5 s; 59.999=60 s; 90=1.5 m"},
        {u"ExposureBiasValue", "0=±0EV; 0.33=+0.33EV; -0.67=-0.67EV; -0.001=±0EV"},
        {u"FocalLength", "50=50 mm; 4.247=4.25 mm"},
        {u"FocalLenIn35mmFilm", "26=26 mm"},
        {u"ShutterSpeedValue", "7.965784=7.97"},
        {u"SubjectDistance", "1.499=1.5 m"},
        {u"Altitude", "12.3456=12.35 m"},
        {u"MeteringMode", "255=Other"},
        {u"SensingMethod", "6=6"},
        {u"Flash", "0=Flash did not fire; 3=3; 95=Flash fired, auto mode, return light detected, "
                   "red-eye reduction mode"},
        {u"SceneType", "1=Directly photographed image; 2="},
        {u"FileSource", "3=Digital still camera; 0="}};
    const std::pair<QStringView, const char*> texts[] = {
        {u"ISOSpeedRatings", "400=ISO-400"},
        {u"ExifVersion", "2,3,1=2.3.1"},
        {u"Model", "  M 10-R =  M 10-R "},
        {u"AltitudeRef", "1=Below sea level; rubbish=Above sea level"},
        {u"SpeedRef", "k=km/h"},
        {u"ImgDirectionRef", "m=Magnetic north"},
        {u"TrackRef", "X=X"}};
    const auto check = [](QStringView key, const char* cases, const auto& valueOf) {
        for (const QString& one : QString::fromUtf8(cases).split(u"; "_s))
            EXPECT_EQ(textOf(key, valueOf(one.section(u'=', 0, 0))), one.section(u'=', 1))
                << qPrintable(one);
    };
    for (const auto& [key, cases] : numbers)
        check(key, cases, [](const QString& value) { return PBValue(value.toDouble()); });
    for (const auto& [key, cases] : texts)
        check(key, cases, [](const QString& value) { return PBValue(value); });
}

TEST(ValueTextsTest, valuesOfTheWrongTypeShowAsTheyAre) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Case cases[] = {
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
        {u"MeteringMode", 1e300, u"1e+300"}};
    expectTexts(cases);
}

TEST(ValueTextsTest, tagsAreNamedAndMissingOnesSkipped) {
    const Case cases[] = {
        {u"Tag", text(u"3"), u"sea"},
        {u"Tag", text(u"3,17"), u"sea,Anna, Ben"},
        {u"Tag", text(u"17,4,3"), u"Anna, Ben,sea"},
        {u"Tag", text(u"4"), u""},
        {u"Tag", text(u""), u""},
        {u"Tag", text(u",x, 3 ,99999999999999999999"), u"sea"},
        {u"Tag", 3, u"sea"},
        {u"Tag", PBNull{}, u""}};
    expectTexts(cases);
    EXPECT_EQ(group::stringWithDbKey(u"Tag", text(u"3"), nullptr), QString());
}

} // namespace
