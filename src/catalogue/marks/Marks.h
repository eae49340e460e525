#pragma once

#include "platform/files/FileIdentity.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// What the user said of photographs, and what it takes to know a photograph again. Values; any
/// thread.
namespace marks {

/// What the user said of one photograph.
struct Marks {
    int stars = 0; ///< 0 to 5
    bool flag = false;
    QStringList tags;
    /// The angle at which the photograph is shown, degrees in [0, 360) counter-clockwise; nothing
    /// where the user did not turn it, so that the file's own orientation counts.
    std::optional<int> rotation;

    [[nodiscard]] bool isEmpty() const { return *this == Marks(); }
    bool operator==(const Marks&) const = default;
};

/// What an edit says of one photograph; what is absent stays as it is.
struct MarksChange {
    std::optional<int> stars;
    std::optional<bool> flag;
    std::optional<QStringList> tags;
    /// The inner value as in `Marks`.
    std::optional<std::optional<int>> rotation;

    [[nodiscard]] bool isEmpty() const { return *this == MarksChange(); }
    /// The marks after the change.
    [[nodiscard]] Marks appliedTo(Marks marks) const;
    /// What brings back, of what this change sets, the marks as they were.
    [[nodiscard]] MarksChange inverse(const Marks& before) const;
    bool operator==(const MarksChange&) const = default;
};

/// What it takes to know a photograph again. The paths are bytes, as the disk spells them.
struct Trace {
    QByteArray rootPath;     ///< of the folder root; empty where none is known
    QByteArray relativePath; ///< of the file below it; absolute without a root
    qint64 size = -1;        ///< bytes; below 0 for a photograph of which the path alone is known
    double modificationDate = 0; ///< seconds since 1970
    platform::FileIdentity identity;
    QByteArray digest;   ///< of the content (`PhotographFile.h`); empty while it was not taken
    int orientation = 0; ///< of EXIF; 0 for none
    int width = 0;       ///< pixels, as stored
    int height = 0;
    QString camera;
    QString timeOfCapture; ///< in the form of EXIF

    [[nodiscard]] QByteArray path() const;
    [[nodiscard]] QByteArray fileName() const;
};

/// One photograph of the ledger.
struct LedgerRow {
    qint64 id = 0;
    /// Of the catalogue's row that has the marks; 0 while the photograph is looked for.
    qint64 fileId = 0;
    /// The row whose marks this one took over when another content came to its path; 0 for none,
    /// and once the user edited them.
    qint64 inheritedFrom = 0;
    /// The catalogue's row stays where it is, but its root is not mounted: nobody can look.
    bool isAway = false;
    /// The ledger's own path is not the catalogue's any more, which the trace has.
    bool hasMoved = false;
    /// The root's path by the ledger, where the catalogue has the root at another one now.
    QByteArray formerRootPath;
    Trace trace;
    Marks marks;
};

} // namespace marks
