#pragma once

#include "group/PBGroupItem.h"

#include <memory>

/// What the commands act on: in the browser the selected photographs, those in folded groups too;
/// in the large view the one in focus. Main thread.
class ChosenPhotographs {
public:
    virtual ~ChosenPhotographs() = default;
    [[nodiscard]] virtual PBImageFileList all() const = 0;
    /// nullptr without any. Cheaper than `all`.
    [[nodiscard]] virtual std::shared_ptr<PBImageFileItem> first() const = 0;
};
