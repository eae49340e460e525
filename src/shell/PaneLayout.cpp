#include "shell/PaneLayout.h"

#include "platform/UserDefaults.h"
#include "ui/PBSplitView.h"

#include <algorithm>

namespace {

/// Limits of the panes in points.
constexpr PBSplitView::Limits sideBarLimits{200, 400};
constexpr PBSplitView::Limits infoLimits{200, 400};
constexpr int smallestLeftPane = 150;

/// Sizes of a window that was never arranged.
constexpr int firstSideBarWidth = 230;
constexpr int firstInfoWidth = 260;

} // namespace

PaneLayout::PaneLayout(const Contents& contents, platform::UserDefaults& defaults, QObject* parent)
    : QObject(parent), _defaults(defaults), _baseSplitView(new PBSplitView(Qt::Horizontal)),
      _groupSplitView(new PBSplitView(Qt::Vertical)),
      _thumbnailSplitView(new PBSplitView(Qt::Horizontal)) {
    _baseSplitView->setObjectName(QStringLiteral("SourceGroupSplitPos"));
    _groupSplitView->setObjectName(QStringLiteral("GroupSplitPos"));
    _thumbnailSplitView->setObjectName(QStringLiteral("InfoSplitPos"));

    contents.group->setMinimumHeight(smallestLeftPane);
    contents.thumbnail->setMinimumWidth(260);
    _groupSplitView->setPanes(contents.source, contents.group, 0, {smallestLeftPane});
    _groupSplitView->setCollapsible(1, true);
    _thumbnailSplitView->setPanes(contents.thumbnail, contents.info, 1, infoLimits);
    _baseSplitView->setPanes(_groupSplitView, _thumbnailSplitView, 0, sideBarLimits);
    for (PBSplitView* splitView : {_baseSplitView, _groupSplitView, _thumbnailSplitView}) {
        connect(splitView, &QSplitter::splitterMoved, this, [this] {
            savePositions();
            Q_EMIT changed();
        });
    }
}

QWidget* PaneLayout::view() const {
    return _baseSplitView;
}

bool PaneLayout::isShown(Pane pane) const {
    switch (pane) {
    case Pane::SideBar:
        return !_baseSplitView->isPaneCollapsed(0);
    case Pane::Folder:
        return isShown(Pane::SideBar) && !_groupSplitView->isPaneCollapsed(0);
    case Pane::Group:
        return isShown(Pane::SideBar) && !_groupSplitView->isPaneCollapsed(1);
    case Pane::Info:
        return !_thumbnailSplitView->isPaneCollapsed(1);
    }
    return false;
}

int PaneLayout::sideBarWidth() const {
    return isShown(Pane::SideBar) ? _groupSplitView->width() : 0;
}

void PaneLayout::toggle(Pane pane) {
    const bool show = !isShown(pane);
    if (!show) savePositions();
    switch (pane) {
    case Pane::SideBar:
        _baseSplitView->setFixedPaneSize(show ? stored(_baseSplitView, firstSideBarWidth) : 0);
        break;
    case Pane::Info:
        _thumbnailSplitView->setFixedPaneSize(
            show ? stored(_thumbnailSplitView, firstInfoWidth) : 0);
        break;
    case Pane::Folder:
        setLeftPanes(show, isShown(Pane::Group) || !show);
        break;
    case Pane::Group:
        setLeftPanes(isShown(Pane::Folder) || !show, show);
        break;
    }
    Q_EMIT changed();
}

/// At least one of the two stays, or the sidebar would be empty.
void PaneLayout::setLeftPanes(bool showFolder, bool showGroup) {
    if (!isShown(Pane::SideBar)) {
        _baseSplitView->setFixedPaneSize(stored(_baseSplitView, firstSideBarWidth));
    }
    const int height = _groupSplitView->height();
    if (showFolder && showGroup) {
        const int largest = std::max(smallestLeftPane, height - smallestLeftPane);
        _groupSplitView->setFixedPaneSize(
            std::clamp(stored(_groupSplitView, height / 2), smallestLeftPane, largest));
    } else {
        _groupSplitView->setSizes({showFolder ? height : 0, showFolder ? 0 : height});
    }
}

void PaneLayout::restorePositions() {
    _baseSplitView->setFixedPaneSize(stored(_baseSplitView, firstSideBarWidth));
    _thumbnailSplitView->setFixedPaneSize(stored(_thumbnailSplitView, firstInfoWidth));
    setLeftPanes(true, true);
    Q_EMIT changed();
}

void PaneLayout::savePositions() {
    if (isShown(Pane::SideBar)) save(_baseSplitView, _baseSplitView->fixedPaneSize());
    if (isShown(Pane::Folder) && isShown(Pane::Group)) {
        save(_groupSplitView, _groupSplitView->fixedPaneSize());
    }
    if (isShown(Pane::Info)) save(_thumbnailSplitView, _thumbnailSplitView->fixedPaneSize());
}

void PaneLayout::save(PBSplitView* splitView, int size) {
    if (size > 0) _defaults.setDouble(size, splitView->objectName());
}

int PaneLayout::stored(PBSplitView* splitView, int otherwise) const {
    const double size = _defaults.doubleForKey(splitView->objectName()).value_or(0);
    return size >= 1 && size < 10000 ? static_cast<int>(size) : otherwise;
}
