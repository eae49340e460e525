#pragma once

#include <QWidget>

class QLabel;

/// A pane that has nothing to list yet: one quiet sentence on the pane's background.
class MessagePane final : public QWidget {
public:
    /// `icon` names a symbol that stands above the sentence; empty for none.
    explicit MessagePane(
        const QString& message, const QString& icon = {}, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateColors();

    const QString _icon;
    QLabel* _picture;
    QLabel* _message;
};
