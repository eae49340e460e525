#include "shell/panes/PaneFocus.h"

#include "platform/tasks/MainThread.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace {

bool takesKeys(const QWidget& widget) {
    return widget.isVisible() && widget.isEnabled() && !widget.size().isEmpty() &&
           (widget.focusPolicy() & Qt::TabFocus) != 0;
}

/// Of the pane itself or the first in it; nullptr where there is none.
QWidget* keyWidget(QWidget& pane) {
    if (!pane.isVisible() || !pane.isEnabled() || pane.size().isEmpty()) return nullptr;
    QWidget* each = &pane;
    do {
        const bool isInside = each == &pane || pane.isAncestorOf(each);
        if (isInside && takesKeys(*each)) return each;
        each = each->nextInFocusChain();
    } while (each != &pane);
    return nullptr;
}

} // namespace

void PaneFocus::moveTo(const std::vector<QWidget*>& panes, bool backwards) {
    platform::assertMainThread();
    std::vector<QWidget*> reachable;
    for (QWidget* pane : panes)
        if (keyWidget(*pane)) reachable.push_back(pane);
    if (reachable.empty()) return;
    if (backwards) std::ranges::reverse(reachable);
    const QWidget* focus = QApplication::focusWidget();
    const auto here = std::ranges::find_if(reachable, [focus](const QWidget* pane) {
        return focus && (pane == focus || pane->isAncestorOf(focus));
    });
    const bool isLast = here == reachable.end() || here + 1 == reachable.end();
    keyWidget(isLast ? *reachable.front() : **(here + 1))->setFocus(Qt::TabFocusReason);
}

void PaneFocus::setTabOrder(const std::vector<QWidget*>& widgets) {
    for (std::size_t i = 1; i < widgets.size(); ++i)
        QWidget::setTabOrder(widgets[i - 1], widgets[i]);
}
