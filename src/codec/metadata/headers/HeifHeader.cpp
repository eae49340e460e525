#include "codec/metadata/headers/Boxes.h"
#include "codec/metadata/headers/Headers.h"
#include "codec/metadata/headers/Orientation.h"

#include <libheif/heif.h>

#include <algorithm>
#include <memory>

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

constexpr int mostItems = 10000;

Bytes find(const std::vector<Box>& boxes, std::string_view name) {
    for (const Box& box : boxes) {
        if (box.is(name)) return box.content;
    }
    return {};
}

std::uint32_t primaryItem(Bytes pitm) {
    return pitm.u8(0) == 0 ? pitm.be16(4) : pitm.be32(4);
}

/// The positions (from 1) of an item's properties in their container, in the order in which they
/// apply.
std::vector<std::size_t> propertiesOf(std::uint32_t item, Bytes ipma) {
    const bool wideItem = ipma.u8(0) != 0;
    const bool widePosition = (ipma.u8(3) & 1) != 0;
    std::size_t offset = 8;
    for (std::uint32_t left = ipma.be32(4); left > 0 && offset < ipma.size(); --left) {
        const std::uint32_t entryItem = wideItem ? ipma.be32(offset) : ipma.be16(offset);
        offset += wideItem ? 4 : 2;
        const std::size_t count = ipma.u8(offset++);
        if (entryItem == item) {
            std::vector<std::size_t> positions;
            for (std::size_t position = 0; position < count; ++position) {
                positions.push_back(
                    widePosition ? ipma.be16(offset + position * 2) & 0x7FFF
                                 : ipma.u8(offset + position) & 0x7F);
            }
            return positions;
        }
        offset += count * (widePosition ? 2 : 1);
    }
    return {};
}

/// Which of the items are pictures by themselves, and not tiles, masks or previews of others, is a
/// matter of many boxes.
std::optional<std::uint32_t> furtherItem(Bytes file, std::uint32_t primary, std::size_t frame) {
    const std::unique_ptr<heif_context, decltype(&heif_context_free)> context(
        heif_context_alloc(), &heif_context_free);
    const heif_error opened = heif_context_read_from_memory_without_copy(
        context.get(), file.data(), file.size(), nullptr);
    if (opened.code != heif_error_Ok) return std::nullopt;
    const int count = heif_context_get_number_of_top_level_images(context.get());
    std::vector<heif_item_id> items(static_cast<std::size_t>(std::clamp(count, 0, mostItems)));
    heif_context_get_list_of_top_level_image_IDs(
        context.get(), items.data(), static_cast<int>(items.size()));
    std::erase(items, primary);
    return frame <= items.size() ? std::optional(items[frame - 1]) : std::nullopt;
}

void readColor(Bytes colr, ImageHeader& header) {
    if (colr.matches(0, "nclx"sv)) {
        if (header.profileName.isEmpty()) {
            header.profileName = signalledProfileName(colr.be16(4), colr.be16(6));
        }
    } else if (colr.matches(0, "prof"sv) || colr.matches(0, "rICC"sv)) {
        const QString name = profileDescription(colr.from(4));
        if (!name.isEmpty()) header.profileName = name;
    }
}

void applyProperty(const Box& box, ImageHeader& header) {
    if (box.is("ispe"sv)) {
        header.width = box.content.be32(4);
        header.height = box.content.be32(8);
    } else if (box.is("pixi"sv)) {
        header.depth = box.content.u8(5);
        if (box.content.u8(4) == 1) header.colorModel = QStringLiteral("Gray");
    } else if (box.is("colr"sv)) {
        readColor(box.content, header);
    } else if (box.is("hvcC"sv) && header.depth == 0) {
        header.depth = (box.content.u8(17) & 7) + 8;
    } else if (box.is("av1C"sv) && header.depth == 0) {
        const int flags = box.content.u8(2);
        header.depth = (flags & 0x40) == 0 ? 8 : (flags & 0x20) == 0 ? 10 : 12;
    } else if (box.is("irot"sv)) {
        // Quarter turns against the clock.
        constexpr int turns[] = {1, 8, 3, 6};
        header.orientation = composeOrientations(header.orientation, turns[box.content.u8(0) & 3]);
    } else if (box.is("imir"sv)) {
        // 0 exchanges top and bottom, 1 left and right.
        header.orientation =
            composeOrientations(header.orientation, (box.content.u8(0) & 1) == 0 ? 4 : 2);
    }
}

} // namespace

/// The header of the primary picture, which is frame 0, or of another one in the order in which the
/// decoder has them.
std::optional<ImageHeader> readHeif(Bytes file, std::size_t frame) {
    const Bytes meta = find(boxesIn(file), "meta"sv);
    const std::vector<Box> boxes = boxesIn(meta.from(4));
    const std::vector<Box> parts = boxesIn(find(boxes, "iprp"sv));
    const std::vector<Box> properties = boxesIn(find(parts, "ipco"sv));
    const std::uint32_t primary = primaryItem(find(boxes, "pitm"sv));
    const auto item = frame == 0 ? std::optional(primary) : furtherItem(file, primary, frame);
    if (!item) return std::nullopt;
    ImageHeader header;
    header.colorModel = QStringLiteral("RGB");
    header.orientation = 1;
    for (const Box& box : parts) {
        if (!box.is("ipma"sv)) continue;
        for (const std::size_t position : propertiesOf(*item, box.content)) {
            if (position >= 1 && position <= properties.size()) {
                applyProperty(properties[position - 1], header);
            }
        }
    }
    // A picture put together of tiles may leave its colours to them.
    for (const Box& box : properties) {
        if (header.profileName.isEmpty() && box.is("colr"sv)) applyProperty(box, header);
    }
    if (header.depth == 0) header.depth = 8;
    return header;
}

} // namespace codec::headers
