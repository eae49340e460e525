#pragma once

#include "scan/PBScanDictionary.h"

#include <unordered_set>

/// Puts the photographs of these rows of the catalogue into the work tree that belong there, and
/// are not in it; answers whether any came in. On the scan thread; no cursor is open on its
/// connection.
bool takeInRows(const PBScanDictionary& dictionary, const std::unordered_set<qint64>& fileIds);
