#include "shell/menus/MainMenu.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/MenuTracking.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>
#include <set>
#include <utility>

using platform::localizedString;

namespace {

std::size_t indexOf(MenuCommand command) {
    return static_cast<std::size_t>(command);
}

/// Keys that no shortcut of ours begins with are typed text, and need no look at the window.
bool mayBeShortcut(const QKeyEvent& event) {
    const bool isFunctionKey = event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F35;
    return isFunctionKey || event.key() == Qt::Key_Delete ||
           (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) != 0;
}

/// Held down, anything else would be done to one photograph after the other, or undone again.
bool isRepeated(MenuCommand command) {
    using enum MenuCommand;
    return (command >= go_PreviousItem && command <= go_LastGroupItem) || command == view_zoomIn ||
           command == view_zoomOut || command == undo || command == redo || command == nextPane ||
           command == previousPane;
}

/// The place of the letter that the mark in a text is for; -1 for none.
qsizetype letterIn(const QString& text) {
    for (qsizetype mark = text.indexOf(u'&'); mark >= 0 && mark + 1 < text.size();
         mark = text.indexOf(u'&', mark + 2))
        if (text[mark + 1] != u'&') return mark + 1;
    return -1;
}

/// With the mark before its first letter that is free, which is taken then; without one where none
/// is.
QString withOtherLetter(QString text, std::set<QChar>& taken) {
    if (const qsizetype letter = letterIn(text); letter > 0) text.remove(letter - 1, 1);
    for (qsizetype place = 0; place < text.size(); ++place) {
        const QChar letter = text[place].toLower();
        if (!letter.isLetterOrNumber() || !taken.insert(letter).second) continue;
        return text.insert(place, u'&');
    }
    return text;
}

/// Entries of several menus stand in one: those whose letter another one has before them get
/// another while the menu is open.
void tellLettersApart(QMenu& menu) {
    std::set<QChar> taken;
    QList<QAction*> others;
    for (QAction* entry : menu.actions()) {
        const qsizetype letter = letterIn(entry->text());
        if (entry->isSeparator()) continue;
        if (letter < 0 || !taken.insert(entry->text()[letter].toLower()).second)
            others.append(entry);
    }
    for (QAction* entry : others) {
        const QString text = entry->text();
        entry->setText(withOtherLetter(text, taken));
        QObject::connect(
            &menu, &QMenu::aboutToHide, entry, [entry, text] { entry->setText(text); });
    }
}

/// A submenu without any entry that can be chosen can't be opened, for the reason of the first.
void enableAsEntries(QMenu& submenu) {
    const QList<QAction*> entries = submenu.actions();
    const bool isEnabled = std::ranges::any_of(entries, &QAction::isEnabled);
    submenu.menuAction()->setEnabled(isEnabled);
    submenu.menuAction()->setToolTip(isEnabled ? QString() : entries.front()->toolTip());
}

} // namespace

MainMenu::MainMenu(QMainWindow& window, ReadState readState, QObject* parent)
    : QObject(parent), _window(window), _readState(std::move(readState)) {
    makeActions();
    fill(menuBarRows(), nullptr);
    _share = new QMenu(&_window);
    _share->setObjectName(QStringLiteral("share"));
    action(MenuCommand::shareClicked)->setMenu(_share);
    _openWith = new QMenu(localizedString(u"Menu_OpenWith"), &_window);
    _openWith->setObjectName(QStringLiteral("openWith"));
    addOpenWith(*menuWithTag(MenuTag::File));
    menuWithTag(MenuTag::Group)->menuAction()->setVisible(false);
    qApp->installEventFilter(this);
}

void MainMenu::makeActions() {
    for (const MenuEntry& entry : menuEntries()) {
        auto* action = new QAction(this);
        action->setObjectName(entry.name.toString());
        if (!entry.text.isEmpty()) action->setText(localizedString(entry.text));
        if (!entry.shortcuts.isEmpty())
            action->setShortcuts(QKeySequence::listFromString(entry.shortcuts.toString()));
        if (!entry.icon.isEmpty()) action->setIcon(Icons::named(entry.icon.toString()));
        action->setAutoRepeat(isRepeated(entry.command));
        action->setMenuRole(QAction::NoRole);
        action->setEnabled(false);
        connect(action, &QAction::triggered, this, [this, command = entry.command] {
            perform(command);
        });
        _actions[indexOf(entry.command)] = action;
        // The window's own, or their shortcuts would be dead while the menu bar is hidden.
        _window.addAction(action);
    }
    makeChoice(MenuCommand::arrange_FileName, MenuCommand::arrange_None);
    makeChoice(MenuCommand::arrange_Ascending, MenuCommand::arrange_Dscending);
    action(MenuCommand::showPreferences)->setMenuRole(QAction::PreferencesRole);
    action(MenuCommand::quit)->setMenuRole(QAction::QuitRole);
    action(MenuCommand::showAbout)->setMenuRole(QAction::AboutRole);
}

/// Of the commands from the one to the other, at most one has a mark, which is drawn as such.
void MainMenu::makeChoice(MenuCommand first, MenuCommand last) {
    auto* choice = new QActionGroup(this);
    choice->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (std::size_t i = indexOf(first); i <= indexOf(last); ++i) {
        _actions[i]->setCheckable(true);
        choice->addAction(_actions[i]);
    }
}

void MainMenu::fill(std::span<const MenuRow> rows, QMenu* first) {
    QMenu* menu = first;
    QMenu* above = nullptr;
    for (const MenuRow& row : rows) {
        switch (row.kind) {
        case MenuRow::Kind::Menu:
            menu = _window.menuBar()->addMenu(localizedString(row.text));
            menu->setToolTipsVisible(true);
            _menus[row.tag] = menu;
            watchMenu(menu, row.tag == MenuTag::Edit);
            break;
        case MenuRow::Kind::Submenu:
            above = std::exchange(menu, menu->addMenu(localizedString(row.text)));
            menu->setToolTipsVisible(true);
            // Those of a menu that is made for a moment have the same entries.
            if (!first) _submenus.push_back(menu);
            break;
        case MenuRow::Kind::EndOfSubmenu:
            menu = above;
            break;
        case MenuRow::Kind::Separator:
            menu->addSeparator();
            break;
        case MenuRow::Kind::Entry:
            menu->addAction(action(row.entry.command));
            break;
        }
    }
}

/// Possible where sharing is.
void MainMenu::addOpenWith(QMenu& menu) {
    menu.insertMenu(action(MenuCommand::revealInFinder), _openWith);
}

void MainMenu::watchMenu(QMenu* menu, bool hasPaste) {
    connect(menu, &QMenu::aboutToShow, this, [this, hasPaste] { validate(hasPaste); });
    keepContentsWhileShown(*menu);
}

QAction* MainMenu::action(MenuCommand command) const {
    return _actions[indexOf(command)];
}

QMenu* MainMenu::menuWithTag(MenuTag tag) const {
    return _menus.at(tag);
}

void MainMenu::setGroupMenu(QMenu& groupMenu) {
    QMenu*& placeholder = _menus[MenuTag::Group];
    groupMenu.setTitle(placeholder->title());
    _window.menuBar()->insertMenu(placeholder->menuAction(), &groupMenu);
    delete std::exchange(placeholder, &groupMenu);
}

void MainMenu::connectCommand(MenuCommand command, std::function<void()> perform) {
    platform::assertMainThread();
    _performers[indexOf(command)] = std::move(perform);
}

void MainMenu::perform(MenuCommand command) {
    if (const auto& performer = _performers[indexOf(command)]) performer();
    // A check mark that flipped by itself may be wrong.
    validate();
}

void MainMenu::validate(bool includesPasteboard) {
    platform::assertMainThread();
    const MenuState state = _readState(includesPasteboard);
    for (const MenuEntry& entry : menuEntries()) {
        const MenuItemState item = validateMenuItem(entry.command, state);
        QAction* action = this->action(entry.command);
        action->setEnabled(item.isEnabled && _performers[indexOf(entry.command)] != nullptr);
        action->setToolTip(item.reason.isEmpty() ? QString() : localizedString(item.reason));
        action->setCheckable(item.isChecked.has_value());
        action->setChecked(item.isChecked.value_or(false));
        if (!item.title.isEmpty()) action->setText(localizedString(item.title));
        if (!item.text.isEmpty()) action->setText(item.text);
    }
    const QAction& share = *action(MenuCommand::shareClicked);
    _openWith->menuAction()->setEnabled(share.isEnabled());
    _openWith->menuAction()->setToolTip(share.toolTip());
    for (QMenu* submenu : _submenus)
        enableAsEntries(*submenu);
}

void MainMenu::trigger(MenuCommand command) {
    if (isPossible(command)) return perform(command);
    const QString why = reason(command);
    if (!why.isEmpty()) Q_EMIT refused(why);
}

bool MainMenu::isPossible(MenuCommand command) const {
    platform::assertMainThread();
    return _performers[indexOf(command)] && validateMenuItem(command, _readState(false)).isEnabled;
}

QString MainMenu::reason(MenuCommand command) const {
    platform::assertMainThread();
    const QStringView key = validateMenuItem(command, _readState(false)).reason;
    return key.isEmpty() ? QString() : localizedString(key);
}

void MainMenu::popUpBrowserMenu(bool isOnItem, const QPoint& globalPosition, QWidget* parent) {
    auto* menu = new QMenu(parent);
    if (isOnItem) {
        fill(photographMenuRows(), menu);
        addOpenWith(*menu);
    } else {
        menu->addActions(menuWithTag(MenuTag::View)->actions());
    }
    popUp(*menu, globalPosition);
}

void MainMenu::popUpLargeViewMenu(const QPoint& globalPosition, QWidget* parent) {
    auto* menu = new QMenu(parent);
    fill(largeViewMenuRows(), menu);
    addOpenWith(*menu);
    popUp(*menu, globalPosition);
}

void MainMenu::popUp(QMenu& menu, const QPoint& globalPosition) {
    menu.setAttribute(Qt::WA_DeleteOnClose);
    menu.setToolTipsVisible(true);
    validate();
    // Those that belong to the bar are in step already.
    for (const QAction* entry : menu.actions())
        if (entry->menu() && entry->menu()->parent() == &menu) enableAsEntries(*entry->menu());
    tellLettersApart(menu);
    // What lies under the menu stays until it is closed.
    const auto scope = std::make_shared<platform::TrackingScope>();
    connect(&menu, &QObject::destroyed, this, [scope] {});
    menu.popup(globalPosition);
}

bool MainMenu::eventFilter(QObject* watched, QEvent* event) {
    // Comes before the shortcuts are looked through, of which only enabled ones count.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (mayBeShortcut(key)) validate(key.matches(QKeySequence::Paste));
    }
    return QObject::eventFilter(watched, event);
}
