#pragma once

#include "group/PBGroupItem.h"
#include "scan/PBScanDictionary.h"

#include <functional>

/// Puts images that were taken out of the work tree to the places that they have now; those that
/// search text or filter leave out stay out. On the scan thread; no cursor is open on its
/// connection. `isCancelled` may be empty.
void reinsertItems(
    const PBScanDictionary& dictionary, const PBImageFileList& items,
    const std::function<bool()>& isCancelled);
