#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstddef>
#include <span>
#include <vector>

/// The criteria by which images are grouped. A criterion is a number from 0 to 63; a chain is an
/// array of them. Everything here answers for any number: one outside of the table has no key, no
/// text, no icon and no columns. Any thread.
namespace group {

inline constexpr int groupTypeCount = 64;

/// Those numbers that code has to know; the others are only rows of the table.
enum GroupType : int {
    AllImages = 0,
    ModificationYear = 1,
    ModificationMonth = 2,
    CaptureYear = 3,
    CaptureMonth = 4,
    Folder = 5,
    FileKind = 6,
    FileSizeBucket = 7,
    PixelCountBucket = 8,
    Resolution = 9,
    ColorModel = 10,
    Flag = 11,
    StarRating = 12,
    Tags = 13,
    Place = 14,
    CameraMake = 15,
    CameraModel = 16,
    LensModel = 18,
    LensInfo = 19,
    FocalLength = 20,
    Aperture = 21,
    ExposureTime = 22,
    ExposureBias = 23,
    ExposureMode = 24,
    ExposureProgram = 25,
    ISOSpeed = 26,
    FocusDistance = 27,
    Flash = 29,
    MeteringMode = 30,
    WhiteBalance = 31,
    Contrast = 32,
    Saturation = 33,
    Sharpness = 34,
    FirstIPTC = 35,
};

/// Where the value of a group comes from.
enum class GroupSource {
    None,
    Item, ///< a field of the file item
    Task, ///< the folder that is being scanned
    Row,  ///< a column of the image's row in the catalogue
    Exif, ///< the rest: the metadata table of that name
    ExifAux,
    Tiff,
    IPTC,
    GPS
};

/// An icon that an upper floor draws: one of the program's own by name, or the system's for a
/// folder, for files with an extension, or for a type identifier.
struct IconName {
    enum class Kind { None, Named, Folder, FileExtension, TypeIdentifier };
    Kind kind = Kind::None;
    QString name;
    bool operator==(const IconName&) const = default;
};

/// One column that fills a slot of the group data array.
struct ColumnDescriptor {
    QStringList columns;      ///< one column name; for a position the four that make it
    std::size_t position = 0; ///< index of the slot, which is that of the type in the chain
    int type = 0;
};
using ColumnDescriptors = std::vector<ColumnDescriptor>;

/// False for the types whose groups stand in descending order: dates, flag and stars.
[[nodiscard]] bool isAscendingWithGroupType(int type);
/// The catalogue's column of the type; empty where there is none.
[[nodiscard]] QString dbKeyWithGroupType(int type);
/// The name of the type for menus.
[[nodiscard]] QString descriptionWithGroupType(int type);
/// The name of a column for the user; empty for the empty key.
[[nodiscard]] QString descriptionWithDbKey(QStringView key);
[[nodiscard]] IconName imageWithGroupType(int type);
[[nodiscard]] GroupSource sourceOfGroupType(int type);

/// The columns of one table that a chain needs, in chain order; none if the chain needs none.
[[nodiscard]] ColumnDescriptors exifTypeForGroupType(std::span<const int> chain);
[[nodiscard]] ColumnDescriptors exifAuxiliaryTypeForGroupType(std::span<const int> chain);
[[nodiscard]] ColumnDescriptors tiffTypeForGroupType(std::span<const int> chain);
[[nodiscard]] ColumnDescriptors iptcTypeForGroupType(std::span<const int> chain);
/// The four columns of the table GPS that make a position, in the order in which
/// `locationFromColumns` takes their values.
[[nodiscard]] const QStringList& positionColumns();
[[nodiscard]] ColumnDescriptors gpsTypeForGroupType(std::span<const int> chain);

/// 0 to 11: the bucket of a file size in bytes, or of a count of pixels. A negative number is in
/// the first.
[[nodiscard]] int sizeBucket(qint64 size);
/// Such as "10 ~ 50K"; empty for a number that is no bucket.
[[nodiscard]] QString sizeBucketLabel(qint64 bucket);

} // namespace group
