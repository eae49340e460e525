#pragma once

#include <QWidget>

/// Covers the browser while folders are dragged over it, and says what a drop will do.
class PBImageBrowserDragTipView final : public QWidget {
    Q_OBJECT

public:
    explicit PBImageBrowserDragTipView(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};
