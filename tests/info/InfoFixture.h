#pragma once

#include "catalogue/CatalogueSchema.h"
#include "group/CatalogueFixture.h"

/// A row of a metadata table with a value in the given columns and the null marker in all others.
inline PBArray rowOf(QStringView table, const PBDictionary& values) {
    PBArray row;
    for (const QString& column : CatalogueSchema::metadataColumnsOfTable(table)) {
        const auto found = values.find(column);
        row.push_back(found == values.end() ? PBValue(PBNull()) : found->second);
    }
    return row;
}
