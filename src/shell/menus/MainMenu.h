#pragma once

#include "shell/menus/MenuEntries.h"
#include "shell/menus/MenuValidation.h"

#include <QObject>

#include <array>
#include <functional>
#include <map>
#include <span>
#include <vector>

class QAction;
class QMainWindow;
class QMenu;
class QPoint;
class QWidget;

/// The menu bar of the main window and the menus that right clicks open. An entry does nothing, and
/// is disabled, until somebody connects its command; what else it depends on is asked whenever a
/// menu opens and before a shortcut is looked for. Main thread.
class MainMenu final : public QObject {
    Q_OBJECT

public:
    /// Reads what the entries depend on; the pasteboard only when asked, since another program may
    /// keep that waiting.
    using ReadState = std::function<MenuState(bool includesPasteboard)>;

    /// Fills the window's menu bar. The window outlives this object.
    MainMenu(QMainWindow& window, ReadState readState, QObject* parent);

    [[nodiscard]] QAction* action(MenuCommand command) const;
    [[nodiscard]] QMenu* menuWithTag(MenuTag tag) const;
    /// The submenus of what takes photographs, and of programs for the originals. Who knows these
    /// fills them when they open.
    [[nodiscard]] QMenu& shareMenu() const { return *_share; }
    [[nodiscard]] QMenu& openWithMenu() const { return *_openWith; }
    /// Puts the menu, which stays with its owner, where the table has an empty one.
    void setGroupMenu(QMenu& groupMenu);
    /// Takes effect with the next validation.
    void connectCommand(MenuCommand command, std::function<void()> perform);
    /// Performs the command, if that is possible now; tells why where it is not.
    void trigger(MenuCommand command);
    /// Whether a command that somebody has connected is possible now.
    [[nodiscard]] bool isPossible(MenuCommand command) const;
    /// The sentence that says why the command is not possible now; empty for one that is.
    [[nodiscard]] QString reason(MenuCommand command) const;

    /// Brings all entries in step with the window.
    void validate(bool includesPasteboard = false);
    /// Opens the menu of the browser at a place of the screen; the menu deletes itself.
    void popUpBrowserMenu(bool isOnItem, const QPoint& globalPosition, QWidget* parent);
    void popUpLargeViewMenu(const QPoint& globalPosition, QWidget* parent);

Q_SIGNALS:
    /// A command that was asked for by other ways than menus is not possible.
    void refused(const QString& reason);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeActions();
    void addOpenWith(QMenu& menu);
    void makeChoice(MenuCommand first, MenuCommand last);
    void fill(std::span<const MenuRow> rows, QMenu* first);
    void watchMenu(QMenu* menu, bool hasPaste);
    void popUp(QMenu& menu, const QPoint& globalPosition);
    void perform(MenuCommand command);

    QMainWindow& _window;
    const ReadState _readState;
    std::array<QAction*, menuCommandCount> _actions{};
    std::array<std::function<void()>, menuCommandCount> _performers;
    std::map<MenuTag, QMenu*> _menus;
    std::vector<QMenu*> _submenus;
    QMenu* _share = nullptr;
    QMenu* _openWith = nullptr;
};
