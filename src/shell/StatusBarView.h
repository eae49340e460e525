#pragma once

#include "shell/PaneLayout.h"

#include <QWidget>

class QLabel;
class QToolButton;

/// The bar below the panes: how many photographs are shown, and buttons that show and hide panes.
class StatusBarView final : public QWidget {
    Q_OBJECT

public:
    /// The layout outlives this widget.
    explicit StatusBarView(PaneLayout& panes, QWidget* parent = nullptr);

    /// `shown` is the number of photographs on display.
    void setItemCount(qint64 shown);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateStatusBarBtn();

    PaneLayout& _panes;
    QLabel* _itemCountLabel;
    std::vector<std::pair<QToolButton*, PaneLayout::Pane>> _buttons;
};
