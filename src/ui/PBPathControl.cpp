#include "ui/PBPathControl.h"

#include "group/GroupPresets.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/EntryMenu.h"
#include "ui/MenuTracking.h"
#include "ui/PBThemes.h"

#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

// All in points.
constexpr int barHeight = 28;
constexpr double pathHeight = PBPathCell::usualHeight;
constexpr double leftMargin = PBPathCell::leftMargin;
constexpr double pathTop = 3;
constexpr int menuDistance = 6;
constexpr double cornerRadius = 4;
constexpr double hintGap = 4;
constexpr int trailingMargin = 4;
constexpr double largestTrailingPart = 0.4; // of the bar

QFont pathFont(QFont font) {
    font.setPixelSize(12);
    return font;
}

} // namespace

PBPathControl::PBPathControl(QWidget* parent)
    : QWidget(parent), _style(pathFont(font()), false), _pathCell(_style) {
    setFixedHeight(barHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMouseTracking(true);
    // A click leaves the keyboard with the browser.
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(localizedString(u"GroupBy"));
}

void PBPathControl::setGroupTypeArray(PBGroupTypeArray groupTypeArray) {
    platform::assertMainThread();
    if (groupTypeArray == _groupTypeArray) return;
    _groupTypeArray = std::move(groupTypeArray);
    _pathCell.removeAllItem();
    _hotItem.reset();
    if (_groupTypeArray) {
        for (const group::ChainCell& cell : group::cellsOfChain(*_groupTypeArray))
            _pathCell.addItemWithTitle(cell.title, cell.icon, true);
        setAccessibleDescription(group::titleOfChain(*_groupTypeArray));
    }
    _focusItem = 0;
    update();
}

QSize PBPathControl::sizeHint() const {
    return {240, barHeight};
}

void PBPathControl::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeContents();
}

void PBPathControl::setTrailingWidget(QWidget* widget) {
    platform::assertMainThread();
    _trailing = widget;
    widget->setParent(this);
    widget->show();
    placeContents();
}

void PBPathControl::placeContents() {
    int trailingWidth = 0;
    if (_trailing) {
        const QSize usual = _trailing->sizeHint();
        const bool fits = usual.width() <= width() * largestTrailingPart;
        trailingWidth = fits ? usual.width() : _trailing->minimumSizeHint().width();
        const int height = std::min(usual.height(), this->height() - 2);
        _trailing->setGeometry(
            width() - trailingWidth - trailingMargin, (this->height() - height) / 2, trailingWidth,
            height);
        trailingWidth += trailingMargin;
    }
    _pathCell.setSize({width() - leftMargin - trailingWidth, pathHeight});
    update();
}

QRectF PBPathControl::rectOfItem(std::size_t index) const {
    return _pathCell.rectOfItem(index).translated(leftMargin, pathTop);
}

std::optional<std::size_t> PBPathControl::itemAt(const QPointF& point) const {
    return _pathCell.itemAt(point - QPointF(leftMargin, pathTop));
}

QRectF PBPathControl::highlightOfItem(std::size_t index) const {
    const PBPathComponentCell& cell = *_pathCell.pathComponentCells()[index];
    const QRectF rect = rectOfItem(index);
    const double end =
        cell.title().isEmpty() ? rect.right() : cell.calcRectForCellRect(rect).title.right() + 2;
    return {rect.left() - 1, rect.top(), end - rect.left() + 1, rect.height()};
}

void PBPathControl::paintEvent(QPaintEvent*) {
    const PBThemes::Colors& colors = PBThemes::colors();
    QPainter painter(this);
    painter.fillRect(rect(), colors.bar);
    painter.fillRect(QRect(0, height() - 1, width(), 1), colors.separator);
    painter.setRenderHint(QPainter::Antialiasing);
    if (const auto lit = _openItem ? _openItem : _hotItem; lit && *lit < _pathCell.itemCount()) {
        QColor fill = colors.text;
        fill.setAlphaF(_openItem ? 0.14F : 0.08F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(highlightOfItem(*lit), cornerRadius, cornerRadius);
    }
    if (hasFocus() && _focusItem < _pathCell.itemCount()) {
        painter.setPen(QPen(colors.accent, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(
            highlightOfItem(_focusItem).adjusted(0.75, 0.75, -0.75, -0.75), cornerRadius,
            cornerRadius);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    _pathCell.draw(painter, {leftMargin, pathTop});
    if (_groupTypeArray && _groupTypeArray->empty()) {
        // The cell that adds a link, all alone, says too little.
        const double left = rectOfItem(0).right() + hintGap;
        painter.setPen(colors.secondaryText);
        painter.setFont(_style.plain.font());
        _style.plain.drawLeading(
            painter, QRectF(left, pathTop, width() - left, pathHeight),
            localizedString(u"NotGrouped"));
    }
}

QMenu* PBPathControl::menuOfItem(std::size_t index) {
    platform::assertMainThread();
    const PBPathComponentCell& cell = *_pathCell.pathComponentCells()[index];
    auto* menu = new QMenu(localizedString(u"Group"), this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    appendEntries(
        *menu, cell.groupMenuOfView(*_groupTypeArray),
        [this](const PBGroupMenuAction& action) { Q_EMIT groupMenuClicked(action); });
    keepContentsWhileShown(*menu);
    _openItem = index;
    connect(menu, &QMenu::aboutToHide, this, [this] {
        _openItem.reset();
        update();
    });
    return menu;
}

QMenu* PBPathControl::menuForEvent(const QMouseEvent& event) {
    if (!_groupTypeArray || event.button() != Qt::LeftButton) return nullptr;
    const auto index = itemAt(event.position());
    return index ? menuOfItem(*index) : nullptr;
}

void PBPathControl::popUpMenuOfItem(std::size_t index) {
    if (!_groupTypeArray || index >= _pathCell.itemCount()) return;
    popUp(*menuOfItem(index));
}

void PBPathControl::popUp(QMenu& menu) {
    const QRectF rect = rectOfItem(*_openItem);
    menu.popup(mapToGlobal(QPoint(qRound(rect.left()), qRound(rect.bottom()) + menuDistance)));
    update();
}

void PBPathControl::mousePressEvent(QMouseEvent* event) {
    if (!_groupTypeArray) return event->ignore();
    if (QMenu* menu = menuForEvent(*event)) popUp(*menu);
}

void PBPathControl::setHotItem(std::optional<std::size_t> index) {
    if (index == _hotItem) return;
    _hotItem = index;
    update();
}

void PBPathControl::mouseMoveEvent(QMouseEvent* event) {
    setHotItem(itemAt(event->position()));
}

void PBPathControl::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    setHotItem(std::nullopt);
}

void PBPathControl::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason) _focusItem = 0;
}

void PBPathControl::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left:
        if (_focusItem > 0) --_focusItem;
        break;
    case Qt::Key_Right:
        if (_focusItem + 1 < _pathCell.itemCount()) ++_focusItem;
        break;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        return popUpMenuOfItem(_focusItem);
    default:
        return QWidget::keyPressEvent(event);
    }
    update();
}

void PBPathControl::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) _style.setFont(pathFont(font()));
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) update();
}

QString PBPathControl::toolTipOfItem(std::size_t index) const {
    const QString& title = _pathCell.pathComponentCells()[index]->title();
    return title.isEmpty() ? localizedString(u"AddGroupTip")
                           : localizedFormat(u"ChangeGroupTip", {title});
}

bool PBPathControl::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) placeContents();
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const auto index = itemAt(help->pos());
    QToolTip::showText(help->globalPos(), index ? toolTipOfItem(*index) : QString(), this);
    return true;
}
