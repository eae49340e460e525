#pragma once

#include "group/ImageFileRow.h"

#include <memory>

class PBImageFileItem;

namespace group {

/// The image of the row, without what a sort type may need besides. Any thread.
[[nodiscard]] std::shared_ptr<PBImageFileItem> fileItemOfRow(const ImageFileRow& row);

} // namespace group
