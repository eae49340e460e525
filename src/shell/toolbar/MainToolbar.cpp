#include "shell/toolbar/MainToolbar.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/menus/MenuEntries.h"
#include "ui/Icons.h"
#include "ui/MenuTracking.h"
#include "ui/PBThemes.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

using platform::localizedString;
using Command = MenuCommand;

namespace {

constexpr int itemSpacing = 7;
constexpr QMargins barMargins(14, 5, 14, 6);
constexpr int smallestAutoSpace = 16;
constexpr int smallestSidebar = 200;
/// What stands left of the space and right of it, besides the first item.
constexpr int aroundAutoSpace = 29;

QString withShortcut(const QString& text, const QKeySequence& shortcut) {
    return shortcut.isEmpty()
               ? text
               : QStringLiteral("%1 (%2)").arg(text, shortcut.toString(QKeySequence::NativeText));
}

/// Those that the menus show with the command.
QKeySequence keysOf(Command command) {
    return QKeySequence::listFromString(menuEntry(command).shortcuts.toString()).value(0);
}

/// A space of the width that it is given.
class Space final : public QWidget {
public:
    explicit Space(QSizePolicy::Policy policy) { setSizePolicy(policy, QSizePolicy::Fixed); }
    [[nodiscard]] QSize sizeHint() const override {
        const bool isBounded = maximumWidth() < QWIDGETSIZE_MAX;
        return {isBounded ? maximumWidth() : minimumWidth(), 1};
    }
};

} // namespace

MainToolbar::MainToolbar(QWidget* parent)
    : QToolBar(localizedString(u"Toolbar"), parent), _back(makeAction(Command::back, u"Back")),
      _forward(makeAction(Command::forward, u"Forward")),
      _addFolder(makeAction(Command::addFolderAlias, u"AddFolder")),
      _filterFlag(makeAction(QStringLiteral("flag_16_n"), u"FilterFlagged")),
      _filterStar(makeAction(QStringLiteral("star_16_n"), u"FilterStarred")),
      _group(makeAction(QStringLiteral("group"), u"ToolbarGroup")),
      _groupButton(new ToolbarButton(_group)),
      _flag(makeAction(QStringLiteral("flag_16_n"), u"ToolbarFlag", keysOf(Command::flagClicked))),
      _rating(makeAction(QStringLiteral("star_16_n"), u"ToolbarRating")),
      _ratingButton(new ToolbarButton(_rating)),
      _rotateLeft(makeAction(Command::rotateLeft, u"RotateLeft")),
      _rotateRight(makeAction(Command::rotateRight, u"RotateRight")),
      _share(makeAction(Command::shareClicked, u"Share")),
      _delete(makeAction(Command::deleteClicked, u"Delete")), _row(makeRow()), _imageRow(makeRow()),
      _filledRow(_row), _search(new SearchField(localizedString(u"Search"))),
      _autoSpace(new Space(QSizePolicy::Preferred)) {
    setObjectName(QStringLiteral("mainToolbar"));
    setMovable(false);
    setFloatable(false);
    _filterFlag->setCheckable(true);
    _filterStar->setCheckable(true);
    _group->setEnabled(false);
    _autoSpace->setMinimumWidth(smallestAutoSpace);

    addItem(QStringLiteral("back"), new SegmentedControl({_back, _forward}), u"BackForward");
    addSpace(_autoSpace, QStringLiteral("PBAutoSpaceItem"));
    _groupButton->setHasArrow();
    addItem(QStringLiteral("group"), _groupButton, u"ToolbarGroup");
    addItem(QStringLiteral("filter"), new SegmentedControl({_filterFlag, _filterStar}), u"Filter");
    addSpace(new Space(QSizePolicy::Expanding), QStringLiteral("space"));
    addItem(QStringLiteral("flag"), new ToolbarButton(_flag), u"ToolbarFlag");
    _ratingButton->setHasArrow();
    addItem(QStringLiteral("rating"), _ratingButton, u"ToolbarRating");
    addItem(QStringLiteral("rotate"), new SegmentedControl({_rotateLeft, _rotateRight}), u"Rotate");
    _shareButtons.push_back(new ToolbarButton(_share));
    addItem(QStringLiteral("share"), _shareButtons.back(), u"Share");
    addItem(QStringLiteral("delete"), new ToolbarButton(_delete), u"Delete");
    _search->setToolTip(withShortcut(localizedString(u"SearchTip"), QKeySequence::Find));
    addItem(QStringLiteral("search"), _search, u"Search");
    addImageItems();
    _rowAction = addWidget(_row);
    _imageRowAction = addWidget(_imageRow);
    setContent(Content::Browser);
    alignWithSidebar(0);
    updateColors();
}

QAction*
MainToolbar::makeAction(const QString& icon, QStringView text, const QKeySequence& shortcut) {
    auto* action = new QAction(Icons::named(icon), localizedString(text), this);
    // The keys belong to the entry of the menu; here they are only told.
    action->setData(shortcut);
    action->setToolTip(withShortcut(localizedString(text), shortcut));
    return action;
}

QAction* MainToolbar::makeAction(MenuCommand command, QStringView text) {
    return makeAction(menuEntry(command).icon.toString(), text, keysOf(command));
}

void MainToolbar::addItem(const QString& identifier, QWidget* view, QStringView caption) {
    view->setObjectName(identifier);
    const bool isFixed = view->sizePolicy().horizontalPolicy() == QSizePolicy::Fixed;
    auto* item = new QWidget;
    auto* layout = new QVBoxLayout(item);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(view, 0, isFixed ? Qt::AlignHCenter : Qt::Alignment());
    auto* label = new QLabel(localizedString(caption));
    label->setAlignment(Qt::AlignHCenter);
    QFont small = label->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    label->setFont(small);
    label->hide();
    layout->addWidget(label);
    item->setSizePolicy(view->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
    if (!isFixed) item->setMaximumWidth(view->maximumWidth());
    _captions.push_back(label);
    _filledRow->layout()->addWidget(item);
    if (_filledRow == _row) _items.push_back({identifier, view});
}

void MainToolbar::addSpace(QWidget* space, const QString& identifier) {
    _filledRow->layout()->addWidget(space);
    if (_filledRow == _row) _items.push_back({identifier, space});
}

QWidget* MainToolbar::makeRow() {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(barMargins);
    layout->setSpacing(itemSpacing);
    row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return row;
}

void MainToolbar::addImageItems() {
    _filledRow = _imageRow;
    const auto add = [this](Command command, QAction* action) {
        _imageViewToolbarItems.push_back({command, action});
        return action;
    };
    const auto action = [&](Command command, QStringView text) {
        return add(command, makeAction(command, text));
    };
    const QString thumbnails = menuEntry(Command::view_ThumbnailView).icon.toString();
    addItem(
        QStringLiteral("thumbnails"),
        new ToolbarButton(
            add(Command::view_ThumbnailView,
                makeAction(thumbnails, u"BackToThumbnails", Qt::Key_Escape))),
        u"Thumbnails");
    addItem(
        QStringLiteral("imageZoom"),
        new SegmentedControl(
            {action(Command::view_zoomOut, u"ZoomOut"), action(Command::view_zoomIn, u"ZoomIn"),
             action(Command::view_fitIn, u"ZoomToFit"),
             action(Command::view_ActualSize, u"ActualSize")}),
        u"Zoom");
    addSpace(new Space(QSizePolicy::Expanding), QStringLiteral("imageSpace"));
    addItem(
        QStringLiteral("imageSlideshow"),
        new ToolbarButton(action(Command::view_SlideshowView, u"Slideshow")), u"Slideshow");
    // The same for both views.
    addItem(QStringLiteral("imageFlag"), new ToolbarButton(_flag), u"ToolbarFlag");
    _imageRatingButton = new ToolbarButton(_rating);
    _imageRatingButton->setHasArrow();
    addItem(QStringLiteral("imageRating"), _imageRatingButton, u"ToolbarRating");
    addItem(
        QStringLiteral("imageRotate"), new SegmentedControl({_rotateLeft, _rotateRight}),
        u"Rotate");
    _shareButtons.push_back(new ToolbarButton(action(Command::shareClicked, u"Share")));
    addItem(QStringLiteral("imageShare"), _shareButtons.back(), u"Share");
    addItem(
        QStringLiteral("imageDelete"), new ToolbarButton(action(Command::deleteClicked, u"Delete")),
        u"Delete");
    _filledRow = _row;
}

void MainToolbar::setContent(Content content) {
    _content = content;
    _rowAction->setVisible(content == Content::Browser);
    _imageRowAction->setVisible(content == Content::LargeView);
}

QWidget* MainToolbar::itemView(QStringView identifier) const {
    const auto item = std::ranges::find(_items, identifier, &Item::identifier);
    return item == _items.end() ? nullptr : item->view;
}

void MainToolbar::setGroupMenu(
    QMenu& menu, const std::function<void(const QWidget& button)>& popUp) {
    connectMenu(*_group, *_groupButton, menu, popUp);
    _group->setEnabled(true);
}

void MainToolbar::setRatingMenu(QMenu& menu) {
    for (ToolbarButton* each : {_ratingButton, _imageRatingButton}) {
        connectMenu(*_rating, *each, menu, [&menu](const QWidget& button) {
            menu.popup(button.mapToGlobal(QPoint(0, button.height())));
        });
    }
}

void MainToolbar::connectMenu(
    QAction& action, ToolbarButton& button, QMenu& menu,
    const std::function<void(const QWidget& button)>& popUp) {
    connect(&action, &QAction::triggered, &menu, [&button, popUp] {
        if (!button.isVisible()) return;
        popUp(button);
        button.setDown(true);
    });
    connect(&menu, &QMenu::aboutToHide, &button, [&button] { button.setDown(false); });
}

void MainToolbar::alignWithSidebar(int sidebarWidth) {
    const int first = itemView(u"back")->sizeHint().width();
    const int width = std::max(sidebarWidth, smallestSidebar) - aroundAutoSpace - first;
    if (width == _autoSpace->maximumWidth()) return;
    _autoSpace->setMaximumWidth(std::max(width, smallestAutoSpace));
    _autoSpace->updateGeometry();
}

void MainToolbar::setCaptions(bool shown) {
    _hasCaptions = shown;
    for (QLabel* caption : _captions)
        caption->setVisible(shown);
}

void MainToolbar::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    QActionGroup group(&menu);
    for (const bool captions : {true, false}) {
        QAction* entry = menu.addAction(localizedString(captions ? u"IconAndText" : u"IconOnly"));
        entry->setCheckable(true);
        entry->setChecked(captions == _hasCaptions);
        group.addAction(entry);
        connect(entry, &QAction::triggered, this, [this, captions] {
            setCaptions(captions);
            Q_EMIT captionsChosen(captions);
        });
    }
    keepContentsWhileShown(menu);
    menu.exec(event->globalPos());
}

void MainToolbar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    painter.fillRect(QRect(0, height() - 1, width(), 1), PBThemes::colors().separator);
}

bool MainToolbar::event(QEvent* event) {
    const bool isHandled = QToolBar::event(event);
    // The row brings its own margins; a style puts its own around it.
    if (layout()->contentsMargins() != QMargins()) layout()->setContentsMargins({});
    return isHandled;
}

void MainToolbar::changeEvent(QEvent* event) {
    QToolBar::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void MainToolbar::updateColors() {
    for (QLabel* caption : _captions) {
        QPalette palette = caption->palette();
        if (palette.color(QPalette::WindowText) == PBThemes::colors().secondaryText) continue;
        palette.setColor(QPalette::WindowText, PBThemes::colors().secondaryText);
        caption->setPalette(palette);
    }
}
