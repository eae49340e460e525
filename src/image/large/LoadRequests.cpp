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
    static const std::array still = {
        QStringLiteral("public.jpeg"), QStringLiteral("public.tiff"),
        Types::cameraRawImage.toString()};
    return std::ranges::none_of(
        still, [&](const QString& each) { return Types::conformsTo(type, each); });
}

codec::DecodeRequest LoadRequests::make(double longerSide, const QColorSpace& colorSpace) {
    codec::DecodeRequest request;
    if (longerSide > 0) request.maxSize = std::max(1, static_cast<int>(longerSide));
    request.reduction = codec::Reduction::Filtered;
    request.targetProfile = profileOf(colorSpace);
    return request;
}
