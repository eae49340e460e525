#pragma once

#include "viewer/controller/ImageViewPanes.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QSlider;
class QToolButton;

/// The bar below the large view: which photograph is shown, how large it is, buttons that show and
/// hide the panes. Main thread.
class ImageStatusBarView final : public QWidget {
    Q_OBJECT

public:
    /// The panes outlive this widget.
    explicit ImageStatusBarView(ImageViewPanes& panes, QWidget* parent = nullptr);

    void setInfo(const QString& text);
    /// A sentence in the place of the photograph's name; goes after some seconds, or with the next
    /// photograph.
    void tell(const QString& sentence);
    /// 0 to 100 with the flat middle of actual size, and the label's percentage; without a signal.
    /// The slider is off where there is nothing to zoom.
    void setZoom(double slider, int percent, bool isEnabled);

Q_SIGNALS:
    /// The user moved the slider there.
    void zoomSlide(double slider);
    void paneToggled(ImageViewPanes::Pane pane);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QToolButton* makePaneButton(ImageViewPanes::Pane pane);
    void updateStatusBarBtn();
    /// Empty ends them.
    void showNews(const QString& sentence);
    void elideInfo();

    ImageViewPanes& _panes;
    QToolButton* _showHidePhotoBinBtn;
    QToolButton* _showHideInfoBtn;
    QLabel* _infoLabel;
    QSlider* _zoomSlider;
    QLabel* _zoomLabel;
    QString _info;
    QString _news;
    QTimer _newsTimer{this};
};
