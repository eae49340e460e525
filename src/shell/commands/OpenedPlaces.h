#pragma once

#include "core/OpenFilesRequest.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// A folder root as `openedPlaces` needs it.
struct KnownRoot {
    QString path;
    bool isOpened = false; ///< it is its own folder without what is below
};

/// What a list of paths from outside comes to, by a look at their disks, for which it waits: paths
/// are taken to the places where the sidebar has them, since scans and sidebar leave out links to
/// folders, whose folders have a place of their own. Of the first file it has the values. Nothing
/// if nothing is there. Paths are absolute; any thread.
[[nodiscard]] std::optional<OpenFilesRequest>
openedPlaces(const QStringList& paths, const std::vector<KnownRoot>& roots);
