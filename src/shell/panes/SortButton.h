#pragma once

#include <QList>
#include <QTimer>
#include <QToolButton>

/// Tells by what the photographs are sorted, and in which direction, and changes it with a menu:
/// the entries of the menu bar that do so. Main thread.
class SortButton final : public QToolButton {
    Q_OBJECT

public:
    /// Of `orders` at most one is checked; `directions` are ascending and descending, both disabled
    /// or unchecked where there is no order. All outlive this object.
    SortButton(
        QList<QAction*> orders, const QList<QAction*>& directions, QWidget* parent = nullptr);

    /// With the text, whether it is shown at present or not.
    [[nodiscard]] QSize sizeHint() const override;
    /// The text goes where there is no room for it.
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void popUp();
    void showOrder();

    const QList<QAction*> _orders;
    const QList<QAction*> _directions;
    QMenu* _menu;
    QTimer _show; // once for all entries that change together
};
