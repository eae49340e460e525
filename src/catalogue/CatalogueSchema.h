#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <span>

/// One column as the statement that creates its table names it.
struct CatalogueColumn {
    QStringView name;
    QStringView sqlType;
};

/// One table of the catalogue; its columns are in the order in which they are created.
struct CatalogueTable {
    QStringView name;
    std::span<const CatalogueColumn> columns;
};

/// An index that makes a look-up by one column fast. It changes no result.
struct CatalogueIndex {
    QStringView name;
    QStringView table;
    QStringView column;
};

/// The one description of both catalogue files, `files.db` and `thumbnail.db`. Constant data, any
/// thread; views and spans stay valid for the whole run.
namespace CatalogueSchema {

/// The one row of the table `Version` in both files.
inline constexpr QStringView schemaVersion = u"1.0.1";

/// The tables of `files.db` in the order of their creation.
[[nodiscard]] std::span<const CatalogueTable> filesTables();
/// The tables of `thumbnail.db` in the order of their creation.
[[nodiscard]] std::span<const CatalogueTable> thumbnailTables();
/// The indexes of `files.db`.
[[nodiscard]] std::span<const CatalogueIndex> filesIndexes();

/// All columns of a table in order; empty for an unknown table.
[[nodiscard]] const QStringList& columnsOfTable(QStringView name);
/// The columns of a metadata table (`Exif`, `ExifAux`, `Tiff`, `IPTC`, `GPS`) in order, without its
/// key `FileId`: the order in which a row read with "*" is taken apart. Empty for other tables.
[[nodiscard]] const QStringList& metadataColumnsOfTable(QStringView name);

/// The statement that creates the table.
[[nodiscard]] QString createStatement(const CatalogueTable& table);
/// The statement that creates the index unless it is there.
[[nodiscard]] QString createStatement(const CatalogueIndex& index);

} // namespace CatalogueSchema
