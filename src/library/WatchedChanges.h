#pragma once

#include "library/SCEvent.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <span>
#include <vector>

/// A folder whose new files are to be looked for.
struct FolderRescan {
    QString path;
    bool recursive = false;
    bool operator==(const FolderRescan&) const = default;
};

/// What a batch of events means for the display. Only what touches the selected folder is looked
/// at again; other folders are brought up to date when they are next selected.
struct WatchedChanges {
    std::vector<FolderRescan> rescans;
    /// Images that may be other ones than the catalogue has: written to, or replaced.
    QStringList rewrittenFiles;
    bool rootsChanged = false;   ///< folder roots moved, came or went
    bool sidebarChanged = false; ///< rows of the sidebar have to be drawn anew
    bool checkExist = false;     ///< images on display may be gone
};

/// What is asked while the events are walked.
struct WatchedChangesQuestions {
    /// Has the folder roots at this path look for their folders, where they were seen to go (empty:
    /// nobody saw it) and elsewhere; whether any changed.
    std::function<bool(const QString& path, const QString& movedTo)> aliasPathChanged;
    /// Has the sidebar list the children of the folder again (and theirs); whether any changed.
    std::function<bool(const QString& path, bool refreshChildren)> refreshChilden;
    /// Whether files of this type identifier are images.
    std::function<bool(const QString& uti)> isImageType;
    /// Whether the photographs of sub-folders are on display, too.
    bool showsSubFolders = true;
};

/// The empty selected path is that of no selection.
[[nodiscard]] WatchedChanges watchedChangesOfEvents(
    std::span<const SCEvent> events, const QString& selectedPath,
    const WatchedChangesQuestions& questions);
