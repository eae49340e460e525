#pragma once

#include "core/PBGroupTypeArray.h"

#include <QString>

#include <cstdint>

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

    [[nodiscard]] bool recurseSubFolder() const { return _recurseSubFolder; }
    void setRecurseSubFolder(bool recurse);
    [[nodiscard]] PBGroupTypeArray groupTypeArray() const { return _groupTypeArray; }
    void setGroupTypeArray(PBGroupTypeArray chain);
    [[nodiscard]] int sortType() const { return _sortType; }
    void setSortType(int sortType);
    [[nodiscard]] bool descendingSort() const { return _descendingSort; }
    void setDescendingSort(bool descending);
    [[nodiscard]] std::uint64_t filter() const { return _filter; }
    void setFilter(std::uint64_t filter);
    [[nodiscard]] QString searchString() const { return _searchString; }
    void setSearchString(const QString& searchString) { _searchString = searchString; }
    /// Takes filter and search away; false if there was neither.
    bool clearFilterAndSearch();

private:
    platform::UserDefaults& _defaults;
    bool _recurseSubFolder;
    PBGroupTypeArray _groupTypeArray;
    int _sortType;
    bool _descendingSort;
    std::uint64_t _filter;
    QString _searchString;
};
