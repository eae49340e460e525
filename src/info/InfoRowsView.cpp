#include "info/InfoRowsView.h"

#include "info/RowsAccessible.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// A tooltip is no page.
constexpr qsizetype mostInToolTip = 1500;

} // namespace

InfoRowsView::InfoRowsView(QWidget* parent) : QWidget(parent), _painter(font()) {
    RowsAccessible::install<RowsAccessible, InfoRowsView>();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
}

void InfoRowsView::setRows(InfoRows rows, int heightInRows, int furtherHeight) {
    platform::assertMainThread();
    const bool isOtherList = rows.size() != _rows.size() ||
                             !std::ranges::equal(rows, _rows, {}, &InfoRow::key, &InfoRow::key);
    if (isOtherList) {
        _selected.clear();
        _current = -1;
        _anchor = -1;
        ++_listGeneration;
    }
    const bool hasChanged = isOtherList || rows != _rows;
    _rows = std::move(rows);
    _heightInRows = heightInRows;
    _furtherHeight = furtherHeight;
    updateHeight();
    update();
    if (hasChanged) RowsAccessible::itemsDidChange(*this);
}

void InfoRowsView::setFurtherHeight(int points) {
    _furtherHeight = points;
    updateHeight();
}

void InfoRowsView::setEmptyText(const QString& text) {
    if (_emptyText == text) return;
    _emptyText = text;
    setAccessibleDescription(text);
    update();
}

int InfoRowsView::contentHeight() const {
    return _rows.empty() ? 0 : _heightInRows * _painter.metrics().rowHeight + _furtherHeight;
}

void InfoRowsView::updateHeight() {
    setMinimumHeight(contentHeight());
}

QRect InfoRowsView::rowRect(int row) const {
    return _painter.metrics().rowRect(row, width());
}

int InfoRowsView::rowAt(int y) const {
    const int row = y < 0 ? -1 : _painter.metrics().rowAt(y);
    return row < rowCount() ? row : -1;
}

QString InfoRowsView::rowText(int row) const {
    const InfoRow& shown = _rows[static_cast<std::size_t>(row)];
    return localizedFormat(u"LabelAndValue", {shown.label, shown.shownValue()});
}

QString InfoRowsView::textOfSelection(bool withLabels) const {
    if (_selected.size() == 1 && !withLabels)
        return _rows[static_cast<std::size_t>(*_selected.begin())].shownValue();
    QStringList lines;
    for (const int row : _selected)
        lines.append(rowText(row));
    return lines.join(u'\n');
}

void InfoRowsView::selectRow(int row) {
    _selected.clear();
    if (row >= 0 && row < rowCount()) _selected.insert(row);
    _current = _selected.empty() ? -1 : row;
    _anchor = _current;
    selectionDidChange();
}

void InfoRowsView::moveTo(int row, Qt::KeyboardModifiers modifiers) {
    if (row < 0) return selectRow(-1);
    if (!modifiers.testFlag(Qt::ShiftModifier) || _anchor < 0) {
        selectRow(row);
    } else {
        _selected.clear();
        for (int each = std::min(row, _anchor); each <= std::max(row, _anchor); ++each)
            _selected.insert(each);
        _current = row;
        selectionDidChange();
    }
    Q_EMIT visibilityWanted(rowRect(row));
}

void InfoRowsView::selectAll() {
    for (int row = 0; row < rowCount(); ++row)
        _selected.insert(row);
    selectionDidChange();
}

void InfoRowsView::selectionDidChange() {
    update();
    RowsAccessible::selectionDidChange(*this);
    RowsAccessible::currentDidChange(*this);
}

void InfoRowsView::copy(bool withLabels) const {
    if (!_selected.empty()) QGuiApplication::clipboard()->setText(textOfSelection(withLabels));
}

void InfoRowsView::activateRow(int) {}

void InfoRowsView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), PBThemes::colors().sidebar);
    if (_rows.empty()) return _painter.drawEmptyText(painter, size(), _emptyText);
    using Highlight = RowPainter::Highlight;
    const Highlight selected = hasFocus() ? Highlight::Full : Highlight::Dim;
    const RowMetrics& metrics = _painter.metrics();
    const int first = std::max(0, metrics.rowAt(event->rect().top()));
    const int last = std::min(rowCount() - 1, metrics.rowAt(event->rect().bottom() + 1));
    for (int row = first; row <= last; ++row) {
        if (row > 0) _painter.drawLine(painter, row, width());
        _painter.drawRow(
            painter, row, width(), _rows[static_cast<std::size_t>(row)],
            isSelected(row) ? selected : Highlight::None);
    }
    paintControls(painter);
}

void InfoRowsView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) update();
    if (event->type() != QEvent::FontChange) return;
    _painter.setFont(font());
    updateHeight();
    metricsDidChange();
    update();
}

void InfoRowsView::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const int row = rowAt(point.y());
    if (event->button() == Qt::RightButton) {
        if (row < 0 || !isSelected(row)) selectRow(row);
        return;
    }
    if (event->button() != Qt::LeftButton) return event->ignore();
    if (event->modifiers().testFlag(Qt::ControlModifier) && row >= 0) {
        if (_selected.erase(row) == 0) _selected.insert(row);
        _current = row;
        _anchor = row;
        return selectionDidChange();
    }
    moveTo(row, event->modifiers());
    if (event->modifiers() == Qt::NoModifier && takesPress(point)) event->accept();
}

void InfoRowsView::mouseMoveEvent(QMouseEvent* event) {
    if (!event->buttons().testFlag(Qt::LeftButton) || rowCount() == 0 || _anchor < 0) return;
    const int row = rowAt(
        std::clamp(static_cast<int>(event->position().y()), 0, rowRect(rowCount() - 1).bottom()));
    if (row != _current) moveTo(row, Qt::ShiftModifier);
}

int InfoRowsView::rowOfKey(int key) const {
    const int last = rowCount() - 1;
    const int page =
        std::max(1, visibleRegion().boundingRect().height() / _painter.metrics().rowHeight - 1);
    switch (key) {
    case Qt::Key_Up:
        return std::max(0, _current < 0 ? last : _current - 1);
    case Qt::Key_Down:
        return std::min(last, _current + 1);
    case Qt::Key_PageUp:
        return std::max(0, _current - page);
    case Qt::Key_PageDown:
        return std::min(last, std::max(0, _current) + page);
    case Qt::Key_Home:
        return std::min(0, last);
    case Qt::Key_End:
        return last;
    default:
        return -1;
    }
}

bool InfoRowsView::isOwnKey(const QKeyEvent& event) const {
    if (_rows.empty()) return false;
    if (event.matches(QKeySequence::Copy)) return !_selected.empty();
    if (event.matches(QKeySequence::SelectAll)) return true;
    if ((event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != 0) return false;
    const bool isActivation =
        event.key() == Qt::Key_F2 || event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    return rowOfKey(event.key()) >= 0 || (isActivation && _current >= 0);
}

void InfoRowsView::keyPressEvent(QKeyEvent* event) {
    if (!isOwnKey(*event)) return QWidget::keyPressEvent(event);
    if (event->matches(QKeySequence::Copy)) return copy(false);
    if (event->matches(QKeySequence::SelectAll)) return selectAll();
    const int row = rowOfKey(event->key());
    if (row >= 0) return moveTo(row, event->modifiers());
    activateRow(_current);
}

bool InfoRowsView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        if (isOwnKey(*static_cast<QKeyEvent*>(event))) event->accept();
    }
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        return showToolTip(help->pos(), help->globalPos());
    }
    return QWidget::event(event);
}

bool InfoRowsView::showToolTip(const QPoint& point, const QPoint& globalPoint) {
    const int row = rowAt(point.y());
    const InfoRow* shown = row < 0 ? nullptr : &_rows[static_cast<std::size_t>(row)];
    if (!shown || shown->control != InfoRow::Control::None || _painter.fits(*shown, width())) {
        QToolTip::hideText();
        return true;
    }
    QString value = shown->shownValue();
    if (value.size() > mostInToolTip) value = value.left(mostInToolTip) + QChar(0x2026);
    QToolTip::showText(
        globalPoint,
        QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
            .arg(platform::harmlessText(value).toHtmlEscaped()),
        this, rowRect(row));
    return true;
}

void InfoRowsView::contextMenuEvent(QContextMenuEvent* event) {
    if (_rows.empty()) return event->ignore();
    QMenu menu(this);
    const auto add = [&](QStringView key, const QKeySequence& keys, auto perform) {
        QAction* action = menu.addAction(localizedString(key), this, perform);
        action->setShortcut(keys);
        action->setEnabled(!_selected.empty());
        return action;
    };
    add(u"CopyValue", QKeySequence::Copy, [this] { copy(false); });
    add(u"CopyWithLabel", {}, [this] { copy(true); });
    add(u"SelectAllRows", QKeySequence::SelectAll, [this] { selectAll(); })->setEnabled(true);
    menu.setToolTipsVisible(true);
    addActions(menu, _current);
    const bool isByKeys = event->reason() == QContextMenuEvent::Keyboard && _current >= 0;
    menu.exec(isByKeys ? mapToGlobal(rowRect(_current).center()) : event->globalPos());
}

void InfoRowsView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason && _current < 0 && !_rows.empty()) selectRow(0);
    RowsAccessible::currentDidChange(*this);
    update();
}

void InfoRowsView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}
