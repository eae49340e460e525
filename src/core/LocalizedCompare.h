#pragma once

#include <QCollatorSortKey>
#include <QString>

/// The order in which a file browser shows names: by the user's language, without regard to case,
/// runs of digits by their numeric value. In a locale without an order of its own (C, POSIX) names
/// order as in English. Any thread.
namespace PBUtilities {

/// -1, 0 or 1. Remembers the sort keys of the texts that this thread compared lately, so that it
/// suits texts that recur, such as folders and places. An object with a text of its own compares
/// faster by a key that it keeps.
[[nodiscard]] int localizedStandardCompare(const QString& text, const QString& otherText);

/// Keys compare as their texts do.
[[nodiscard]] QCollatorSortKey localizedSortKey(const QString& text);
/// The same, out of the memory of `localizedStandardCompare`.
[[nodiscard]] QCollatorSortKey recentSortKey(const QString& text);

/// -1, 0 or 1.
[[nodiscard]] int compareSortKeys(const QCollatorSortKey& key, const QCollatorSortKey& otherKey);

} // namespace PBUtilities
