#pragma once

#include <cstdint>
#include <memory>

class PBImageFileItem;

/// A photograph with its place in the list that the large view walks.
struct IndexedImageFileItem {
    std::shared_ptr<PBImageFileItem> item;
    std::int64_t index = -1;
};
