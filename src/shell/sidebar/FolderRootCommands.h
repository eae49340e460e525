#pragma once

#include "library/PBFolderItem.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class FMDatabase;
class FolderPrompts;
class PBAliasManager;
class PBAliasResolver;
class PBAppDelegate;
class RootRelocation;
class SourceTreeController;

namespace platform {
class Mutex;
class OperationQueue;
} // namespace platform

/// Adding and removing folder roots, and showing them in the file manager. Main thread.
class FolderRootCommands final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        PBAppDelegate& delegate;
        PBAliasManager& aliasManager;
        PBAliasResolver& aliasResolver;
        FMDatabase& mainFileDb;
        platform::OperationQueue& scanOperationQueue;
        /// Held while the rows of folders are rewritten.
        platform::Mutex& insertFolderAliasLock;
        SourceTreeController& tree;
        FolderPrompts& prompts;
        RootRelocation& relocation;
        std::function<void()> updateImageBrowserTipView;
    };

    /// The parts outlive this object.
    FolderRootCommands(Parts parts, QObject* parent);
    ~FolderRootCommands() override;

    /// Lets the user choose a folder and adds it.
    void addFolderAlias();
    void
    doAddFolder(const QString& startPath, const std::function<void(bool isChosen)>& completion);
    /// Makes the folder a root and selects it. Where it is the folder of a root that is away, that
    /// root has it again. One that is a root already is told to the user, one that can't be added
    /// too.
    void doAddFolder(const QString& path);
    /// As `doAddFolder`, but selects a folder that is a root already. False if there is no folder.
    bool addOrSelectFolder(const QString& path);
    /// Makes a folder that lies in no root one for this run, of which files were opened from
    /// outside. One that is a root already stays what it is. False if there is no folder.
    bool openFolder(const QString& path);
    /// An opened root stays for good, with all that is below its folder. It is selected if it was.
    void keepFolder(const std::shared_ptr<PBFolderAliasItem>& item);

    /// Removes the selected root.
    void removeFolderAlias();
    void doRemoveFolderAlias(const std::shared_ptr<PBFolderAliasItem>& item);
    /// The catalogue did not let go of roots: shows them again. The user is told of `askedFor`, the
    /// one that was removed by hand; nullptr for none.
    void rootsCameBack(const PBAliasObject* askedFor);

    void revealInFinder(const PBFolderItem& item);

private:
    /// One spelling for each folder.
    [[nodiscard]] QString cleaned(const QString& path) const;
    [[nodiscard]] std::shared_ptr<PBAliasObject>
    insertRoot(const QString& path, std::uint64_t state);
    bool makeRoot(const QString& path);
    /// Makes an opened root one for good; answers whether the catalogue took it.
    bool keepRoot(PBAliasObject& root);
    /// Opened roots in the folder of a new root are folders like others.
    void takeOpenedRootsInto(const PBAliasObject& root);
    void updateWatchPathsLater();

    const Parts _parts;
};
