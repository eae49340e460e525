#pragma once

#include "group/ItemOrder.h"

#include <QObject>
#include <QString>

#include <cstdint>

class BrowsingSettings;
class PBAppDelegate;

/// What narrows the display down: the filter, the search, and whether folders below the selected
/// one are shown too. Each command stores what it changes and scans. Toolbar and menus show the
/// state and follow the signals. Main thread.
class FilterCommands final : public QObject {
    Q_OBJECT

public:
    /// Both outlive this object.
    FilterCommands(BrowsingSettings& browsing, PBAppDelegate& delegate, QObject* parent);

    /// Bits of `group::FilterBit`.
    [[nodiscard]] std::uint64_t currentFilter() const;
    [[nodiscard]] QString searchString() const;
    [[nodiscard]] bool isRecursive() const;

    /// Flips the bit of a segment of the toolbar's control: 0 is flagged, 1 is starred.
    void filter(int segment);
    void filter_Flag();
    void filter_Star();
    /// Takes the filter away.
    void showAll();
    /// The search field has another text; the same text again changes nothing.
    void search(const QString& text);
    void recurseSubFolder();

    /// Takes filter and search away without a scan: another folder is about to be shown.
    void reset();
    /// Filter or search were changed by somebody else: has everyone show them anew.
    void announce();

Q_SIGNALS:
    void filterDidChange();
    void searchStringDidChange();
    void recurseSubFolderDidChange();

private:
    void flip(group::FilterBit bit);
    void setFilter(std::uint64_t filter);

    BrowsingSettings& _browsing;
    PBAppDelegate& _delegate;
};
