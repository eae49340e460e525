#pragma once

#include <QWidget>

/// The rubber band. Lets everything through to what lies below. Main thread.
class PBImageBrowserSelectView final : public QWidget {
    Q_OBJECT

public:
    explicit PBImageBrowserSelectView(QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
};
