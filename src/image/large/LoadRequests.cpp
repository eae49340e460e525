#include "image/large/LoadRequests.h"

#include "platform/files/TypeIdentifiers.h"

#include <algorithm>
#include <array>

namespace {

/// What the decoders take for sRGB is not named: then nothing is converted.
QByteArray profileOf(const QColorSpace& colorSpace) {
    // Also that of an invalid one: the toolkit reads matrix profiles only, the colour engine all.
    const bool isPlain = colorSpace == QColorSpace(QColorSpace::SRgb);
    return isPlain ? QByteArray() : colorSpace.iccProfile();
}

} // namespace

bool LoadRequests::mayPlay(const QString& type) {
    namespace Types = platform::TypeIdentifiers;
    constexpr std::array<QStringView, 5> played = {
        u"com.compuserve.gif", u"org.webmproject.webp", u"public.avif", u"public.jpeg-xl",
        u"public.png"};
    return std::ranges::any_of(played, [&](QStringView each) { return Types::equal(type, each); });
}

codec::DecodeRequest LoadRequests::make(double longerSide, const QColorSpace& colorSpace) {
    codec::DecodeRequest request;
    if (longerSide > 0) request.maxSize = std::max(1, static_cast<int>(longerSide));
    request.reduction = codec::Reduction::Filtered;
    request.targetProfile = profileOf(colorSpace);
    return request;
}
