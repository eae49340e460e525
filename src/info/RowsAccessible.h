#pragma once

#include <QAccessibleWidget>

#include <cstddef>
#include <map>

class InfoRowsView;

/// A page of rows for screen readers: a list of them, with the controls behind. Rows are made when
/// they are asked for. Main thread.
class RowsAccessible final : public QAccessibleWidget {
public:
    explicit RowsAccessible(InfoRowsView& view);
    ~RowsAccessible() override;

    /// Makes Qt use this class for pages of rows. Once for the process.
    static void install();
    /// Tell screen readers what has changed; nothing while none is running.
    static void rowsDidChange(InfoRowsView& view);
    static void currentDidChange(InfoRowsView& view);

    [[nodiscard]] int childCount() const override;
    [[nodiscard]] QAccessibleInterface* child(int index) const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface* focusChild() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;

private:
    [[nodiscard]] int rowCount() const;

    InfoRowsView& _view;
    mutable std::map<int, QAccessible::Id> _rows;
};
