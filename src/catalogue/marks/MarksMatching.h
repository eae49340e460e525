#pragma once

#include "catalogue/marks/Marks.h"

#include <functional>
#include <span>
#include <vector>

/// Which photograph of the catalogue is the one that the ledger knows. Pure, but for what the
/// functions handed in look up.
namespace marks {

/// A photograph of the catalogue without marks, that may be one of the ledger's.
struct Sighting {
    qint64 fileId = 0;
    Trace trace; ///< its digest is asked for apart
    bool isOnRemovableVolume = false;
};

/// What is at the place where the ledger last saw a photograph.
enum class Place {
    Gone,
    HoldsIt,
    HoldsOther,
    Unknown, ///< nobody can look
};

/// In the order of trust.
enum class Trust {
    SamePlace = 1, ///< same path, and same identity or content
    SameIdentity,  ///< renamed or moved on its disk
    SameContent,   ///< elsewhere, while the old place is gone or holds something else
    SamePathOnly,  ///< another program wrote it anew
};

struct Match {
    std::size_t row = 0;      ///< of `MatchingQuestion::rows`
    std::size_t sighting = 0; ///< of `MatchingQuestion::sightings`
    Trust trust = Trust::SamePlace;
};

struct MatchingQuestion {
    std::span<const LedgerRow> rows;
    std::span<const Sighting> sightings;
    /// Of what the disk has at the row's path.
    std::function<Place(const LedgerRow&)> place;
    /// Of the sighting's file, empty where it can't be had. Without this function nothing is
    /// decided that needs one.
    std::function<QByteArray(const Sighting&)> digest;
    /// Rows and sightings are all that there are, not those of a few new files: contents can be
    /// compared.
    bool isAllSeen = true;
    /// All that can be seen was seen: what has turned up nowhere is nowhere.
    bool isEndOfScan = false;
};

/// Each row and each sighting is in one match at most. What is ambiguous is in none.
[[nodiscard]] std::vector<Match> matchPhotographs(const MatchingQuestion& question);

/// Whether the user's rotation still means something for the file as it is now: its own orientation
/// is what it was, and its sides have not changed places.
[[nodiscard]] bool keepsRotation(const Trace& before, const Trace& now);

} // namespace marks
