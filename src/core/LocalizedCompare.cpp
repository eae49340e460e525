#include "core/LocalizedCompare.h"

#include <QCollator>
#include <QHash>
#include <QLocale>

namespace PBUtilities {

namespace {

/// Some thousand folders and places at once are in use at most; a key takes about 150 bytes.
constexpr qsizetype maximalRecentKeys = 4096;

QCollator makeCollator() {
    QLocale locale = QLocale().collation();
    // Without a real locale the collator compares by code unit, whatever it was asked for.
    if (locale.language() == QLocale::C) locale = QLocale(QLocale::English, QLocale::UnitedStates);
    QCollator collator(locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    return collator;
}

/// A collator may not be used by two threads at once.
const QCollator& collator() {
    thread_local const QCollator threadCollator = makeCollator();
    return threadCollator;
}

} // namespace

QCollatorSortKey localizedSortKey(const QString& text) {
    return collator().sortKey(text);
}

QCollatorSortKey recentSortKey(const QString& text) {
    // Of each thread its own, like the collator that made them: no comparison takes a lock.
    thread_local QHash<QString, QCollatorSortKey> recentKeys;
    if (const auto known = recentKeys.constFind(text); known != recentKeys.cend()) return *known;
    if (recentKeys.size() >= maximalRecentKeys) recentKeys.clear();
    return *recentKeys.insert(text, localizedSortKey(text));
}

int compareSortKeys(const QCollatorSortKey& key, const QCollatorSortKey& otherKey) {
    const int order = key.compare(otherKey);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int localizedStandardCompare(const QString& text, const QString& otherText) {
    if (text == otherText) return 0;
    return compareSortKeys(recentSortKey(text), recentSortKey(otherText));
}

} // namespace PBUtilities
