#pragma once

#include "codec/pixels/Colour.h"

#include <lcms2.h>

#include <memory>

/// ICC profiles and transforms of the colour engine, for the converters.
namespace codec::profiles {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, DeleteTransform>;

/// Nothing for empty bytes, and for those that are no profile.
[[nodiscard]] Profile openProfile(const QByteArray& icc);
/// The profile that the description stands for without its ICC bytes; nothing for sRGB.
[[nodiscard]] Profile describedProfile(const ColourDescription& colours, ColourModel model);
/// The profile of the description, by its bytes where they fit the model; nothing for sRGB.
[[nodiscard]] Profile profileOf(const ColourDescription& colours, ColourModel model);
/// ICC bytes of that profile; empty for sRGB.
[[nodiscard]] QByteArray ownProfile(const ColourDescription& colours, ColourModel model);
/// Whether the difference from sRGB is below what 8 bits can show: most files carry a copy of it.
[[nodiscard]] bool isSrgb(cmsHPROFILE profile);
/// Whether pixels of red, green and blue can be in the profile: else it counts as sRGB.
[[nodiscard]] bool isUsableTarget(const QByteArray& icc);

/// Who uses a transform: several threads at once may, where it remembers nothing.
enum class Users { One, Several };

/// From the profile (nothing: sRGB) to the target's bytes. Nothing where the two are the same for
/// all purposes, unless it is wanted even so.
[[nodiscard]] Transform makeTransform(
    Profile from, cmsUInt32Number fromFormat, const QByteArray& targetIcc, cmsUInt32Number toFormat,
    bool evenIfSame, Users users = Users::One);
/// The engine's word for the layout.
[[nodiscard]] cmsUInt32Number lcmsFormat(const PixelLayout& layout);

/// Lab samples of 16 bits for the engine's encoding (ICC version 2), which has L = 100 at 0xFF00.
void toEngineLab(std::uint16_t* samples, std::size_t count, std::size_t channels);

} // namespace codec::profiles
