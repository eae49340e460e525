#pragma once

#include "core/OpenFilesRequest.h"

#include <QObject>

#include <functional>

class FilterCommands;
class FolderRootCommands;
class OpenFilesReveal;
class PBAliasManager;
class PBAppDelegate;
class SourceSelection;
class SourceTreeController;

/// Opens files and folders that were handed over from outside: brings the request down to one
/// folder, makes that a root where it lies in none, selects it, and has the files shown. Main
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
        OpenFilesReveal& reveal;
        /// The files are shown in the browser.
        std::function<void()> leaveLargeView;
    };

    /// The parts outlive this object.
    OpenFilesCommands(Parts parts, QObject* parent);

    /// Paths are absolute; those that don't exist are skipped.
    void openFiles(const QStringList& paths);

private:
    /// Several folders that nothing holds which the user named: each is opened by itself.
    void openEach(const OpenFilesRequest& request);
    void open(const OpenFilesRequest& request);
    [[nodiscard]] bool isInSidebar(const QString& folder) const;
    void select(const QString& folder);

    const Parts _parts;
};
