#include "library/WatchedChanges.h"

#include "core/FileTypes.h"
#include "core/Paths.h"
#include "platform/files/EventStream.h"

#include <QHash>

#include <utility>

using namespace platform;

namespace {

constexpr std::uint32_t comingOrGoing = EventItemCreated | EventItemRemoved | EventItemRenamed;

QString parentOf(const QString& path) {
    const qsizetype separator = path.lastIndexOf(u'/');
    return separator > 0 ? path.left(separator) : QStringLiteral("/");
}

class Walk {
public:
    Walk(const QString& selectedPath, const WatchedChangesQuestions& questions)
        : _selectedPath(selectedPath), _questions(questions) {}

    void take(const SCEvent& event) {
        const std::uint32_t flags = event.eventFlags();
        if ((flags & EventRootChanged) != 0) {
            askRoots(event.eventPath(), event.movedTo());
        } else if ((flags & EventItemIsDir) != 0) {
            takeFolder(event.eventPath(), flags);
        } else if ((flags & EventItemIsFile) != 0) {
            takeFile(event.eventPath(), flags);
        }
    }
    /// Of all events.
    [[nodiscard]] WatchedChanges changes() {
        // Once for each folder, however many came or went in it.
        for (const FolderRescan& folder : std::exchange(_refreshes, {}).folders) {
            if (_questions.refreshChilden(folder.path, folder.recursive))
                _changes.sidebarChanged = true;
        }
        _changes.rescans = std::move(_rescans.folders);
        return std::move(_changes);
    }

private:
    /// In the order in which they first came; with what is below them where any asks for that.
    struct Folders {
        std::vector<FolderRescan> folders;
        QHash<QString, std::size_t> places;

        void add(const QString& path, bool recursive) {
            const auto known = places.constFind(path);
            if (known != places.cend()) {
                folders[*known].recursive = folders[*known].recursive || recursive;
                return;
            }
            places.insert(path, folders.size());
            folders.push_back({path, recursive});
        }
    };

    [[nodiscard]] int comparison(const QString& path) const {
        return _selectedPath.isEmpty() ? -2 : PBUtilities::comparePath(_selectedPath, path);
    }
    [[nodiscard]] bool isCovered(const QString& path) const { return comparison(path) >= 0; }

    void askRoots(const QString& path, const QString& movedTo) {
        if (!_questions.aliasPathChanged(path, movedTo)) return;
        _changes.rootsChanged = true;
        _changes.sidebarChanged = true;
    }

    void takeFolder(const QString& path, std::uint32_t flags) {
        if ((flags & comingOrGoing) == 0) return;
        const bool mustScan = (flags & EventMustScanSubDirs) != 0;
        askRoots(path, {});
        _refreshes.add(parentOf(path), mustScan);
        const int place = comparison(path);
        const bool concerned = place >= 0 || (mustScan && place == -1);
        if (!concerned) return;
        _changes.checkExist =
            _changes.checkExist || (flags & (EventItemRemoved | EventItemRenamed)) != 0;
        if ((flags & EventItemRenamed) == 0) return;
        // Where events were lost above the selected folder, its own files may be among them.
        rescan(place >= 0 ? path : _selectedPath, true);
    }

    void takeFile(const QString& path, std::uint32_t flags) {
        const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
        if (!_questions.isImageType(type)) return;
        if ((flags & (EventItemRemoved | EventItemRenamed)) != 0 && isCovered(path))
            _changes.checkExist = true;
        constexpr std::uint32_t withContent =
            EventItemCreated | EventItemRenamed | EventItemModified;
        if ((flags & withContent) == 0) return;
        // What was written beside it may have been put in its place by a rename.
        if (isCovered(path)) _changes.rewrittenFiles.append(path);
        const QString parent = parentOf(path);
        if (isCovered(parent)) rescan(parent, false);
    }

    void rescan(const QString& path, bool recursive) {
        if (!_questions.showsSubFolders && comparison(path) != 0) return;
        _rescans.add(path, recursive);
    }

    const QString& _selectedPath;
    const WatchedChangesQuestions& _questions;
    WatchedChanges _changes;
    Folders _refreshes;
    Folders _rescans;
};

} // namespace

WatchedChanges watchedChangesOfEvents(
    std::span<const SCEvent> events, const QString& selectedPath,
    const WatchedChangesQuestions& questions) {
    Walk walk(selectedPath, questions);
    for (const SCEvent& event : events)
        walk.take(event);
    return walk.changes();
}
