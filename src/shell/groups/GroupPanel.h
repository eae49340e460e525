#pragma once

#include "group/GroupTreeViews.h"
#include "shell/groups/GroupTreeModel.h"
#include "shell/groups/PBGroupOutlineView.h"

#include <QObject>

#include <functional>

/// The group panel: shows the live tree as an outline, keeps which rows the user opened and closed,
/// and moves the browser to the group that the user selects. Main thread.
class GroupPanel final : public QObject, private group::GroupOutline {
    Q_OBJECT

public:
    /// The data source outlives this object. `scrollToLeaf` shows the leaf with this data in the
    /// browser.
    GroupPanel(
        PBGroupTreeDataSource& dataSource, group::TagLookup tagWithTagId,
        std::function<void(const PBGroupItemData& leaf)> scrollToLeaf);
    ~GroupPanel() override;

    /// Whoever gives it a place becomes its owner.
    [[nodiscard]] PBGroupOutlineView* view() const { return _view; }

    /// Another scan begins: back to the top, without rows.
    void clear();

private:
    [[nodiscard]] std::optional<PBOutlineViewScrollCapture> captureOutlineViewScroll() override;
    void scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) override;
    [[nodiscard]] std::shared_ptr<PBGroupItemData> selectedItem() const override;
    void reloadData() override;
    void expandItem(const std::shared_ptr<PBGroupItemData>& item) override;
    void selectItem(const std::shared_ptr<PBGroupItemData>& item) override;

    void doOutlineViewSelectionChanged();
    void noteCollapsed(const QModelIndex& index, PBGroupItemData::Collapsed collapsed);
    /// The top of a row from that of the first one.
    [[nodiscard]] int topOfRow(const QModelIndex& index) const;

    PBGroupTreeDataSource& _dataSource;
    const std::function<void(const PBGroupItemData& leaf)> _scrollToLeaf;
    PBGroupOutlineView* _view; // owned by the widget that it was given a place in
    GroupTreeModel* _model;    // a child of the view
    /// Rows are opened by the program, not by the user.
    bool _isExpanding = false;
};
