#pragma once

#include "library/PBAliasManager.h"

#include <QObject>
#include <QString>

class BrowsingSettings;
class FolderPrompts;
class PBAppDelegate;
class PBFolderItem;
class PBPathHistory;
class QWidget;
class SourceTreeController;

namespace platform {
class UserDefaults;
}

/// What follows from the selection in the sidebar: the root is resolved, the history grows, the
/// folder is stored and scanned. Also takes the selection back, forward, and to where it was at the
/// end of the last run. Main thread.
class SourceSelection final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        PBAppDelegate& delegate;
        BrowsingSettings& browsing;
        platform::UserDefaults& userDefaults;
        PBAliasManager& aliasManager;
        PBPathHistory& pathHistory;
        SourceTreeController& tree;
        FolderPrompts& prompts;
        QWidget& window;
    };

    /// The parts outlive this object.
    SourceSelection(const Parts& parts, QObject* parent);

    /// Shows the selected folder where it is now: in the window's title, as the folder of the last
    /// run, and scanned.
    void showSelected();
    /// The window is named after the selected folder.
    void updateWindowTitle();
    /// Selects the folder of the last run, or as soon as its disk has answered, unless the user
    /// selects another one first.
    void doSelectLastFolder();
    /// Selects a folder that lies in a root, with the same patience.
    void selectFolder(const QString& path);
    /// Handles the present selection once more, as if it had just been made.
    void notifySelectionChanged() { selectionDidChange(true); }
    void back();
    void forward();
    /// Looks once more for roots that were not found at the start, where the paths lie at or below
    /// the places at which they were last seen.
    void lookForRootsOf(const QStringList& paths);

    /// Roots changed because volumes came or went, or a slow disk has answered.
    void volumesDidMount(const PBAliasArray& changed);
    void volumesDidUnmount(const PBAliasArray& changed);
    void mountFailed(const PBAliasObject& aliasObject, const QString& error);

Q_SIGNALS:
    /// Whether back and forward are possible may have changed.
    void historyDidChange();
    /// Filter and search were reset.
    void filtersDidReset();

private:
    /// Handles the present selection; with `resolves` its root is looked for, and mounted.
    void selectionDidChange(bool resolves);
    void resolveSelected(PBAliasObject& aliasObject);
    void pushHistory(const PBFolderItem& folder);
    void resetFilters();
    void step(std::shared_ptr<PBAliasObject> (PBPathHistory::*move)(QString*));
    void trySelectAwaited();
    /// The changed root that holds the selection, if it kept its row; else nullptr.
    [[nodiscard]] std::shared_ptr<PBAliasObject> refresh(const PBAliasArray& changed);
    /// The selected folder, if it was only opened, and its own root has been found by now.
    [[nodiscard]] QString droppedFolder() const;
    /// False where its disk has not told of it yet.
    [[nodiscard]] bool selectInRoot(const QString& path);

    const Parts _parts;
    QString _awaitedFolder; // empty: none
    /// Was selected when its root went away, and nothing has been since.
    struct LeftFolder {
        std::shared_ptr<PBAliasObject> root; // empty: none
        QString relativePath;
    };
    LeftFolder _leftFolder;
};
