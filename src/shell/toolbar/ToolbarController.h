#pragma once

#include "shell/toolbar/ToolbarValidation.h"

#include <QObject>

#include <functional>
#include <set>

class BrowserPane;
class ChosenPhotographs;
class FilterCommands;
class HeaderBar;
class MainToolbar;
class MarkCommands;
class PaneLayout;
class PBAppDelegate;
class PBPathHistory;
class QAction;
class QToolButton;
class SourceSelection;

namespace fileactions {
class EditRunner;
}
namespace platform {
class UserDefaults;
}

/// Connects the toolbar, and the buttons in the bar over the folders, with what they command and
/// show: which items are possible, filter and search, where back leads, the line of the sidebar's
/// edge. Main thread.
class ToolbarController final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        platform::UserDefaults& userDefaults;
        const PBPathHistory& pathHistory;
        MainToolbar& toolbar;
        HeaderBar& sourceBar;
        FilterCommands& filters;
        SourceSelection& selection;
        BrowserPane& browserPane;
        const PBAppDelegate& delegate;
        const ChosenPhotographs& chosen;
        MarkCommands& marks;
        fileactions::EditRunner& edits;
        PaneLayout& panes;
    };

    /// The parts outlive this object.
    ToolbarController(const Parts& parts, QObject* parent);

    /// Puts the keyboard into the search field.
    void find();
    /// From `find` until the field is empty and without the keyboard: a hidden toolbar is shown for
    /// that.
    [[nodiscard]] bool isFinding() const { return _isFinding; }
    /// From now on the item does this, where it is possible.
    void serve(QAction& item, ToolbarValidation::Command command, std::function<void()> perform);
    /// Enables each item by what is possible now.
    void validateVisibleItems();

Q_SIGNALS:
    void isFindingDidChange();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectHistory();
    void connectFilters();
    void connectMarks();
    void connectSourceBar();
    void updateFilterSegmentControl();
    void updateSearchField();
    void updateSourceBarBtn();
    void updateHistoryTips();
    void leaveSearchField();
    void endFindingUnlessUsed();
    [[nodiscard]] ToolbarValidation::Environment makeValidation();

    const Parts _parts;
    ToolbarValidation _validation;
    QToolButton* _subFolder;
    bool _isFinding = false;
    std::set<ToolbarValidation::Command> _served;
};
