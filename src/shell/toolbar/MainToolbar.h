#pragma once

#include "shell/menus/MenuCommand.h"
#include "ui/SearchField.h"
#include "ui/ToolbarButton.h"

#include <QAction>
#include <QToolBar>

#include <functional>
#include <vector>

class QLabel;
class QMenu;

/// The bar of commands at the top of the window: what is in it and how it looks. Main thread.
class MainToolbar final : public QToolBar {
    Q_OBJECT

public:
    /// A control with a caption below it, shown or not.
    struct Item {
        QString identifier;
        QWidget* view = nullptr; ///< without the caption
    };

    /// Which of its two sets of items is shown.
    enum class Content { Browser, LargeView };

    explicit MainToolbar(QWidget* parent);

    [[nodiscard]] Content content() const { return _content; }
    void setContent(Content content);
    /// An item of the large view and the command that it gives.
    struct ImageItem {
        MenuCommand command;
        QAction* action;
    };
    [[nodiscard]] const std::vector<ImageItem>& imageViewToolbarItems() const {
        return _imageViewToolbarItems;
    }

    [[nodiscard]] QAction* backAction() const { return _back; }
    [[nodiscard]] QAction* forwardAction() const { return _forward; }
    /// Not in the bar itself; the sidebar and the menus have it.
    [[nodiscard]] QAction* addFolderAction() const { return _addFolder; }
    [[nodiscard]] QAction* filterFlagAction() const { return _filterFlag; }
    [[nodiscard]] QAction* filterStarAction() const { return _filterStar; }
    [[nodiscard]] QAction* flagAction() const { return _flag; }
    [[nodiscard]] QAction* ratingAction() const { return _rating; }
    [[nodiscard]] QAction* rotateLeftAction() const { return _rotateLeft; }
    [[nodiscard]] QAction* rotateRightAction() const { return _rotateRight; }
    [[nodiscard]] QAction* shareAction() const { return _share; }
    /// The buttons that share, of both sets of items.
    [[nodiscard]] const std::vector<QWidget*>& shareButtons() const { return _shareButtons; }
    [[nodiscard]] QAction* deleteAction() const { return _delete; }
    [[nodiscard]] SearchField& searchField() const { return *_search; }
    /// The group button has `popUp` open the menu below it; it is off before that.
    void setGroupMenu(QMenu& menu, const std::function<void(const QWidget& button)>& popUp);
    /// What the button of the stars opens.
    void setRatingMenu(QMenu& menu);

    /// The items from left to right, as they are at the start.
    [[nodiscard]] const std::vector<Item>& mainToolbarItems() const { return _items; }
    /// nullptr for an unknown identifier.
    [[nodiscard]] QWidget* itemView(QStringView identifier) const;

    /// Has what follows the first item begin where the sidebar ends, as far as there is room.
    void alignWithSidebar(int sidebarWidth);

    /// Whether captions are shown below the controls.
    [[nodiscard]] bool hasCaptions() const { return _hasCaptions; }
    void setCaptions(bool shown);

Q_SIGNALS:
    /// The user chose so in the bar's own menu.
    void captionsChosen(bool shown);

protected:
    void paintEvent(QPaintEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    [[nodiscard]] QAction*
    makeAction(const QString& icon, QStringView text, const QKeySequence& shortcut = {});
    /// With the symbol and the keys that the menus have for the command.
    [[nodiscard]] QAction* makeAction(MenuCommand command, QStringView text);
    void addItem(const QString& identifier, QWidget* view, QStringView caption);
    void connectMenu(
        QAction& action, ToolbarButton& button, QMenu& menu,
        const std::function<void(const QWidget& button)>& popUp);
    void addSpace(QWidget* space, const QString& identifier);
    void addImageItems();
    /// A row of items that fills the bar.
    [[nodiscard]] static QWidget* makeRow();
    void updateColors();

    QAction* _back;
    QAction* _forward;
    QAction* _addFolder;
    QAction* _filterFlag;
    QAction* _filterStar;
    QAction* _group;
    ToolbarButton* _groupButton;
    QAction* _flag;
    QAction* _rating;
    ToolbarButton* _ratingButton;
    ToolbarButton* _imageRatingButton = nullptr;
    QAction* _rotateLeft;
    QAction* _rotateRight;
    std::vector<QWidget*> _shareButtons;
    QAction* _share;
    QAction* _delete;
    QWidget* _row;       // fills the bar
    QWidget* _imageRow;  // the same in the large view
    QWidget* _filledRow; // where items are added
    QAction* _rowAction = nullptr;
    QAction* _imageRowAction = nullptr;
    Content _content = Content::Browser;
    std::vector<ImageItem> _imageViewToolbarItems;
    SearchField* _search;
    QWidget* _autoSpace;
    std::vector<Item> _items;
    std::vector<QLabel*> _captions;
    bool _hasCaptions = false;
};
