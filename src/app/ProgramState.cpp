#include "app/ProgramState.h"

#include "app/ApplicationController.h"
#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserTipView.h"
#include "browser/PBImageBrowserView.h"
#include "info/InfoRowsView.h"
#include "info/tags/PBTagTokenField.h"
#include "library/PBFolderItem.h"
#include "shell/PBMainWindowController.h"
#include "shell/large/LargeView.h"
#include "shell/panes/NoticeBar.h"
#include "shell/sidebar/SourceSidebar.h"
#include "ui/PBModalTextField.h"
#include "ui/PBPathControl.h"
#include "ui/PBSplitView.h"
#include "viewer/PBImageView.h"
#include "viewer/slideshow/Slideshow.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDrag>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

namespace {

constexpr qsizetype mostNames = 1000;
constexpr int mostRows = 1000;

QString className(const QObject& object) {
    return QString::fromLatin1(object.metaObject()->className());
}

QJsonArray json(const QRect& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

QJsonArray onScreen(const QWidget& widget, const QRect& rect) {
    return json(QRect(widget.mapToGlobal(rect.topLeft()), rect.size()));
}

QJsonArray onScreen(const QWidget& widget) {
    return onScreen(widget, widget.rect());
}

QJsonValue number(std::int64_t value) {
    return static_cast<qint64>(value);
}

/// "&File" as it is read.
QString plainText(QString text) {
    return text.remove(u'&').section(u'\t', 0, 0);
}

// The browser.

QJsonObject itemState(PBImageBrowserView& view, const PBImageBrowserIndex& index) {
    const auto item = view.leaves().imageFileAtIndex(index);
    BrowserLayout& layout = view.browserLayout();
    const QRectF cell = layout.cellRectAtIndex(index);
    const QRect shown = view.widgetRect(index);
    const auto placed = [&](const QRectF& rect) {
        return onScreen(view, rect.translated(shown.topLeft() - cell.topLeft()).toAlignedRect());
    };
    return {
        {QStringLiteral("name"), item->fileName()},
        {QStringLiteral("rect"), onScreen(view, shown)},
        {QStringLiteral("picture"), placed(layout.hitTarget(cell, index))},
        {QStringLiteral("label"), placed(layout.fileNameRectWithCellRect(cell))},
        {QStringLiteral("selected"), item->isSelected()},
        {QStringLiteral("thumbnail"), item->hasThumbnail()},
        {QStringLiteral("stars"), static_cast<qint64>(item->star())},
        {QStringLiteral("flagged"), item->flagged()},
        {QStringLiteral("angle"), item->rotateAngle()}};
}

/// The groups whose heads or cells are on show.
QJsonArray groupStates(PBImageBrowserView& view, const QRectF& visible) {
    QJsonArray groups;
    BrowserLayout& layout = view.browserLayout();
    for (const BrowserHead& head : layout.visibleHeads(visible)) {
        QJsonArray items;
        layout.forEachVisible(
            visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
                if (index.group == head.group) items.append(itemState(view, index));
            });
        groups.append(QJsonObject{
            {QStringLiteral("index"), number(head.group)},
            {QStringLiteral("path"), view.headText(head.group)},
            {QStringLiteral("head"),
             onScreen(view, head.rect.translated(-visible.topLeft()).toAlignedRect())},
            {QStringLiteral("count"), number(layout.imageFileCount(head.group))},
            {QStringLiteral("items"), items}});
    }
    return groups;
}

QJsonArray selectedNames(const PBImageBrowserView& view) {
    QJsonArray names;
    view.leaves().forEachImage(
        FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
            if (item->isSelected() && names.size() < mostNames) names.append(item->fileName());
        });
    return names;
}

/// The text of the name that is being edited; null if none is.
QJsonValue renaming(const PBImageBrowserView& view) {
    for (const auto* field : view.findChildren<PBModalTextField*>())
        if (field->isVisible()) return field->text();
    return QJsonValue::Null;
}

QJsonObject browserState(PBImageBrowserView& view, const PBImageBrowserScrollView& scrollView) {
    const QRectF visible = scrollView.documentVisibleRect();
    const auto current = view.leaves().imageFileAtIndex(view.currentIndex());
    return {
        {QStringLiteral("rect"), onScreen(view)},
        {QStringLiteral("shown"), view.isVisible()},
        {QStringLiteral("focus"), view.hasFocus()},
        {QStringLiteral("scroll"), visible.top()},
        {QStringLiteral("scrollEnd"), scrollView.maxScrollPoint().y()},
        {QStringLiteral("scrolling"), scrollView.isScrolling()},
        {QStringLiteral("dragging"), view.isDragging()},
        {QStringLiteral("dragOut"), view.findChild<QDrag*>() != nullptr},
        {QStringLiteral("thumbnailSize"), view.thumbnailSize()},
        {QStringLiteral("style"), static_cast<qint64>(view.style())},
        {QStringLiteral("columns"), number(view.browserLayout().cellColumn())},
        {QStringLiteral("items"), number(view.selection().itemCount(FoldedLeaves::Included))},
        {QStringLiteral("leaves"), number(view.leaves().leafCount())},
        {QStringLiteral("selectCount"),
         number(view.selection().selectCount(FoldedLeaves::Included))},
        {QStringLiteral("selected"), selectedNames(view)},
        {QStringLiteral("current"), current ? current->fileName() : QString()},
        {QStringLiteral("renaming"), renaming(view)},
        {QStringLiteral("groups"), groupStates(view, visible)}};
}

// The large view.

QJsonArray json(const QPointF& point) {
    return {point.x(), point.y()};
}

QString nameOf(PBImageView::Painted painted) {
    switch (painted) {
    case PBImageView::Painted::Nothing:
        return QStringLiteral("nothing");
    case PBImageView::Painted::Thumbnail:
        return QStringLiteral("thumbnail");
    case PBImageView::Painted::FitIn:
        return QStringLiteral("fitIn");
    case PBImageView::Painted::Original:
        return QStringLiteral("original");
    }
    return {};
}

QJsonObject stripState(const PBThumbnailView& strip) {
    const StripGeometry::Range range = strip.visibleRange();
    QJsonArray cells;
    for (std::int64_t index = range.first; index <= range.last; ++index) {
        const auto item = strip.bin().itemAt(index);
        if (!item) continue;
        cells.append(QJsonObject{
            {QStringLiteral("text"), item->fileName()},
            {QStringLiteral("rect"), onScreen(strip, strip.widgetRect(index))},
            {QStringLiteral("thumbnail"), item->hasThumbnail()}});
    }
    return {{QStringLiteral("rect"), onScreen(strip)},
            {QStringLiteral("focus"), strip.hasFocus()},
            {QStringLiteral("first"), number(range.first)},
            {QStringLiteral("last"), number(range.last)},
            {QStringLiteral("scrolling"), strip.isScrolling()},
            {QStringLiteral("entries"), cells}};
}

QJsonObject largeState(const LargeView& largeView) {
    const PBImageViewController& controller = largeView.controller();
    const PBImageView& view = controller.imageView();
    const PhotoBin& bin = controller.bin();
    const ImagePlacement& placement = view.imageGeometry().placement();
    const auto focus = bin.focusImageFileItem();
    return {
        {QStringLiteral("image"), focus ? focus->fileName() : QString()},
        {QStringLiteral("stars"), focus ? static_cast<qint64>(focus->star()) : 0},
        {QStringLiteral("flagged"), focus && focus->flagged()},
        {QStringLiteral("index"), number(bin.focusIndex())},
        {QStringLiteral("count"), number(bin.count())},
        {QStringLiteral("rect"), onScreen(view)},
        {QStringLiteral("focus"), view.hasFocus()},
        {QStringLiteral("scale"), view.scale()},
        {QStringLiteral("percent"), view.zoomPercent()},
        {QStringLiteral("angle"), view.angle()},
        {QStringLiteral("fitIn"), view.isFitIn()},
        {QStringLiteral("imageAnchor"), json(placement.imageAnchor())},
        {QStringLiteral("drawAnchor"), json(placement.drawAnchor())},
        {QStringLiteral("picture"), onScreen(view, placement.imageDrawRect().toAlignedRect())},
        {QStringLiteral("painted"), nameOf(view.painted())},
        {QStringLiteral("frame"), number(static_cast<std::int64_t>(view.indexOfImages()))},
        {QStringLiteral("atRest"), view.isAtRest()},
        {QStringLiteral("waiting"), view.isProgressIndicatorShown()},
        {QStringLiteral("strip"), stripState(controller.thumbnailView())}};
}

// The window around it.

QJsonObject browsingState(ApplicationController& controller) {
    const BrowsingSettings& browsing = controller.browsing();
    QJsonArray chain;
    for (const int type : *browsing.groupTypeArray())
        chain.append(type);
    return {
        {QStringLiteral("chain"), chain},
        {QStringLiteral("sort"), browsing.sortType()},
        {QStringLiteral("descending"), browsing.descendingSort()},
        {QStringLiteral("filter"), static_cast<qint64>(browsing.filter())},
        {QStringLiteral("search"), browsing.searchString()},
        {QStringLiteral("subfolders"), browsing.recurseSubFolder()},
        {QStringLiteral("largeView"), controller.isLargeViewMode()},
        {QStringLiteral("scanning"), controller.isScanning()}};
}

QJsonObject slideshowState(const Slideshow& slideshow) {
    const Slideshow::State state = slideshow.state();
    return {
        {QStringLiteral("state"), state.state},
        {QStringLiteral("engine"), state.engine},
        {QStringLiteral("renderer"), state.renderer},
        {QStringLiteral("index"), number(state.index)},
        {QStringLiteral("name"), state.name},
        {QStringLiteral("transition"), state.transition},
        {QStringLiteral("inTransition"), state.isTransitionRunning},
        {QStringLiteral("controls"), state.areControlsShown},
        {QStringLiteral("fullScreen"), state.isFullScreen},
        {QStringLiteral("keepsAwake"), state.isInhibited}};
}

QJsonArray menuEntries(const QWidget& menu, auto&& geometryOf) {
    QJsonArray entries;
    for (const QAction* action : menu.actions()) {
        if (action->isSeparator() || !action->isVisible()) continue;
        entries.append(QJsonObject{
            {QStringLiteral("text"), plainText(action->text())},
            {QStringLiteral("rect"), onScreen(menu, geometryOf(action))},
            {QStringLiteral("enabled"), action->isEnabled()},
            {QStringLiteral("checked"), action->isChecked()}});
    }
    return entries;
}

/// The rows on show of a list or tree, from the top.
QJsonArray rows(const QAbstractItemView& list) {
    QJsonArray shown;
    const QWidget& viewport = *list.viewport();
    int bottom = 0;
    for (int y = 0; y < viewport.height() && shown.size() < mostRows; y = bottom + 1) {
        const QModelIndex index = list.indexAt(QPoint(viewport.width() / 2, y));
        if (!index.isValid()) {
            bottom = y + 3; // a space between rows
            continue;
        }
        const QRect rect = list.visualRect(index);
        bottom = std::max(y, rect.bottom());
        shown.append(QJsonObject{
            {QStringLiteral("text"), index.data().toString()},
            {QStringLiteral("rect"), onScreen(viewport, rect)},
            {QStringLiteral("selected"), list.selectionModel()->isSelected(index)}});
    }
    return shown;
}

/// The steps of the breadcrumb; the one that adds a criterion has no text.
QJsonArray steps(const PBPathControl& path) {
    QJsonArray all;
    for (std::size_t step = 0; step < path.pathCell().itemCount(); ++step) {
        all.append(QJsonObject{
            {QStringLiteral("text"), path.pathCell().pathComponentCells()[step]->title()},
            {QStringLiteral("rect"), onScreen(path, path.rectOfItem(step).toAlignedRect())}});
    }
    return all;
}

/// The rows of a page of the information panel, with their labels.
QJsonArray rows(const InfoRowsView& page) {
    QJsonArray all;
    for (int row = 0; row < static_cast<int>(page.rows().size()); ++row) {
        all.append(QJsonObject{
            {QStringLiteral("text"), page.rowText(row)},
            {QStringLiteral("rect"), onScreen(page, page.rowRect(row))},
            {QStringLiteral("selected"), page.isSelected(row)}});
    }
    return all;
}

/// Of a button with a symbol alone, what it is called.
QString textOf(const QAbstractButton& button) {
    const auto* tool = qobject_cast<const QToolButton*>(&button);
    if (tool && tool->defaultAction()) return plainText(tool->defaultAction()->text());
    return plainText(button.text().isEmpty() ? button.accessibleName() : button.text());
}

/// What lies in a closed pane counts as visible for the toolkit, beyond the edges of its parents.
bool isInSight(const QWidget& widget) {
    if (!widget.isVisible()) return false;
    QRect part = widget.rect();
    for (const QWidget* inner = &widget; !inner->isWindow(); inner = inner->parentWidget())
        part = part.translated(inner->pos()) & inner->parentWidget()->rect();
    return !part.isEmpty();
}

/// What can be clicked or typed into: a name, where it is, and its state.
QJsonArray controls() {
    QJsonArray all;
    for (const QWidget* widget : QApplication::allWidgets()) {
        if (!isInSight(*widget)) continue;
        QJsonObject control{
            {QStringLiteral("class"), className(*widget)},
            {QStringLiteral("name"), widget->objectName()},
            {QStringLiteral("rect"), onScreen(*widget)},
            {QStringLiteral("window"), static_cast<qint64>(widget->window()->winId())},
            {QStringLiteral("enabled"), widget->isEnabled()}};
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            control.insert(QStringLiteral("text"), textOf(*button));
            control.insert(QStringLiteral("checked"), button->isChecked());
        } else if (const auto* box = qobject_cast<const QComboBox*>(widget)) {
            control.insert(QStringLiteral("text"), box->currentText());
            control.insert(QStringLiteral("focus"), box->hasFocus());
        } else if (const auto* line = qobject_cast<const QLineEdit*>(widget)) {
            control.insert(QStringLiteral("text"), line->text());
        } else if (const auto* list = qobject_cast<const QAbstractItemView*>(widget)) {
            control.insert(QStringLiteral("rows"), rows(*list));
        } else if (const auto* page = qobject_cast<const InfoRowsView*>(widget)) {
            control.insert(QStringLiteral("rows"), rows(*page));
        } else if (const auto* tags = qobject_cast<const PBTagTokenField*>(widget)) {
            control.insert(QStringLiteral("text"), tags->tokens().written());
        } else if (const auto* menu = qobject_cast<const QMenu*>(widget)) {
            control.insert(QStringLiteral("text"), plainText(menu->title()));
            control.insert(
                QStringLiteral("entries"), menuEntries(*menu, [menu](const QAction* action) {
                    return menu->actionGeometry(const_cast<QAction*>(action));
                }));
        } else if (const auto* bar = qobject_cast<const QMenuBar*>(widget)) {
            control.insert(
                QStringLiteral("entries"), menuEntries(*bar, [bar](const QAction* action) {
                    return bar->actionGeometry(const_cast<QAction*>(action));
                }));
        } else if (const auto* path = qobject_cast<const PBPathControl*>(widget)) {
            control.insert(QStringLiteral("entries"), steps(*path));
        } else if (
            widget->objectName().isEmpty() &&
            !QByteArrayView(widget->metaObject()->className()).startsWith("PB")) {
            continue; // a label, a frame
        }
        all.append(control);
    }
    return all;
}

/// The two panes of each split view that is shown; a pane of no size is collapsed.
QJsonObject splitStates(const QWidget& window) {
    QJsonObject splits;
    for (const PBSplitView* split : window.findChildren<PBSplitView*>()) {
        if (!split->isVisible()) continue;
        QJsonArray panes;
        for (int pane = 0; pane < split->count(); ++pane)
            panes.append(
                split->isPaneCollapsed(pane) ? QJsonArray() : onScreen(*split->widget(pane)));
        splits.insert(split->objectName(), panes);
    }
    return splits;
}

/// A pane opens or closes.
bool isAnimating(const QWidget& window) {
    return std::ranges::any_of(
        window.findChildren<PBSplitView*>(), &PBSplitView::isAnimationRunning);
}

QJsonArray windows() {
    QJsonArray all;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible()) continue;
        all.append(QJsonObject{
            {QStringLiteral("class"), className(*widget)},
            {QStringLiteral("id"), static_cast<qint64>(widget->winId())},
            {QStringLiteral("title"), widget->windowTitle()},
            {QStringLiteral("rect"), onScreen(*widget)},
            {QStringLiteral("active"), widget->isActiveWindow()},
            {QStringLiteral("modal"), widget->isModal()},
            {QStringLiteral("popup"), widget->windowType() == Qt::Popup}});
    }
    return all;
}

} // namespace

QByteArray programState(ApplicationController& controller) {
    PBMainWindowController& windowController = controller.mainWindowController();
    const QMainWindow& window = windowController.window();
    QJsonObject state = browsingState(controller);
    state.insert(QStringLiteral("idle"), controller.isIdle());
    state.insert(QStringLiteral("tip"), number(windowController.imageBrowserTipView().tipKind()));
    const auto folder = windowController.sourceSidebar().tree().selectedFolder();
    state.insert(QStringLiteral("folder"), folder ? folder->folderPath() : QString());
    const auto marked = std::dynamic_pointer_cast<PBFolderItem>(
        windowController.sourceSidebar().tree().dataSource().contextMenuItem());
    state.insert(QStringLiteral("markedFolder"), marked ? marked->folderPath() : QString());
    const auto* focus = QApplication::focusWidget();
    state.insert(QStringLiteral("focus"), focus ? className(*focus) : QString());
    const auto* scrollView = window.findChild<PBImageBrowserScrollView*>();
    auto* view = window.findChild<PBImageBrowserView*>();
    if (scrollView && view)
        state.insert(QStringLiteral("browser"), browserState(*view, *scrollView));
    state.insert(QStringLiteral("slideshow"), slideshowState(windowController.slideshow()));
    if (windowController.isLargeView())
        state.insert(QStringLiteral("large"), largeState(windowController.largeView()));
    state.insert(QStringLiteral("notice"), windowController.noticeBar().text());
    state.insert(QStringLiteral("splits"), splitStates(window));
    state.insert(QStringLiteral("animating"), isAnimating(window));
    state.insert(QStringLiteral("windows"), windows());
    state.insert(QStringLiteral("controls"), controls());
    return QJsonDocument(state).toJson(QJsonDocument::Compact) + '\n';
}
