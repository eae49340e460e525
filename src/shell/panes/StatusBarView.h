#pragma once

#include "shell/panes/PaneLayout.h"

#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

#include <vector>

class QHBoxLayout;
class QLabel;
class QToolButton;
class ThumbnailSizeSlider;
class WorkProgress;
class WorkProgressView;

/// The bar below the panes: how many photographs are shown and selected, buttons that show and hide
/// panes, the size of the thumbnails. Main thread.
class StatusBarView final : public QWidget {
    Q_OBJECT

public:
    /// The layout outlives this widget.
    explicit StatusBarView(PaneLayout& panes, QWidget* parent = nullptr);

    /// The number of photographs on display.
    void setItemCount(qint64 shown);
    /// How many of them are selected.
    void setSelectCount(qint64 selected);
    /// What is going on in the background; outlives this widget.
    void setProgress(WorkProgress& progress);
    /// A sentence about what was just done; goes after some seconds.
    void tell(const QString& sentence);
    [[nodiscard]] ThumbnailSizeSlider& thumbnailSizeSlider() { return *_thumbnailSizeSlider; }

    /// Slides in or out, or at once. A later call takes over from where an earlier one has got to.
    void setShown(bool shown, bool animated);

Q_SIGNALS:
    /// The button of the pane was pressed.
    void paneToggled(PaneLayout::Pane pane);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void addPaneButton(QHBoxLayout& layout, std::size_t row);
    void updateStatusBarBtn();
    void updateCounts();
    void showNews(const QString& sentence);
    void elideNews();
    void finishAnimation();

    PaneLayout& _panes;
    QLabel* _itemCountLabel;
    WorkProgressView* _progressView;
    ThumbnailSizeSlider* _thumbnailSizeSlider;
    std::vector<std::pair<QToolButton*, PaneLayout::Pane>> _buttons;
    QVariantAnimation _animation;
    QLabel* _newsLabel;
    QString _news; ///< what is told at present
    QTimer _newsTimer{this};
    bool _isShown = true;
    qint64 _itemCount = 0;
    qint64 _selectCount = 0;
};
