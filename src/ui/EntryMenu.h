#pragma once

#include "group/GroupChainMenu.h"
#include "ui/GroupIcons.h"

#include <QMenu>

/// Fills the menu with the entries. A command calls the handler with its action; an entry without
/// one is shown disabled. `adjust` gets each command with its action, to show its state. The menu
/// owns what is added. Main thread.
template <typename Action, typename Handler, typename Adjust>
void appendEntries(
    QMenu& menu, const std::vector<group::MenuEntry<Action>>& entries, const Handler& handler,
    const Adjust& adjust) {
    for (const auto& entry : entries) {
        // Menus take an ampersand as the mark of a key.
        const QString title = QString(entry.title).replace(u'&', QStringLiteral("&&"));
        if (entry.isSeparator()) {
            menu.addSeparator();
        } else if (entry.isSubmenu) {
            appendEntries(*menu.addMenu(title), entry.entries, handler, adjust);
        } else {
            QAction* added = menu.addAction(Icons::ofGroup(entry.icon), title);
            added->setEnabled(entry.action.has_value());
            if (!entry.action) continue;
            QObject::connect(added, &QAction::triggered, &menu, [handler, action = *entry.action] {
                handler(action);
            });
            adjust(*added, *entry.action);
        }
    }
}

template <typename Action, typename Handler>
void appendEntries(
    QMenu& menu, const std::vector<group::MenuEntry<Action>>& entries, const Handler& handler) {
    appendEntries(menu, entries, handler, [](QAction&, const Action&) {});
}
