#include "shell/toolbar/ToolbarReasons.h"

#include "shell/toolbar/MainToolbar.h"

#include <QHelpEvent>
#include <QToolButton>
#include <QToolTip>

#include <utility>

using Command = MenuCommand;

ToolbarReasons::ToolbarReasons(MainToolbar& toolbar, Reason reason, QObject* parent)
    : QObject(parent),
      _reason(std::move(reason)), _commands{
                                      {toolbar.backAction(), Command::back},
                                      {toolbar.forwardAction(), Command::forward},
                                      {toolbar.flagAction(), Command::flagClicked},
                                      {toolbar.ratingAction(), Command::rating5},
                                      {toolbar.rotateLeftAction(), Command::rotateLeft},
                                      {toolbar.rotateRightAction(), Command::rotateRight},
                                      {toolbar.shareAction(), Command::shareClicked},
                                      {toolbar.deleteAction(), Command::deleteClicked}} {
    for (const MainToolbar::ImageItem& item : toolbar.imageViewToolbarItems())
        _commands.emplace(item.action, item.command);
    for (QToolButton* button : toolbar.findChildren<QToolButton*>())
        button->installEventFilter(this);
}

QString ToolbarReasons::tipOf(const QAction& action) const {
    const auto command = _commands.find(&action);
    if (action.isEnabled() || command == _commands.end()) return {};
    const QString reason = _reason(command->second);
    return reason.isEmpty() ? QString() : action.toolTip() + u'\n' + reason;
}

bool ToolbarReasons::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ToolTip) return false;
    auto* button = qobject_cast<QToolButton*>(watched);
    const QAction* action = button ? button->defaultAction() : nullptr;
    const QString tip = action ? tipOf(*action) : QString();
    if (tip.isEmpty()) return false;
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), tip, button);
    return true;
}
