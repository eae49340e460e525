#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace codec {

/// The source columns that a result pixel covers, and their shares in it.
struct ColumnSpan {
    std::size_t first;
    std::size_t last;
    float ofFirst;
    float ofInner; ///< of each between the two
    float ofLast;  ///< 0 where it is the first, too
};

/// Makes rows of a result of the sums of source rows, four samples a pixel.
template <typename Sample, typename Sum>
class ColumnMeans {
public:
    explicit ColumnMeans(std::vector<ColumnSpan> spans)
        : _spans(std::move(spans)), _means(_spans.size() * 4, 0) {}

    /// `weight` is that of all rows in the sums.
    void make(const Sum* sums, std::int64_t weight, Sample* target);

private:
    const std::vector<ColumnSpan> _spans;
    std::vector<float> _means; ///< of one result row
};

/// The same in 16 bits throughout, of products the upper halves, for two pixels at a time: several
/// times as quick, for a thirtieth of a step of the result. For spans of at most three columns, and
/// sums of a weight of about 256.
class SlightColumnMeans {
public:
    explicit SlightColumnMeans(std::vector<ColumnSpan> spans);

    void make(const std::uint16_t* sums, std::int64_t weight, std::uint8_t* target) const;

private:
    /// Of each pixel of the result a source column, and for each sample what that has of it in
    /// 65,536. One pixel more where their number is odd.
    struct Columns {
        std::vector<std::size_t> places;
        std::vector<std::uint16_t> shares;
    };

    static void add(Columns& columns, std::size_t place, float share);

    std::size_t _width;
    std::array<Columns, 3> _columns; ///< the first, the last, and the one between if there is any
};

} // namespace codec
