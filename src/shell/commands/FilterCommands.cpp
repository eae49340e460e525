#include "shell/commands/FilterCommands.h"

#include "core/PBAppDelegate.h"
#include "group/SearchText.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/BrowsingSettings.h"

FilterCommands::FilterCommands(BrowsingSettings& browsing, PBAppDelegate& delegate, QObject* parent)
    : QObject(parent), _browsing(browsing), _delegate(delegate) {}

std::uint64_t FilterCommands::currentFilter() const {
    return _browsing.filter();
}

QString FilterCommands::searchString() const {
    return _browsing.searchString();
}

bool FilterCommands::isRecursive() const {
    return _browsing.recurseSubFolder();
}

void FilterCommands::filter(int segment) {
    if (segment == 0) filter_Flag();
    if (segment == 1) filter_Star();
}

void FilterCommands::filter_Flag() {
    flip(group::FilterFlagged);
}

void FilterCommands::filter_Star() {
    flip(group::FilterRated);
}

void FilterCommands::showAll() {
    setFilter(0);
}

void FilterCommands::flip(group::FilterBit bit) {
    setFilter(_browsing.filter() ^ bit);
}

void FilterCommands::setFilter(std::uint64_t filter) {
    platform::assertMainThread();
    if (filter == _browsing.filter()) return;
    _browsing.setFilter(filter);
    Q_EMIT filterDidChange();
    _delegate.scan();
}

void FilterCommands::search(const QString& text) {
    platform::assertMainThread();
    if (text == _browsing.searchString()) return;
    const bool findsOthers = group::SearchText(text) != group::SearchText(_browsing.searchString());
    _browsing.setSearchString(text);
    Q_EMIT searchStringDidChange();
    if (findsOthers) _delegate.scan(); // a blank at the end is no new search
}

void FilterCommands::recurseSubFolder() {
    platform::assertMainThread();
    _browsing.setRecurseSubFolder(!_browsing.recurseSubFolder());
    Q_EMIT recurseSubFolderDidChange();
    _delegate.scan();
}

void FilterCommands::reset() {
    platform::assertMainThread();
    if (_browsing.clearFilterAndSearch()) announce();
}

void FilterCommands::announce() {
    Q_EMIT filterDidChange();
    Q_EMIT searchStringDidChange();
}
