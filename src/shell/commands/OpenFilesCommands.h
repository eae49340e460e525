#pragma once

#include "core/OpenFilesRequest.h"
#include "platform/tasks/BoundedCalls.h"

#include <QObject>

#include <functional>

class FilterCommands;
class FolderRootCommands;
class PBAliasManager;
class PBAppDelegate;
class PBLoadImageManager;
class SourceSelection;
class SourceTreeController;

/// Opens files and folders that were handed over from outside. Photographs are shown large, those
/// that lie in no root in folders that are roots for this run only; of their folders nothing below
/// is looked at, and nothing above. A folder becomes a root, and is shown in the browser. Main
/// thread.
class OpenFilesCommands final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        PBAppDelegate& delegate;
        const PBAliasManager& aliasManager;
        SourceTreeController& tree;
        SourceSelection& selection;
        FolderRootCommands& commands;
        FilterCommands& filters;
        PBLoadImageManager& loadImageManager;
        std::function<void()> leaveLargeView;
        /// Shows what the request asks for, that file first.
        std::function<void(const OpenFilesRequest::NamedFile& first)> openFilesEnterToLargeView;
    };

    /// The parts outlive this object.
    OpenFilesCommands(Parts parts, QObject* parent);

    /// Paths are absolute; those that don't exist are skipped. Where a disk takes its time, it
    /// happens once that has answered, unless something else was opened meanwhile.
    void openFiles(const QStringList& paths);
    /// A disk has not answered yet.
    [[nodiscard]] bool isLooking() const { return _looked != _asked; }

private:
    void open(const OpenFilesRequest& request);
    void openPhotographs(const OpenFilesRequest& request);
    /// Where the catalogue takes no folder: the first photograph can be looked at all the same.
    void showAlone(const OpenFilesRequest& request);
    void openFolders(const OpenFilesRequest& request);
    void openFolder(const QString& folder);
    /// A folder that the user named has to have its place there for good.
    [[nodiscard]] bool isInSidebar(const QString& folder, bool isNamed) const;
    /// A folder that is in the sidebar; scans it anew if it is selected already.
    void select(const QString& folder);

    const Parts _parts;
    int _asked = 0;
    int _looked = 0; ///< the last of them that was answered
    platform::BoundedCalls _looks;
};
