#pragma once

#include <QWidget>

class QHBoxLayout;

/// The bar over or under a pane: a small title at the left, room for buttons at the right, and a
/// hair line towards the pane.
class HeaderBar final : public QWidget {
public:
    enum class Line { Below, Above };

    explicit HeaderBar(const QString& title, Line line = Line::Below, QWidget* parent = nullptr);

    /// Shortened where there is no room for it.
    void setTitle(const QString& title);
    /// Adds a widget at the right end; the bar becomes its parent.
    void addWidget(QWidget* widget);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void updateColors();

    const Line _line;
    class Title;
    Title* _title;
    QHBoxLayout* _layout;
};
