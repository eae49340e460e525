#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

/// Which programs of the desktop take addresses, by the lists of the freedesktop MIME applications
/// specification. Any thread; reads a few small files.
namespace platform::SchemeHandlers {

/// Where lists and desktop files may stand, the most important place first.
struct Places {
    QStringList lists;        ///< folders with "mimeapps.list"
    QStringList applications; ///< folders with desktop files and their "mimeinfo.cache"
};
/// Those of this session.
[[nodiscard]] Places standardPlaces();

/// Whether an installed program takes addresses of the scheme, such as "geo".
[[nodiscard]] bool hasProgram(QStringView scheme, const Places& places);
[[nodiscard]] bool hasProgram(QStringView scheme);

} // namespace platform::SchemeHandlers
