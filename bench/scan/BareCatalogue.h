#pragma once

#include <QString>
#include <QStringList>

namespace bench {

/// Milliseconds for one status call of each file and one select of what a catalogue pass needs of
/// their rows, through SQLite's own interface, on the calling thread.
[[nodiscard]] double statAndSelect(const QString& catalogue, const QStringList& files);

/// Milliseconds for reading each file's properties in this process and for copying its rows from
/// `source` into a new catalogue with kept statements, 200 files in each transaction. `source`
/// holds exactly the rows of these files.
[[nodiscard]] double readAndInsert(const QString& source, const QStringList& files);

/// A thumbnail row for every image of the catalogue, so that none has to be built.
void fillThumbnails(const QString& catalogue, const QString& thumbnails);

} // namespace bench
