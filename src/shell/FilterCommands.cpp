#include "shell/FilterCommands.h"

#include "core/PBAppDelegate.h"

FilterCommands::FilterCommands(PBAppDelegate& delegate, QObject* parent)
    : QObject(parent), _delegate(delegate) {}

std::uint64_t FilterCommands::currentFilter() const {
    return _delegate.filter();
}

QString FilterCommands::searchString() const {
    return _delegate.searchString();
}

bool FilterCommands::isRecursive() const {
    return _delegate.recurseSubFolder();
}

void FilterCommands::filter(int segment) {
    if (segment == 0) filter_Flag();
    if (segment == 1) filter_Star();
}

void FilterCommands::filter_Flag() {
    flip(FlaggedBit);
}

void FilterCommands::filter_Star() {
    flip(StarredBit);
}

void FilterCommands::flip(Bit bit) {
    _delegate.setFilter(_delegate.filter() ^ bit);
    Q_EMIT filterDidChange();
    _delegate.scan();
}

void FilterCommands::search(const QString& text) {
    if (text == _delegate.searchString()) return;
    _delegate.setSearchString(text);
    Q_EMIT searchStringDidChange();
    _delegate.scan();
}

void FilterCommands::recurseSubFolder() {
    _delegate.setRecurseSubFolder(!_delegate.recurseSubFolder());
    Q_EMIT recurseSubFolderDidChange();
    _delegate.scan();
}

void FilterCommands::reset() {
    if (_delegate.filter() == 0 && _delegate.searchString().isEmpty()) return;
    _delegate.setFilter(0);
    _delegate.setSearchString({});
    announce();
}

void FilterCommands::announce() {
    Q_EMIT filterDidChange();
    Q_EMIT searchStringDidChange();
}
