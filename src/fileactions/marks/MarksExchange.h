#pragma once

#include "fileactions/marks/MarksEdit.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <optional>

/// Marks as text that other programs can read: a JSON object in each line, one photograph each,
/// such as {"path": "/a/b.jpg", "stars": 4, "flag": true, "tags": ["Lisbon"], "rotation": 90}. A
/// path that is no UTF-8 stands as "pathBytes", in base64. The rotation is the angle of display in
/// degrees counter-clockwise, where it is not that of the file's own orientation; as 0 says that it
/// is, a photograph turned to the angle 0 has 360.
namespace fileactions {

/// The line of a photograph, with its end; empty for one without marks.
[[nodiscard]] QByteArray exportedLine(const QByteArray& path, const marks::Marks& marks);
/// All that the ledger knows, in the order of paths; nothing when it can't be read.
[[nodiscard]] std::optional<QByteArray>
exportMarks(FMDatabase& both, const marks::RootPaths& mountedRoots);

struct ImportPlan {
    MarksEdit edit;
    /// One sentence for each line that is no photograph with marks, and for each photograph that
    /// the catalogue does not have.
    QStringList told;
    bool hasBadLines = false;
};
/// What the lines say, for whoever finds photographs in the catalogue: `fileIdOf` answers 0 for one
/// that is not there. Of two lines for one photograph the later counts.
[[nodiscard]] ImportPlan
planImport(const QByteArray& lines, const std::function<qint64(const QByteArray& path)>& fileIdOf);

/// The row of the catalogue for an absolute path; 0 for none. `roots` are all that may have it,
/// mounted or not.
[[nodiscard]] qint64
fileIdOfPath(FMDatabase& db, const marks::RootPaths& roots, const QByteArray& path);

} // namespace fileactions
