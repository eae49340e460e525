#include "shell/groups/GroupMenus.h"

#include "core/Paths.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/EntryMenu.h"
#include "ui/MenuTracking.h"
#include "ui/WindowAlert.h"

#include <QMenu>
#include <QWidget>

#include <utility>

using group::GroupPresets;
using platform::localizedString;

void GroupSheets::alertLocationRequireSystem() {
    showWindowAlert(_window, localizedString(u"AlertLocationRequireSystem"));
}

GroupMenus::GroupMenus(Environment environment, QObject* parent)
    : QObject(parent), _environment(std::move(environment)), _presets(_environment.settings),
      _groupMenu(std::make_unique<QMenu>()), _buttonMenu(std::make_unique<QMenu>()) {
    // Not at each change: an entry that is being chosen may not be taken away.
    connect(_groupMenu.get(), &QMenu::aboutToShow, this, &GroupMenus::rebuildGroupMenu);
    connect(_buttonMenu.get(), &QMenu::aboutToShow, this, [this] {
        rebuild(*_buttonMenu, _presets.buttonMenu());
    });
    for (QMenu* menu : {_groupMenu.get(), _buttonMenu.get()}) {
        menu->setToolTipsVisible(true);
        keepContentsWhileShown(*menu);
    }
    rebuildGroupMenu();
}

GroupMenus::~GroupMenus() = default;

void GroupMenus::setDoGroupCopyMoveTo(std::function<void(GroupTransfer)> doGroupCopyMoveTo) {
    _doGroupCopyMoveTo = std::move(doGroupCopyMoveTo);
    rebuildGroupMenu();
}

void GroupMenus::showState(QAction& entry, const GroupPresets::Action& action) const {
    using Type = GroupPresets::Action::Type;
    const auto disable = [&entry](QStringView reason) {
        entry.setEnabled(false);
        entry.setToolTip(localizedString(reason));
    };
    switch (action.type) {
    case Type::Select:
        if (!PBUtilities::isEqualGroupTypeArray(action.chain, *_environment.groupTypeArray()))
            break;
        entry.setCheckable(true);
        entry.setChecked(true);
        break;
    case Type::CopyTo:
    case Type::MoveTo:
        entry.setEnabled(static_cast<bool>(_doGroupCopyMoveTo));
        if (!_environment.hasPhotographs()) disable(u"Why_NoPhotograph");
        break;
    case Type::Save:
        if (_presets.has(*_environment.groupTypeArray())) disable(u"Why_IsPreset");
        break;
    case Type::Remove:
    case Type::RemoveAll:
        break;
    }
}

void GroupMenus::rebuildGroupMenu() {
    rebuild(*_groupMenu, _presets.menu());
}

void GroupMenus::rebuild(QMenu& menu, const std::vector<GroupPresets::Entry>& entries) {
    menu.clear();
    using Action = GroupPresets::Action;
    appendEntries(
        menu, entries, [this](const Action& action) { groupContextMenuClicked(action); },
        [this](QAction& entry, const Action& action) { showState(entry, action); });
}

void GroupMenus::groupMenuBtnClicked(const QWidget& button) {
    _buttonMenu->popup(button.mapToGlobal(button.rect().bottomLeft() + QPoint(0, 1)));
}

void GroupMenus::groupMenuClicked(const PBGroupMenuAction& action) {
    platform::assertMainThread();
    auto changed = group::chainAfterAction(
        *_environment.groupTypeArray(), action, _environment.canUseGeocoder());
    if (auto* chain = std::get_if<group::GroupChain>(&changed)) {
        changeChain(std::move(*chain));
    } else if (std::get<group::ChainRefusal>(changed) == group::ChainRefusal::NeedsGeocoder) {
        _environment.prompts.alertLocationRequireSystem();
    }
}

void GroupMenus::groupContextMenuClicked(const GroupPresets::Action& action) {
    platform::assertMainThread();
    using Type = GroupPresets::Action::Type;
    switch (action.type) {
    case Type::Select:
        if (!PBUtilities::isEqualGroupTypeArray(action.chain, *_environment.groupTypeArray()))
            changeChain(action.chain);
        break;
    case Type::Save:
        _presets.save(*_environment.groupTypeArray());
        break;
    case Type::Remove:
        _presets.remove(action.chain);
        break;
    case Type::RemoveAll:
        _presets.removeAll();
        break;
    case Type::CopyTo:
        if (_doGroupCopyMoveTo) _doGroupCopyMoveTo(GroupTransfer::Copy);
        break;
    case Type::MoveTo:
        if (_doGroupCopyMoveTo) _doGroupCopyMoveTo(GroupTransfer::Move);
        break;
    }
}

void GroupMenus::changeChain(group::GroupChain chain) {
    const auto groupTypeArray = std::make_shared<const std::vector<int>>(std::move(chain));
    _environment.setGroupTypeArray(groupTypeArray);
    Q_EMIT groupTypeArrayDidChange(groupTypeArray);
    _environment.scan();
}
