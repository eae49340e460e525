#pragma once

#include "browser/PBImageBrowserTipView.h"

#include <QString>

#include <cstdint>

/// What narrows down the folder on show.
struct Narrowing {
    QString searchString;
    std::uint64_t filter = 0;         ///< bits of `group::FilterBit`
    bool leavesOutSubfolders = false; ///< and the folder has some
    bool isAway = false;              ///< the folder can't be looked at
};

/// Why a folder with this shows no photograph; the reason has no text where nothing narrows it
/// down.
[[nodiscard]] PBImageBrowserTipView::Reason emptyReason(const Narrowing& narrowing);

/// What the filter lets through, such as "flagged photographs"; empty without a filter.
[[nodiscard]] QString photographsOfFilter(std::uint64_t filter);
