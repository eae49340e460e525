#pragma once

#include "catalogue/PBCatalogue.h"
#include "library/PBAliasObject.h"
#include "platform/tasks/Mutex.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class FMDatabase;

using PBAliasArray = std::vector<std::shared_ptr<PBAliasObject>>;

/// The folder roots at one moment. The array is replaced as a whole, so that a background reader
/// always holds one that stays as it is. Loop over the snapshot itself: `for (root : aliasArray())`
/// keeps it for the loop.
class PBAliasArraySnapshot {
public:
    PBAliasArraySnapshot() : _array(std::make_shared<const PBAliasArray>()) {}
    explicit PBAliasArraySnapshot(PBAliasArray array)
        : _array(std::make_shared<const PBAliasArray>(std::move(array))) {}

    [[nodiscard]] PBAliasArray::const_iterator begin() const { return _array->begin(); }
    [[nodiscard]] PBAliasArray::const_iterator end() const { return _array->end(); }
    [[nodiscard]] std::size_t size() const { return _array->size(); }
    [[nodiscard]] std::shared_ptr<PBAliasObject> operator[](std::size_t index) const {
        return (*_array)[index];
    }
    [[nodiscard]] PBAliasArray copy() const { return *_array; }

private:
    std::shared_ptr<const PBAliasArray> _array;
};

/// All folder roots, in step with the rows of `FolderAlias`, in the catalogue's order with new
/// roots at the end. Roots are changed on the main thread; what answers paths may be called from
/// any.
class PBAliasManager final : public FolderRootPaths {
public:
    struct Environment {
        FMDatabase& mainFileDb;
        PBAliasServices& services;
        /// Has all rows of these roots, which are no longer in the array, removed in the
        /// background: whole or not at all. Where that fails, `rootsWereNotRemoved` is to be
        /// called. `askedFor` is the one of them that the user has just removed, if any.
        std::function<void(PBAliasArray roots, std::shared_ptr<PBAliasObject> askedFor)> removeRows;
    };

    explicit PBAliasManager(Environment environment);

    /// The root's path with the relative path, if any, appended; empty for an unmounted root.
    [[nodiscard]] static QString
    pathWithAliasObject(const PBAliasObject& aliasObject, const QString& relativePath);

    /// Reads all roots and resolves them without mounting. Local folders that are known to be gone
    /// are removed with all that the catalogue knows of them.
    void loadAlias();
    void addAliasObject(std::shared_ptr<PBAliasObject> aliasObject);
    [[nodiscard]] PBAliasArraySnapshot aliasArray() const;

    /// A volume came or went; the path is not used. Answer the roots that changed.
    PBAliasArray volumDidMount(const QString& devicePath);
    PBAliasArray volumDidUnmount(const QString& devicePath);
    /// The disk reported a change of the root folder itself, and perhaps where it went. Answers the
    /// roots that changed.
    PBAliasArray aliasPathChanged(const QString& path, const QString& movedTo = {});
    /// An answer about a root came later than anyone could wait. Answers the roots that changed.
    PBAliasArray
    aliasDidAnswer(const PBAliasObject& aliasObject, const PBAliasResolution& resolution);
    /// Answers whether any root changed.
    bool resolveAllAliasWithMount(const PBAliasObject::Look& look);
    /// Resolves one root as `PBAliasObject` does. Wherever one of the array is found, opened roots
    /// whose folders lie in its own give way: they leave the array, and the catalogue behind that.
    bool resolveAlias(
        PBAliasObject& aliasObject, const PBAliasObject::Look& look, QString* error = nullptr);

    /// The first root whose path is this one; zombies too.
    [[nodiscard]] std::shared_ptr<PBAliasObject> findAliasObjectByPath(const QString& path) const;
    [[nodiscard]] std::shared_ptr<PBAliasObject> findAliasObjectById(qint64 aliasId) const;
    [[nodiscard]] QString mountedPathOfAliasId(qint64 aliasId) const override;

    /// The deepest mounted root at or above the path, with what lies between them in `relativePath`
    /// (which is left alone if there is none). `ignoreTrash` leaves zombies out.
    [[nodiscard]] std::shared_ptr<PBAliasObject> appropriateAliasObjectForPath(
        const QString& path, QString* relativePath, bool ignoreTrash) const;
    /// The folder from the name of its root on; the path itself where it lies in none.
    [[nodiscard]] QString titleOfFolder(const QString& path) const;
    /// Where a folder that the last run knew by this path is, if its root has moved since.
    [[nodiscard]] QString presentPath(const QString& formerPath) const;
    /// The mounted roots strictly below the folder of the root.
    [[nodiscard]] PBAliasArray
    findSubAliasByAliasObject(const PBAliasObject& aliasObject, const QString& relativePath) const;

    /// The paths of all mounted roots, each once.
    [[nodiscard]] QStringList getMonitorPathArray() const;
    /// Where the unmounted roots on disks of this machine were last seen, each place once: there
    /// they may come again.
    [[nodiscard]] QStringList awaitedPaths() const;

    /// Sets or clears the state in the catalogue and, if that succeeded, in the object.
    bool updateState(PBAliasObject& aliasObject, std::uint64_t state);
    /// Moves to a new root, before it is added, the folder rows that other roots have for folders
    /// in it: what is catalogued stays so. False when that could not be stored, and nothing moved.
    [[nodiscard]] bool updateFolderByAliasObject(const PBAliasObject& aliasObject);
    /// Removes mounted zombies that lie in no other mounted root from the array, and their rows
    /// behind that. Where the roots could not all be read, none goes: another may lie in it.
    /// Answers whether any went.
    bool removeZombieAlias();
    /// The user removes a root from the sidebar. One that lies in another root stays as a zombie,
    /// so that its folders keep their rows; so does one whose disk is away. Any other leaves the
    /// array at once, with the zombies in it, and the catalogue behind that. False where the
    /// catalogue doesn't take it.
    [[nodiscard]] bool removeAliasObject(const std::shared_ptr<PBAliasObject>& aliasObject);
    /// The catalogue did not let go of roots: they are back in the array. `askedFor` is no zombie
    /// any more, unless its folder is another root's by now.
    void rootsWereNotRemoved(const PBAliasArray& roots, PBAliasObject* askedFor);

private:
    void setAliasArray(PBAliasArray aliasArray);
    /// These were found: what was opened of their folders meanwhile is in the catalogue twice.
    void dropOpenedRootsIn(const PBAliasArray& found);
    /// The same, together with roots that have just been taken out of the array.
    bool removeZombieAlias(
        PBAliasArray aliasArray, PBAliasArray removed,
        const std::shared_ptr<PBAliasObject>& askedFor = nullptr);
    /// Whether a root is to go, since its folder is gone for good.
    [[nodiscard]] bool isToGo(const PBAliasObject& aliasObject) const;
    [[nodiscard]] static bool isInAnother(const PBAliasObject& root, const PBAliasArray& roots);
    [[nodiscard]] bool takeOverRows(const PBAliasObject& from, const PBAliasObject& to);
    /// Whether the components of a path begin with those of another.
    [[nodiscard]] static bool startsWith(const QStringList& parts, const QStringList& start);

    const Environment _environment;
    bool _couldReadAll = true;
    mutable platform::Mutex _mutex;
    PBAliasArraySnapshot _aliasArray VELMORA_GUARDED_BY(_mutex);
};
