#include "platform/volumes/BookmarkResolver.h"

#include "platform/files/FolderSearch.h"
#include "platform/files/SiblingSearch.h"
#include "platform/volumes/BookmarkLook.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <utility>

namespace platform {

namespace {

// How deep each kind of place is searched, in levels of folders. A rename stays in the parent, a
// move usually goes next to it or into one of its neighbours.
constexpr int parentDepth = 2;
constexpr int grandparentDepth = 2;
constexpr int otherRootDepth = 2;
constexpr int commonFolderDepth = 4;

QString parentOf(const QString& path) {
    return path == QStringLiteral("/") ? QString() : QFileInfo(path).path();
}

/// Where the folder is known to have been, the latest first.
QStringList formerPlaces(const Bookmark& bookmark, const SearchPlaces& places, BookmarkLook& look) {
    QStringList former{places.lastSeenPath, bookmark.path};
    former += look.placesOnVolume();
    former.removeDuplicates();
    former.removeAll(QString());
    return former;
}

std::vector<FolderSearch::Place>
searchOrder(const SearchPlaces& places, const QStringList& former, const BookmarkLook& look) {
    std::vector<FolderSearch::Place> order;
    const auto add = [&](const QString& folder, int depth) {
        if (folder.isEmpty() || look.isAvoided(folder)) return;
        order.push_back({QFile::encodeName(folder), depth});
    };
    for (const QString& path : former)
        add(parentOf(path), 1);
    for (const QString& path : former)
        add(parentOf(path), parentDepth);
    for (const QString& path : former)
        add(parentOf(parentOf(path)), grandparentDepth);
    for (const QString& root : places.otherRoots) {
        add(parentOf(root), otherRootDepth);
        add(root, otherRootDepth);
    }
    for (const QString& folder : places.commonFolders)
        add(folder, commonFolderDepth);
    return order;
}

} // namespace

BookmarkResolver::BookmarkResolver(VolumeSources sources, Clock clock)
    : _volumes(std::move(sources)),
      _clock(clock ? std::move(clock) : Clock(&std::chrono::steady_clock::now)) {}

QStringList BookmarkResolver::commonFolders(const VolumeSources& sources) {
    QStringList folders{
        QStandardPaths::writableLocation(QStandardPaths::PicturesLocation), QDir::homePath()};
    folders += sources.mediaFolders;
    return folders;
}

Resolution BookmarkResolver::resolve(
    const Bookmark& bookmark, const SearchPlaces& places, std::chrono::milliseconds limit,
    const std::stop_token& stop) const {
    using Outcome = Resolution::Outcome;
    const auto end = _clock() + limit;
    const auto clock = [&] { return stop.stop_requested() ? end : _clock(); };
    BookmarkLook look(bookmark, _volumes);
    const auto nothing = [&](Outcome outcome) -> Resolution {
        return {look.isInconclusive() ? Outcome::NoAnswer : outcome, {}};
    };
    if (look.isThere(bookmark.path, true)) return {Outcome::Found, bookmark.path};
    if (look.mountsOfVolume().empty()) return nothing(Outcome::VolumeAbsent);
    for (const QString& path : look.placesOnVolume()) {
        if (look.isThere(path, true)) return {Outcome::Found, path};
    }
    if (bookmark.fileSystem.inodeStability() == InodeStability::None) {
        return nothing(Outcome::NotFound);
    }
    for (const QString& path : {places.movedTo, places.lastSeenPath}) {
        if (look.isThere(path, false)) return {Outcome::Found, path};
    }
    const auto isWanted = [&](const QByteArray& path) {
        return look.isThere(QFile::decodeName(path), false);
    };
    const QStringList former = formerPlaces(bookmark, places, look);
    const SiblingSearch siblings{
        bookmark.folder.inode, isWanted, look.avoidedFolders(), [&] { return clock() >= end; }};
    for (const QString& path : former) {
        if (look.isAvoided(path)) continue;
        if (const auto found = siblings.run(QFile::encodeName(path))) {
            return {Outcome::Found, QFile::decodeName(*found)};
        }
    }
    FolderSearch search(bookmark.folder.inode, isWanted, clock, end);
    search.setAvoided(look.avoidedFolders());
    if (const auto found = search.run(searchOrder(places, former, look))) {
        return {Outcome::Found, QFile::decodeName(*found)};
    }
    return nothing(Outcome::NotFound);
}

} // namespace platform
