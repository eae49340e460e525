#pragma once

#include "core/PBGroupTypeArray.h"
#include "group/GroupPresets.h"

#include <QObject>

#include <functional>
#include <memory>

class QAction;
class QMenu;
class QWidget;

/// What the user is told about groups, as dialogs of the window that nothing waits for.
class GroupSheets final {
public:
    /// The window outlives this object.
    explicit GroupSheets(QWidget& window) : _window(window) {}
    /// Grouping by place has been asked for where places can't be looked up.
    void alertLocationRequireSystem();

private:
    QWidget& _window;
};

/// The commands that change the chain of group types: those of the path control's menus, and the
/// group submenu with the presets. Main thread.
class GroupMenus final : public QObject {
    Q_OBJECT

public:
    /// All that is named outlives this object.
    struct Environment {
        std::function<PBGroupTypeArray()> groupTypeArray;
        /// Stores the chain.
        std::function<void(PBGroupTypeArray)> setGroupTypeArray;
        /// Starts the display anew.
        std::function<void()> scan;
        std::function<bool()> canUseGeocoder;
        /// There is something on display that groups can be made of.
        std::function<bool()> hasPhotographs;
        platform::UserDefaults& settings;
        GroupSheets& prompts;
    };

    /// Copies or moves the groups into folders of their own.
    enum class GroupTransfer { Copy = 0, Move = 1 };

    explicit GroupMenus(Environment environment, QObject* parent = nullptr);
    ~GroupMenus() override;

    /// The group submenu of the main menu, in step with presets and chain whenever it opens. The
    /// caller may give it to a menu bar; it goes with this object.
    [[nodiscard]] QMenu* groupMenu() const { return _groupMenu.get(); }
    /// The menu of the toolbar's button, likewise.
    [[nodiscard]] QMenu* buttonMenu() const { return _buttonMenu.get(); }
    /// Without this the entries that copy and move groups stand disabled.
    void setDoGroupCopyMoveTo(std::function<void(GroupTransfer)> doGroupCopyMoveTo);

    /// Opens the button's menu below it.
    void groupMenuBtnClicked(const QWidget& button);
    /// An entry of a step's menu in the path control.
    void groupMenuClicked(const PBGroupMenuAction& action);
    /// An entry of the group submenu.
    void groupContextMenuClicked(const group::GroupPresets::Action& action);

Q_SIGNALS:
    /// Another chain is in force; before the display starts anew.
    void groupTypeArrayDidChange(const PBGroupTypeArray& groupTypeArray);

private:
    void rebuild(QMenu& menu, const std::vector<group::GroupPresets::Entry>& entries);
    void rebuildGroupMenu();
    void showState(QAction& entry, const group::GroupPresets::Action& action) const;
    void changeChain(group::GroupChain chain);

    const Environment _environment;
    group::GroupPresets _presets;
    const std::unique_ptr<QMenu> _groupMenu;
    const std::unique_ptr<QMenu> _buttonMenu;
    std::function<void(GroupTransfer)> _doGroupCopyMoveTo;
};
