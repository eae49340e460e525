#pragma once

#include "catalogue/marks/MarksLedger.h"
#include "catalogue/marks/MarksMatching.h"

#include <span>

/// Gives photographs the marks of the rows that they were matched with: in catalogue and ledger, in
/// one transaction on the connection to both. Answers those whose marks changed; nothing when it
/// could not be stored. The sightings have the catalogue's present trace.
[[nodiscard]] std::optional<std::vector<qint64>> storeMatches(
    FMDatabase& both, const marks::RootPaths& roots, std::span<const marks::LedgerRow> rows,
    std::span<const marks::Sighting> sightings, std::span<const marks::Match> matches);
