#pragma once

#include "shell/PaneLayout.h"

#include <QWidget>

class QLabel;
class QToolButton;
class WorkProgress;
class WorkProgressView;

/// The bar below the panes: how many photographs are shown, and buttons that show and hide panes.
class StatusBarView final : public QWidget {
    Q_OBJECT

public:
    /// The layout outlives this widget.
    explicit StatusBarView(PaneLayout& panes, QWidget* parent = nullptr);

    /// `shown` is the number of photographs on display.
    void setItemCount(qint64 shown);
    void setSelectCount(qint64 selected);
    /// What is going on in the background; outlives this widget.
    void setProgress(WorkProgress& progress);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateStatusBarBtn();
    void updateItemCount();

    PaneLayout& _panes;
    QLabel* _itemCountLabel;
    WorkProgressView* _progressView;
    qint64 _itemCount = 0;
    qint64 _selectCount = 0;
    std::vector<std::pair<QToolButton*, PaneLayout::Pane>> _buttons;
};
