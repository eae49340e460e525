#pragma once

#include <QtGlobal>

/// The two small vocabularies of file items: in which order they stand and which of them are shown.
namespace group {

/// The setting "SortType". Any other number means no defined order.
enum SortType : int {
    SortNone = 0, ///< order of arrival
    SortFileName = 1,
    SortFileSize = 2,
    SortModificationDate = 3,
    SortDateTaken = 4,
    SortKind = 5, ///< the extension of the file's type
    SortPixelArea = 6,
};

/// Bits of the setting "Filter"; an image has to pass all that are set.
enum FilterBit : quint64 {
    FilterFlagged = 1,
    FilterRated = 2,
};

} // namespace group
