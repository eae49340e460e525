#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace bench {

/// Folders of JPEG files with EXIF, made once and kept below the system's temporary folder. Every
/// file has bytes and an inode of its own, unless links are asked for; those of one set differ in
/// the date on which they were taken.
struct PictureSet {
    int pictures = 0;
    int folders = 1;
    QSize size;
    /// Of the encoder; small pictures that stand for many need few bytes.
    int quality = 75;
    /// They were taken in so many places, tens of kilometres apart; 0: they have no positions.
    int places = 0;
    /// Only so many are files of their own, a multiple of `folders`, and the others hard links to
    /// those in their folder; 0: all.
    int originals = 0;

    /// The root of the set, which is made if it is not there yet. Takes a while then.
    [[nodiscard]] QString folder() const;
};

inline constexpr QSize smallPicture{48, 32};
inline constexpr QSize twoMegapixelPicture{1600, 1200};
inline constexpr QSize twelveMegapixelPicture{4000, 3000};

/// All files below a folder, in the order of the disk.
[[nodiscard]] QStringList filesBelow(const QString& folder);

} // namespace bench
