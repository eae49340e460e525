#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace codec {

/// The samples of two pixels, in 16 bits each, computed side by side.
using PixelPair [[gnu::vector_size(16)]] = std::uint16_t;

/// Of the four samples of each.
[[nodiscard]] inline PixelPair pixelPair(const std::uint16_t* one, const std::uint16_t* other) {
    using Halves [[gnu::vector_size(16)]] = std::int64_t;
    std::int64_t half = 0;
    std::int64_t otherHalf = 0;
    std::memcpy(&half, one, sizeof half);
    std::memcpy(&otherHalf, other, sizeof otherHalf);
    return reinterpret_cast<PixelPair>(Halves{half, otherHalf});
}

[[nodiscard]] inline PixelPair allOf(std::uint16_t one) {
    return PixelPair{one, one, one, one, one, one, one, one};
}

/// The product of each with its counterpart, in 65,536.
[[nodiscard]] inline PixelPair upperHalves(PixelPair some, PixelPair others) {
#ifdef __SSE2__
    using Signed [[gnu::vector_size(16)]] = short;
    return reinterpret_cast<PixelPair>(__builtin_ia32_pmulhuw128(
        reinterpret_cast<Signed>(some), reinterpret_cast<Signed>(others)));
#else
    PixelPair halves{};
    for (int index = 0; index < 8; ++index)
        halves[index] =
            static_cast<std::uint16_t>(std::uint32_t{some[index]} * others[index] >> 16U);
    return halves;
#endif
}

/// The bytes of the two pixels in memory, of samples of at most 255.
[[nodiscard]] inline std::array<std::uint8_t, 8> bytesOf(PixelPair samples) {
    std::array<std::uint8_t, 8> bytes{};
#ifdef __SSE2__
    using Signed [[gnu::vector_size(16)]] = short;
    const auto all = reinterpret_cast<Signed>(samples);
    const auto packed = __builtin_ia32_packuswb128(all, all);
    std::memcpy(bytes.data(), &packed, sizeof bytes);
#else
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<std::uint8_t>(samples[index]);
#endif
    return bytes;
}

} // namespace codec
