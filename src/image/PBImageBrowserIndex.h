#pragma once

#include <cstdint>

/// A position on the browser's sheet: a leaf of the group tree and an image of that leaf.
struct PBImageBrowserIndex {
    std::int64_t group = -1;
    /// -1 is the leaf's head; -2 and -3 say, in a range, that the leaf has no cell in it.
    std::int64_t item = -3;

    /// Only an index that names an image is valid; the default one names nothing.
    [[nodiscard]] bool isValid() const { return group >= 0 && item >= 0; }
    friend bool operator==(const PBImageBrowserIndex&, const PBImageBrowserIndex&) = default;
};

/// -1 if the first index lies after the second, 1 if it lies before, 0 if they are equal: the
/// opposite of the usual sign.
[[nodiscard]] inline int
compareIndex(const PBImageBrowserIndex& index, const PBImageBrowserIndex& anotherIndex) {
    if (index.group != anotherIndex.group) return index.group > anotherIndex.group ? -1 : 1;
    if (index.item != anotherIndex.item) return index.item > anotherIndex.item ? -1 : 1;
    return 0;
}
