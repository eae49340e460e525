#pragma once

#include "catalogue/PBCatalogue.h"

#include <QString>

/// Takes the pictures below a folder into an empty catalogue, as a scan would, without thumbnails.
/// Every folder is a root of its own. Answers how many pictures there are.
int catalogueFolder(PBCatalogue& catalogue, const QString& folder);
