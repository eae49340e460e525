#pragma once

namespace codec {

/// Makes a picture of the rows of a larger one. Pixels have four samples, premultiplied or opaque.
class RowScaler {
public:
    RowScaler() = default;
    RowScaler(const RowScaler&) = delete;
    RowScaler& operator=(const RowScaler&) = delete;
    virtual ~RowScaler() = default;

    /// The next source row, from the top; rows beyond the source's height are dropped.
    virtual void addRow(const void* row) = 0;
};

} // namespace codec
