#pragma once

#include "scan/FilePropertyBatch.h"
#include "scan/ReadAhead.h"

#include <QString>

/// The record of a new file that has values. Without properties it holds what is known.
[[nodiscard]] FileProperty
makeFileProperty(const QString& folderPath, const QString& fileName, qint64 folderId, NewFile file);
