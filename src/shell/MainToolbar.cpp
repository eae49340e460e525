#include "shell/MainToolbar.h"

#include "platform/LocalizedTexts.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QAction>
#include <QPainter>

using platform::localizedString;

MainToolbar::MainToolbar(QWidget* parent)
    : QToolBar(localizedString(u"Toolbar"), parent),
      _back(addCommand(QStringLiteral("back"), u"Back", Qt::ALT | Qt::Key_Left)),
      _forward(addCommand(QStringLiteral("forward"), u"Forward", Qt::ALT | Qt::Key_Right)),
      _addFolder(addCommand(QStringLiteral("addFolder"), u"AddFolder", Qt::CTRL | Qt::Key_O)) {
    setObjectName(QStringLiteral("mainToolbar"));
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setIconSize(QSize(18, 18));
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setContentsMargins(4, 2, 4, 3);
}

QAction*
MainToolbar::addCommand(const QString& icon, QStringView text, const QKeySequence& shortcut) {
    QAction* action = addAction(Icons::named(icon), localizedString(text));
    action->setToolTip(QStringLiteral("%1 (%2)").arg(
        localizedString(text), shortcut.toString(QKeySequence::NativeText)));
    return action;
}

void MainToolbar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    painter.fillRect(QRect(0, height() - 1, width(), 1), PBThemes::colors().separator);
}
