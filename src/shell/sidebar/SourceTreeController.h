#pragma once

#include "library/PBFolderItem.h"
#include "shell/sidebar/PBSourceOutlineView.h"
#include "shell/sidebar/SourceTreeModel.h"

#include <QObject>
#include <QSet>

#include <memory>

class PBAliasManager;
class PBSourceTreeDataSource;

namespace platform {
class UserDefaults;
}

/// The rows of the sidebar: which are there, selected, expanded and marked. Main thread.
class SourceTreeController final : public QObject {
    Q_OBJECT

public:
    /// All of them outlive this object. Which rows are open is kept in the settings.
    SourceTreeController(
        PBSourceTreeDataSource& dataSource, PBSourceOutlineView& view,
        platform::UserDefaults& userDefaults, QObject* parent);
    ~SourceTreeController() override;

    [[nodiscard]] PBSourceTreeDataSource& dataSource() const { return _dataSource; }

    /// nullptr with no selection.
    [[nodiscard]] std::shared_ptr<PBOutlineItem> selectedItem() const;
    /// The selected folder, if it is one.
    [[nodiscard]] std::shared_ptr<PBFolderItem> selectedFolder() const;
    [[nodiscard]] bool hasFolderAliasItem() const;

    /// Those that the user has not closed.
    void expandCategoryItem();
    /// Expands what is above the item, selects it alone and scrolls to it.
    void select(const PBFolderItem& item);
    void clearSelection();
    [[nodiscard]] bool hasFocus() const { return _view.hasFocus(); }
    /// The window that the sidebar is in.
    [[nodiscard]] QWidget& window() const { return *_view.window(); }
    [[nodiscard]] bool isExpanded(const PBFolderItem& item) const;

    /// The item becomes a row, and is selected.
    void insertFolderAlias(const std::shared_ptr<PBFolderAliasItem>& item);
    void removeFolderAlias(const PBFolderAliasItem& item);

    /// The folder whose row is at this place of the viewport; nullptr for none.
    [[nodiscard]] std::shared_ptr<PBFolderItem> folderAt(const QPoint& position) const;
    /// Draws a ring around the row; nullptr takes it away.
    void markDropTarget(const std::shared_ptr<PBFolderItem>& item);

Q_SIGNALS:
    /// Another item is selected than before, or none; never while rows come and go.
    void selectionDidChange();
    /// The selected row was clicked again although its root can't be reached.
    void unmountedRootClicked();
    void revealRequested(const std::shared_ptr<PBFolderItem>& item);
    void locateRequested(const std::shared_ptr<PBFolderAliasItem>& item);
    void removeRequested(const std::shared_ptr<PBFolderAliasItem>& item);
    void keepRequested(const std::shared_ptr<PBFolderAliasItem>& item);

private:
    void showMenu(const QModelIndex& index, const QPoint& position);
    [[nodiscard]] static QString expansionKey(const PBOutlineItem& item);
    void noteSelection();
    void rowsDidChange();
    void scrollTo(const QModelIndex& index);
    void loadExpansion();
    void noteExpansion(const QModelIndex& index, bool isExpanded);
    [[nodiscard]] bool isKeptOpen(const PBOutlineItem& item) const;
    void restoreExpansion(const QModelIndex& parent, int first, int last);

    PBSourceTreeDataSource& _dataSource;
    PBSourceOutlineView& _view;
    SourceTreeModel _model;
    platform::UserDefaults& _userDefaults;
    /// Folders that the user opened, also those whose rows are gone for now with their volume, and
    /// categories that he closed.
    QSet<QString> _expanded;
    /// That was told of last.
    std::shared_ptr<PBOutlineItem> _toldItem;
};
