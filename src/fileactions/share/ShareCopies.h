#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

/// Copies of photographs for programs that know nothing of the catalogue's rotation. They lie in a
/// folder of the program's own that nobody else may look into, and stay for a day: mail programs
/// read attachments when they send, and nobody says when that is.
namespace fileactions::ShareCopies {

/// Whether a photograph is handed on as a copy: turned in the catalogue (degrees), or with a stored
/// orientation (0: none) that asks for turning.
[[nodiscard]] bool needsCopy(double rotateAngle, std::int64_t orientation);

/// A new folder for one sharing in `base`, both with mode 0700; empty where that fails.
[[nodiscard]] QByteArray makeFolder(const QString& base);

struct Place {
    QByteArray folder; ///< the given one, or one of its folders "1", "2" and so on
    QByteArray name;
    bool operator==(const Place&) const = default;
};
/// Where the copies of photographs go: each has its own name as a JPEG file, in the first folder
/// that has none of that name.
[[nodiscard]] std::vector<Place>
placesOfCopies(const std::vector<QByteArray>& paths, const QByteArray& folder);

/// Removes the folders that are older than a day at `now` (milliseconds since 1970), and nothing
/// that is no folder of a sharing. Blocks.
void removeOld(const QString& base, std::int64_t now);
/// Removes the folder of one sharing that came to nothing. Blocks.
void removeFolder(const QByteArray& folder);

} // namespace fileactions::ShareCopies
