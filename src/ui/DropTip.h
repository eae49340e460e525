#pragma once

#include <QString>
#include <QWidget>

/// Covers a view while files are dragged over it, and says what a drop will do. Hidden at first.
class DropTip : public QWidget {
    Q_OBJECT

public:
    /// The names of the symbol and of the text.
    DropTip(const QString& icon, const QString& textKey, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QString _icon;
    const QString _textKey;
};
