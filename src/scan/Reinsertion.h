#pragma once

#include "group/PBGroupItem.h"
#include "scan/PBScanDictionary.h"

/// Puts images that were taken out of the work tree to the places that they have now; those that
/// search text or filter leave out stay out. On the scan thread; no cursor is open on its
/// connection.
void reinsertItems(const PBScanDictionary& dictionary, const PBImageFileList& items);
