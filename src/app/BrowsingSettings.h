#pragma once

#include "core/PBAppDelegate.h"

namespace platform {
class UserDefaults;
}

/// How the user browses: recursion, group chain, sort, filter and search, kept in the settings. A
/// setter writes only what has changed. Main thread.
class BrowsingSettings {
public:
    /// Reads the settings, with the defaults for what is absent or of no use. They outlive this
    /// object.
    explicit BrowsingSettings(platform::UserDefaults& defaults);

    bool recurseSubFolder() const { return _recurseSubFolder; }
    void setRecurseSubFolder(bool recurse);
    PBGroupTypeArray groupTypeArray() const { return _groupTypeArray; }
    void setGroupTypeArray(PBGroupTypeArray chain);
    int sortType() const { return _sortType; }
    void setSortType(int sortType);
    bool descendingSort() const { return _descendingSort; }
    void setDescendingSort(bool descending);
    std::uint64_t filter() const { return _filter; }
    void setFilter(std::uint64_t filter);
    QString searchString() const { return _searchString; }
    void setSearchString(const QString& searchString) { _searchString = searchString; }

    /// At the first start: the chains offered as presets. The chain by place is among them only
    /// where places can be looked up.
    void seedFavoriteChains(bool canUseGeocoder);

private:
    platform::UserDefaults& _defaults;
    bool _recurseSubFolder;
    PBGroupTypeArray _groupTypeArray;
    int _sortType;
    bool _descendingSort;
    std::uint64_t _filter;
    QString _searchString;
};
