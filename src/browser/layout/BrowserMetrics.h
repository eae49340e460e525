#pragma once

#include <cmath>
#include <cstdint>

/// The numbers that follow from the size of the thumbnails and the chosen style. All lengths in
/// points.
struct BrowserMetrics {
    enum StyleBit : std::uint64_t {
        Shadow = 1,
        FileName = 2,
        FileSize = 4,
        ImageSize = 8,
        EnlargeSmallPhoto = 16,
        /// Leaves that are shorter than a row share one.
        Compact = 32,
    };
    static constexpr std::uint64_t defaultStyle = Shadow | FileName | FileSize | ImageSize;
    static constexpr double minThumbnailSize = 64;
    static constexpr double maxThumbnailSize = 256;
    static constexpr double defaultThumbnailSize = 160;
    static constexpr double headHeight = 23;
    /// A text row with the space above it, and the text alone.
    static constexpr double textRowHeight = 15;
    static constexpr double textHeight = 14;
    static constexpr double smallestThumbnailHeight = 30;
    static constexpr double smallestHitTarget = 30;

    /// The edge of the square that a thumbnail must fit in.
    double thumbnailSize = defaultThumbnailSize;
    std::uint64_t style = defaultStyle;

    [[nodiscard]] bool has(StyleBit bit) const { return (style & bit) != 0; }
    /// Between cells, and around them.
    [[nodiscard]] double cellSpace() const;
    /// Columns move together so far before there is one less: a sheet of three columns or more
    /// leaves less than a third of its width empty.
    [[nodiscard]] double tightestCellSpace() const { return std::rint(cellSpace() / 2); }
    /// The width of the frame around a selected thumbnail.
    [[nodiscard]] double selectSize() const;
    /// The line of the frame of a placeholder.
    [[nodiscard]] double dashWidth() const;
    [[nodiscard]] double cellWidth() const { return thumbnailSize + 2 * selectSize(); }
    /// All text rows that are shown.
    [[nodiscard]] double textRowsHeight() const;
    /// The height to which a thumbnail of that display size is reduced, in whole points; 0 for a
    /// size that is not above 0.
    [[nodiscard]] double fittedHeight(double width, double height) const;

    friend bool operator==(const BrowserMetrics&, const BrowserMetrics&) = default;
};

/// The size slider, 0 to 100, with a flat stretch around the middle: 45 to 55 all mean the default.
[[nodiscard]] double sliderToThumbSize(double slider);
/// Where the knob stands for a size; 50 for the default.
[[nodiscard]] double thumbSizeToSlider(double thumbnailSize);
