#include "codec/pixels/Profiles.h"

#include "codec/pixels/ToneMapping.h"

#include <algorithm>
#include <cmath>

namespace codec::profiles {

namespace {

struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

cmsColorSpaceSignature signatureOf(ColourModel model) {
    switch (model) {
    case ColourModel::Gray:
        return cmsSigGrayData;
    case ColourModel::Cmyk:
        return cmsSigCmykData;
    case ColourModel::Lab:
        return cmsSigLabData;
    case ColourModel::Rgb:
        break;
    }
    return cmsSigRgbData;
}

Curve srgbCurve() {
    const double parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters));
}

/// The curve that a code point of H.273 stands for. Pictures marked with a television curve are
/// made for screens all the same, so that they read as sRGB.
Curve curveOf(const ColourDescription& colours) {
    if (colours.gamma > 0) return Curve(cmsBuildGamma(nullptr, colours.gamma));
    switch (colours.transfer) {
    case 4:
        return Curve(cmsBuildGamma(nullptr, 2.2));
    case 5:
        return Curve(cmsBuildGamma(nullptr, 2.8));
    case 8:
        return Curve(cmsBuildGamma(nullptr, 1.0));
    default:
        return srgbCurve();
    }
}

bool hasOwnCurve(const ColourDescription& colours) {
    return colours.gamma > 0 || colours.transfer == 4 || colours.transfer == 5 ||
           colours.transfer == 8;
}

bool hasOwnPrimaries(const ColourDescription& colours) {
    static constexpr int known[] = {4, 5, 6, 7, 9, 11, 12, 22};
    return colours.chromaticities || std::ranges::count(known, colours.primaries) > 0;
}

} // namespace

Profile openProfile(const QByteArray& icc) {
    if (icc.isEmpty()) return nullptr;
    return Profile(
        cmsOpenProfileFromMem(icc.constData(), static_cast<cmsUInt32Number>(icc.size())));
}

Profile describedProfile(const ColourDescription& colours, ColourModel model) {
    if (model != ColourModel::Rgb && model != ColourModel::Gray) return nullptr;
    if (!hasOwnCurve(colours) && (model == ColourModel::Gray || !hasOwnPrimaries(colours))) {
        return nullptr;
    }
    const Curve curve = curveOf(colours);
    if (!curve) return nullptr;
    if (model == ColourModel::Gray) {
        return Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    }
    const Chromaticities c =
        colours.chromaticities ? *colours.chromaticities : chromaticitiesOf(colours.primaries);
    if (std::ranges::any_of(c, [](double value) { return !(value > 0 && value < 1); })) {
        return nullptr;
    }
    const cmsCIExyY white{c[6], c[7], 1};
    const cmsCIExyYTRIPLE primaries{{c[0], c[1], 1}, {c[2], c[3], 1}, {c[4], c[5], 1}};
    cmsToneCurve* curves[] = {curve.get(), curve.get(), curve.get()};
    return Profile(cmsCreateRGBProfile(&white, &primaries, curves));
}

bool isSrgb(cmsHPROFILE profile) {
    if (cmsGetColorSpace(profile) != cmsSigRgbData || !cmsIsMatrixShaper(profile)) return false;
    // sRGB's colorants, adapted to D50 (IEC 61966-2-1).
    static constexpr double colorants[3][3] = {
        {0.4360, 0.2225, 0.0139}, {0.3851, 0.7169, 0.0971}, {0.1431, 0.0606, 0.7141}};
    static constexpr cmsTagSignature colorantTags[] = {
        cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    static constexpr cmsTagSignature curveTags[] = {
        cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (int channel = 0; channel < 3; ++channel) {
        const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, colorantTags[channel]));
        const auto* curve =
            static_cast<const cmsToneCurve*>(cmsReadTag(profile, curveTags[channel]));
        if (!xyz || !curve) return false;
        const double found[] = {xyz->X, xyz->Y, xyz->Z};
        for (int axis = 0; axis < 3; ++axis) {
            if (std::abs(found[axis] - colorants[channel][axis]) > 0.002) return false;
        }
        for (const float code : {0.02F, 0.1F, 0.25F, 0.5F, 0.75F, 0.9F}) {
            const double light =
                code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4);
            if (std::abs(cmsEvalToneCurveFloat(curve, code) - light) > 0.003) return false;
        }
    }
    return true;
}

Transform makeTransform(
    Profile from, cmsUInt32Number fromFormat, const QByteArray& targetIcc, cmsUInt32Number toFormat,
    bool evenIfSame, Users users) {
    Profile to = openProfile(targetIcc);
    if (to && (cmsGetColorSpace(to.get()) != cmsSigRgbData || isSrgb(to.get()))) to.reset();
    if (from && isSrgb(from.get())) from.reset();
    if (!from && !to && !evenIfSame) return nullptr;
    if (!from) from.reset(cmsCreate_sRGBProfile());
    if (!to) to.reset(cmsCreate_sRGBProfile());
    // The library's table of a transform from Lab is too coarse for the dark colours.
    const cmsUInt32Number exact =
        cmsGetColorSpace(from.get()) == cmsSigLabData ? cmsFLAGS_NOOPTIMIZE : 0U;
    return Transform(cmsCreateTransform(
        from.get(), fromFormat, to.get(), toFormat, INTENT_RELATIVE_COLORIMETRIC,
        cmsFLAGS_COPY_ALPHA | cmsFLAGS_BLACKPOINTCOMPENSATION | exact |
            (users == Users::Several ? cmsFLAGS_NOCACHE : 0U)));
}

cmsUInt32Number lcmsFormat(const PixelLayout& layout) {
    const cmsUInt32Number bytes = layout.sample == SampleType::U8 ? 1 : 2;
    const cmsUInt32Number extra = layout.alpha == AlphaType::None ? 0 : 1;
    cmsUInt32Number format = BYTES_SH(bytes) | EXTRA_SH(extra);
    switch (layout.model) {
    case ColourModel::Gray:
        return format | COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1U);
    case ColourModel::Cmyk:
        return format | COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4U) |
               FLAVOR_SH(layout.isInverted ? 1U : 0U);
    case ColourModel::Lab:
        return format | COLORSPACE_SH(bytes == 2 ? PT_LabV2 : PT_Lab) | CHANNELS_SH(3U);
    case ColourModel::Rgb:
        break;
    }
    return format | COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3U);
}

Profile profileOf(const ColourDescription& colours, ColourModel model) {
    Profile profile = openProfile(colours.iccProfile);
    if (profile && cmsGetColorSpace(profile.get()) != signatureOf(model)) profile.reset();
    return profile ? std::move(profile) : describedProfile(colours, model);
}

QByteArray ownProfile(const ColourDescription& colours, ColourModel model) {
    const Profile profile = profileOf(colours, model);
    cmsUInt32Number length = 0;
    if (!profile || isSrgb(profile.get()) || !cmsSaveProfileToMem(profile.get(), nullptr, &length))
        return {};
    QByteArray bytes(static_cast<qsizetype>(length), Qt::Uninitialized);
    return cmsSaveProfileToMem(profile.get(), bytes.data(), &length) ? bytes : QByteArray();
}

bool isUsableTarget(const QByteArray& icc) {
    const Profile profile = openProfile(icc);
    return profile && cmsGetColorSpace(profile.get()) == cmsSigRgbData;
}

void toEngineLab(std::uint16_t* samples, std::size_t count, std::size_t channels) {
    for (std::size_t index = 0; index < count; index += channels)
        samples[index] = static_cast<std::uint16_t>(samples[index] * 0xFF00U / 0xFFFFU);
}

} // namespace codec::profiles
