#pragma once

#include <QString>

/// The names of the database files in the data folder.
namespace CatalogueFiles {

inline const QString files = QStringLiteral("files.db");
inline const QString thumbnails = QStringLiteral("thumbnail.db");
inline const QString marks = QStringLiteral("marks.db");

} // namespace CatalogueFiles
