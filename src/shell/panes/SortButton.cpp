#include "shell/panes/SortButton.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/MenuTracking.h"

#include <QMenu>

#include <algorithm>
#include <utility>

using platform::localizedFormat;

namespace {

constexpr int iconSide = 16;
constexpr int compactWidth = 26;
constexpr int textGap = 12;
constexpr int textSize = 12; // points, as the breadcrumb's beside it

/// Without the mark of its key.
QString plainText(const QAction& action) {
    return action.text().remove(u'&');
}

} // namespace

SortButton::SortButton(QList<QAction*> orders, const QList<QAction*>& directions, QWidget* parent)
    : QToolButton(parent), _orders(std::move(orders)), _directions(directions),
      _menu(new QMenu(this)) {
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setIconSize(QSize(iconSide, iconSide));
    QFont small = font();
    small.setPixelSize(textSize);
    setFont(small);
    _menu->setToolTipsVisible(true);
    _menu->addActions(_orders);
    _menu->addSeparator();
    _menu->addActions(_directions);
    keepContentsWhileShown(*_menu);
    // Not as the button's own menu, whose little arrow would stand beside that of the direction.
    connect(this, &QToolButton::pressed, this, &SortButton::popUp);
    connect(_menu, &QMenu::aboutToHide, this, [this] { setDown(false); });
    _show.setSingleShot(true);
    connect(&_show, &QTimer::timeout, this, &SortButton::showOrder);
    for (QAction* action : _menu->actions())
        connect(action, &QAction::changed, &_show, qOverload<>(&QTimer::start));
    showOrder();
}

QSize SortButton::sizeHint() const {
    const QSize compact = QToolButton::sizeHint();
    return {compactWidth + textGap + fontMetrics().horizontalAdvance(text()), compact.height()};
}

QSize SortButton::minimumSizeHint() const {
    return {compactWidth, sizeHint().height()};
}

void SortButton::resizeEvent(QResizeEvent* event) {
    QToolButton::resizeEvent(event);
    setToolButtonStyle(
        width() <= compactWidth ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
}

void SortButton::popUp() {
    _menu->popup(mapToGlobal(rect().bottomLeft()));
    setDown(true);
}

void SortButton::showOrder() {
    platform::assertMainThread();
    const auto order = std::ranges::find_if(_orders, &QAction::isChecked);
    const QString name = order == _orders.end() ? QString() : plainText(**order);
    const bool isDescending = _directions.last()->isChecked();
    const bool isSorted = std::ranges::any_of(_directions, &QAction::isChecked);
    setText(name);
    setIcon(Icons::named(
        isDescending ? QStringLiteral("sortDescending") : QStringLiteral("sortAscending")));
    const QString tip =
        isSorted ? localizedFormat(isDescending ? u"SortedDescending" : u"SortedAscending", {name})
                 : name;
    setToolTip(tip);
    setAccessibleName(tip);
    updateGeometry();
}
