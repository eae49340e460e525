#include "shell/services/BrowsingSettings.h"

#include "group/GroupTypes.h"
#include "group/ItemOrder.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <utility>

namespace {

const QString recurseKey = QStringLiteral("RecurseSubFolder");
const QString chainKey = QStringLiteral("GroupTypeArray");
const QString sortKey = QStringLiteral("SortType");
const QString descendingKey = QStringLiteral("DescendingSort");
const QString filterKey = QStringLiteral("Filter");

constexpr int lastSortType = group::SortPixelArea;
constexpr int firstSortType = group::SortFileName; // of a user who never chose

/// The stored chain, or the default one: a chain with a type that does not exist is of no use.
std::vector<int> readChain(const platform::UserDefaults& defaults) {
    const auto stored = defaults.integersForKey(chainKey);
    const auto exists = [](int type) { return type >= 0 && type < group::groupTypeCount; };
    if (stored && std::ranges::all_of(*stored, exists)) return *stored;
    return {group::CaptureYear, group::Folder};
}

int readSortType(const platform::UserDefaults& defaults) {
    const qint64 stored = defaults.integerForKey(sortKey).value_or(firstSortType);
    return stored >= 0 && stored <= lastSortType ? static_cast<int>(stored) : firstSortType;
}

/// With a bit that nobody can take away, folders would never be looked through.
std::uint64_t readFilter(const platform::UserDefaults& defaults) {
    const qint64 stored = std::max<qint64>(0, defaults.integerForKey(filterKey).value_or(0));
    return static_cast<std::uint64_t>(stored) & (group::FilterFlagged | group::FilterRated);
}

} // namespace

BrowsingSettings::BrowsingSettings(platform::UserDefaults& defaults)
    : _defaults(defaults), _recurseSubFolder(defaults.boolForKey(recurseKey).value_or(true)),
      _groupTypeArray(std::make_shared<const std::vector<int>>(readChain(defaults))),
      _sortType(readSortType(defaults)),
      _descendingSort(defaults.boolForKey(descendingKey).value_or(false)),
      _filter(readFilter(defaults)) {}

void BrowsingSettings::setRecurseSubFolder(bool recurse) {
    platform::assertMainThread();
    if (recurse == _recurseSubFolder) return;
    _recurseSubFolder = recurse;
    _defaults.setBool(recurse, recurseKey);
}

void BrowsingSettings::setGroupTypeArray(PBGroupTypeArray chain) {
    platform::assertMainThread();
    if (chain == _groupTypeArray || !chain) return;
    _groupTypeArray = std::move(chain);
    _defaults.setIntegers(*_groupTypeArray, chainKey);
}

void BrowsingSettings::setSortType(int sortType) {
    platform::assertMainThread();
    if (sortType == _sortType) return;
    _sortType = sortType;
    _defaults.setInteger(sortType, sortKey);
}

void BrowsingSettings::setDescendingSort(bool descending) {
    platform::assertMainThread();
    if (descending == _descendingSort) return;
    _descendingSort = descending;
    _defaults.setBool(descending, descendingKey);
}

void BrowsingSettings::setFilter(std::uint64_t filter) {
    platform::assertMainThread();
    if (filter == _filter) return;
    _filter = filter;
    _defaults.setInteger(static_cast<qint64>(filter), filterKey);
}

bool BrowsingSettings::clearFilterAndSearch() {
    platform::assertMainThread();
    if (_filter == 0 && _searchString.isEmpty()) return false;
    setFilter(0);
    setSearchString({});
    return true;
}
