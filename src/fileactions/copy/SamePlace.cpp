#include "fileactions/copy/SamePlace.h"

#include "platform/files/PathNames.h"

using platform::FileSystem;
using platform::folderOfPath;

namespace fileactions {

bool isSamePlace(FileSystem& files, const QByteArray& path, const QByteArray& other) {
    if (path == other) return true;
    FileSystem::Entry one;
    FileSystem::Entry two;
    if (files.look(path, one) || files.look(other, two) || !one.isSameFile(two)) return false;
    if (one.names <= 1) return true;
    FileSystem::Entry folder;
    FileSystem::Entry otherFolder;
    // Links to folders followed. Two names in one folder may be one in two spellings.
    if (files.look(folderOfPath(path) + "/.", folder) ||
        files.look(folderOfPath(other) + "/.", otherFolder))
        return true;
    return folder.isSameFile(otherFolder);
}

bool leadsOver(FileSystem& files, const QByteArray& path, const QByteArray& other) {
    constexpr int longestWay = 40; // links, as the kernel has it
    FileSystem::Entry place;
    FileSystem::Entry entry;
    if (files.look(path, entry) || entry.kind != FileSystem::Kind::Link) return false;
    if (files.look(other, place)) return false;
    QByteArray way = path;
    for (int links = 0; entry.kind == FileSystem::Kind::Link && links < longestWay; ++links) {
        QByteArray target;
        if (files.readLink(way, target)) return false;
        way = target.startsWith('/') ? target : platform::pathInFolder(folderOfPath(way), target);
        if (files.look(way, entry)) return false;
        if (entry.isSameFile(place)) return true;
    }
    return false;
}

} // namespace fileactions
