#pragma once

#include "platform/FileManager.h"
#include "scan/FilePropertyBatch.h"

#include <QString>

/// The record of a new file: what the disk says of it and what its importer reads without decoding.
/// A file whose properties can't be read gets a record with what is known.
[[nodiscard]] FileProperty makeFileProperty(
    const QString& folderPath, const QString& fileName, qint64 folderId,
    const platform::ResourceValues& values, std::unique_ptr<image::ImageImporter> importer);
