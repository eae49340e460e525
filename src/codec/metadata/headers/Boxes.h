#pragma once

#include "codec/metadata/headers/Bytes.h"

#include <string_view>
#include <vector>

namespace codec::headers {

/// One box of the ISO base media format or of JPEG 2000.
struct Box {
    Bytes whole;
    Bytes content;

    [[nodiscard]] bool is(std::string_view name) const { return whole.matches(4, name); }
};

/// The boxes that stand side by side, at most 65,536. One that reaches beyond the end is cut and is
/// the last, as is one of a length that can't be.
[[nodiscard]] inline std::vector<Box> boxesIn(Bytes bytes) {
    constexpr std::size_t mostBoxes = 65536;
    std::vector<Box> boxes;
    std::size_t offset = 0;
    while (bytes.has(offset, 8) && boxes.size() < mostBoxes) {
        std::uint64_t length = bytes.be32(offset);
        std::size_t head = 8;
        if (length == 1) {
            length = bytes.be64(offset + 8);
            head = 16;
        }
        const std::size_t left = bytes.size() - offset;
        if (length == 0 || length > left) length = left;
        if (length < head) break;
        const Bytes whole = bytes.part(offset, static_cast<std::size_t>(length));
        boxes.push_back({whole, whole.from(head)});
        offset += static_cast<std::size_t>(length);
    }
    return boxes;
}

} // namespace codec::headers
