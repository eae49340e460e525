#pragma once

#include <QWidget>

class QLabel;

/// A pane that has nothing to list yet: one quiet sentence on the pane's background.
class MessagePane final : public QWidget {
public:
    explicit MessagePane(const QString& message, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateColors();

    QLabel* _message;
};
