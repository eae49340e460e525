#include "codec/metadata/headers/Headers.h"

#include <jxl/decode.h>

#include <memory>
#include <vector>

namespace codec::headers {

namespace {

struct DestroyDecoder {
    void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
};

std::string_view modelOf(const JxlBasicInfo& info) {
    return info.num_color_channels == 1 ? "Gray" : "RGB";
}

QString profileOf(JxlDecoder* decoder) {
    constexpr auto target = JXL_COLOR_PROFILE_TARGET_ORIGINAL;
    JxlColorEncoding encoding = {};
    if (JxlDecoderGetColorAsEncodedProfile(decoder, nullptr, target, &encoding) ==
        JXL_DEC_SUCCESS) {
        if (encoding.color_space == JXL_COLOR_SPACE_GRAY) return {};
        // Where both are enumerated, the library's values are those of H.273; P3 with a D65 white
        // point is 12 there and 11 here.
        const bool displayP3 =
            encoding.primaries == JXL_PRIMARIES_P3 && encoding.white_point == JXL_WHITE_POINT_D65;
        return signalledProfileName(
            displayP3 ? 12 : static_cast<std::uint32_t>(encoding.primaries),
            static_cast<std::uint32_t>(encoding.transfer_function));
    }
    constexpr std::size_t largestProfile = std::size_t(16) << 20;
    std::size_t size = 0;
    if (JxlDecoderGetICCProfileSize(decoder, nullptr, target, &size) != JXL_DEC_SUCCESS) return {};
    if (size > largestProfile) return {};
    std::vector<std::uint8_t> profile(size);
    if (JxlDecoderGetColorAsICCProfile(decoder, nullptr, target, profile.data(), size) !=
        JXL_DEC_SUCCESS) {
        return {};
    }
    return profileDescription(Bytes(profile));
}

} // namespace

std::optional<ImageHeader> readJpegXl(Bytes file) {
    const std::unique_ptr<JxlDecoder, DestroyDecoder> decoder(JxlDecoderCreate(nullptr));
    if (!decoder) return std::nullopt;
    JxlDecoderSubscribeEvents(decoder.get(), JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING);
    JxlDecoderSetKeepOrientation(decoder.get(), JXL_TRUE);
    JxlDecoderSetInput(decoder.get(), file.data(), file.size());
    JxlDecoderCloseInput(decoder.get());
    std::optional<ImageHeader> header;
    while (true) {
        const JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
        if (status == JXL_DEC_BASIC_INFO) {
            JxlBasicInfo info = {};
            if (JxlDecoderGetBasicInfo(decoder.get(), &info) != JXL_DEC_SUCCESS) return header;
            header.emplace();
            header->width = info.xsize;
            header->height = info.ysize;
            header->depth = static_cast<int>(info.bits_per_sample);
            header->orientation = static_cast<int>(info.orientation);
            const std::string_view model = modelOf(info);
            header->colorModel =
                QString::fromLatin1(model.data(), static_cast<qsizetype>(model.size()));
        } else if (status == JXL_DEC_COLOR_ENCODING) {
            if (header) header->profileName = profileOf(decoder.get());
            return header;
        } else {
            return header;
        }
    }
}

} // namespace codec::headers
