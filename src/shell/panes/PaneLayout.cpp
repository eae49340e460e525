#include "shell/panes/PaneLayout.h"

#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBSplitView.h"

#include <QApplication>

#include <algorithm>

namespace {

/// Limits of the panes in points.
constexpr PBSplitView::Limits sideBarLimits{200, 400};
constexpr PBSplitView::Limits infoLimits{200, 400};
constexpr int smallestLeftPane = 150;
/// What the smallest window leaves, where both panes at its sides have their least.
constexpr int smallestBrowser = 236;
/// What the panes at its sides leave it while they can give way.
constexpr int browserRoom = 400;

/// Sizes of a window that was never arranged.
constexpr int firstSideBarWidth = 230;
constexpr int firstInfoWidth = 260;

/// Bit n is set while the pane with the number n is hidden.
const QString hiddenPanesKey = QStringLiteral("HiddenPanes");

} // namespace

PaneLayout::PaneLayout(const Contents& contents, platform::UserDefaults& defaults, QObject* parent)
    : QObject(parent), _contents(contents), _defaults(defaults),
      _baseSplitView(new PBSplitView(Qt::Horizontal)),
      _groupSplitView(new PBSplitView(Qt::Vertical)),
      _thumbnailSplitView(new PBSplitView(Qt::Horizontal)) {
    _baseSplitView->setObjectName(QStringLiteral("SourceGroupSplitPos"));
    _groupSplitView->setObjectName(QStringLiteral("GroupSplitPos"));
    _thumbnailSplitView->setObjectName(QStringLiteral("InfoSplitPos"));

    _groupSplitView->setPanes(
        contents.source, contents.group, 0, {smallestLeftPane}, smallestLeftPane);
    _groupSplitView->setCollapsible(1, true);
    _thumbnailSplitView->setPanes(
        contents.thumbnail, contents.info, 1, infoLimits, smallestBrowser);
    _baseSplitView->setPanes(_groupSplitView, _thumbnailSplitView, 0, sideBarLimits, 0);
    _thumbnailSplitView->setRoomKept(browserRoom);
    for (PBSplitView* splitView : {_baseSplitView, _groupSplitView, _thumbnailSplitView}) {
        connect(
            splitView, &PBSplitView::splitViewDidResizeSubviews, this, &PaneLayout::enablePanes);
        connect(splitView, &PBSplitView::splitViewDidResizeSubviews, this, &PaneLayout::changed);
        connect(splitView, &PBSplitView::dividerReleased, this, &PaneLayout::savePositions);
    }
    connect(
        _thumbnailSplitView, &PBSplitView::splitViewDidResizeSubviews, this, &PaneLayout::keepRoom);
    keepRoom();
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

bool PaneLayout::isAnimationRunning() const {
    return _baseSplitView->isAnimationRunning() || _groupSplitView->isAnimationRunning() ||
           _thumbnailSplitView->isAnimationRunning();
}

int PaneLayout::sideBarWidth() const {
    return _baseSplitView->splitPosition();
}

void PaneLayout::toggle(Pane pane) {
    platform::assertMainThread();
    switch (pane) {
    case Pane::SideBar:
        return toggleSideBar();
    case Pane::Folder:
        return toggleLeftPane(0);
    case Pane::Group:
        return toggleLeftPane(1);
    case Pane::Info:
        return toggleInfo();
    }
}

void PaneLayout::toggleSideBar() {
    if (_baseSplitView->isAnimationRunning()) return;
    int target = 0;
    if (isShown(Pane::SideBar)) {
        splitViewSavePosition(_baseSplitView);
    } else {
        target = stored(_baseSplitView, firstSideBarWidth);
    }
    _baseSplitView->animateToPosition(
        target == 0 ? 0 : std::clamp(target, sideBarLimits.minimum, sideBarLimits.maximum),
        [this] { saveHiddenPanes(); });
}

void PaneLayout::toggleInfo() {
    if (_thumbnailSplitView->isAnimationRunning()) return;
    int width = 0;
    if (isShown(Pane::Info)) {
        splitViewSavePosition(_thumbnailSplitView);
    } else {
        width = std::clamp(
            stored(_thumbnailSplitView, firstInfoWidth), infoLimits.minimum, infoLimits.maximum);
    }
    _thumbnailSplitView->animateToPosition(
        _thumbnailSplitView->length() - width, [this] { saveHiddenPanes(); });
}

void PaneLayout::toggleLeftPane(int index) {
    if (_groupSplitView->isAnimationRunning() || _baseSplitView->isAnimationRunning()) return;
    const bool isCollapsed = _groupSplitView->isPaneCollapsed(index);
    if (!isShown(Pane::SideBar)) {
        // The pane comes into sight with the sidebar that holds it.
        if (isCollapsed) _groupSplitView->setSplitPosition(leftPanesPosition());
        return toggleSideBar();
    }
    int target = leftPanesPosition();
    if (!isCollapsed) {
        if (!_groupSplitView->isPaneCollapsed(1 - index)) splitViewSavePosition(_groupSplitView);
        target = index == 0 ? 0 : _groupSplitView->length();
    }
    _groupSplitView->animateToPosition(target, [this] { saveHiddenPanes(); });
}

/// Where the divider of the left panes stands with both in sight, each at its smallest or above.
int PaneLayout::leftPanesPosition() const {
    const int height = _groupSplitView->length();
    const int largest = std::max(smallestLeftPane, height - smallestLeftPane);
    return std::clamp(stored(_groupSplitView, height / 2), smallestLeftPane, largest);
}

void PaneLayout::restorePositions() {
    platform::assertMainThread();
    const qint64 hidden = _defaults.integerForKey(hiddenPanesKey).value_or(0);
    const auto isHidden = [hidden](Pane pane) {
        return ((hidden >> static_cast<int>(pane)) & 1) != 0;
    };
    _baseSplitView->setFixedPaneSize(
        isHidden(Pane::SideBar) ? 0 : stored(_baseSplitView, firstSideBarWidth));
    _thumbnailSplitView->setFixedPaneSize(
        isHidden(Pane::Info) ? 0 : stored(_thumbnailSplitView, firstInfoWidth));
    int position = leftPanesPosition();
    if (isHidden(Pane::Group)) position = _groupSplitView->length();
    if (isHidden(Pane::Folder)) position = 0;
    _groupSplitView->setSplitPosition(position);
    _wasRestored = true;
    enablePanes();
    Q_EMIT changed();
}

void PaneLayout::keepRoom() {
    const int info = isShown(Pane::Info) ? infoLimits.minimum : 0;
    _baseSplitView->setRoomKept(browserRoom + info);
}

void PaneLayout::enablePanes() {
    // Before the panes have sizes, none is known to be out of sight.
    if (!_wasRestored) return;
    const std::pair<QWidget*, Pane> panes[] = {
        {_contents.source, Pane::Folder},
        {_contents.group, Pane::Group},
        {_contents.info, Pane::Info}};
    for (const auto& [widget, pane] : panes) {
        const QWidget* focus = QApplication::focusWidget();
        if (!isShown(pane) && focus && widget->isAncestorOf(focus))
            _contents.thumbnail->setFocus(Qt::OtherFocusReason);
        widget->setEnabled(isShown(pane));
    }
}

void PaneLayout::savePositions() {
    platform::assertMainThread();
    // A window that was never shown has no sizes worth keeping.
    if (!_wasRestored) return;
    if (isShown(Pane::SideBar)) splitViewSavePosition(_baseSplitView);
    if (!_groupSplitView->isPaneCollapsed(0) && !_groupSplitView->isPaneCollapsed(1)) {
        splitViewSavePosition(_groupSplitView);
    }
    if (isShown(Pane::Info)) splitViewSavePosition(_thumbnailSplitView);
    saveHiddenPanes();
}

void PaneLayout::saveHiddenPanes() {
    int hidden = 0;
    const auto note = [&hidden](Pane pane, bool isHidden) {
        if (isHidden) hidden |= 1 << static_cast<int>(pane);
    };
    note(Pane::SideBar, _baseSplitView->isPaneCollapsed(0));
    note(Pane::Folder, _groupSplitView->isPaneCollapsed(0));
    note(Pane::Group, _groupSplitView->isPaneCollapsed(1));
    note(Pane::Info, _thumbnailSplitView->isPaneCollapsed(1));
    if (hidden != _defaults.integerForKey(hiddenPanesKey).value_or(0)) {
        _defaults.setInteger(hidden, hiddenPanesKey);
    }
    Q_EMIT changed();
}

void PaneLayout::splitViewSavePosition(PBSplitView* splitView) {
    // While a divider moves by itself it stands nowhere.
    if (splitView->isAnimationRunning()) return;
    _defaults.setDouble(splitView->askedPaneSize(), splitView->objectName());
}

int PaneLayout::stored(PBSplitView* splitView, int otherwise) const {
    const double size = _defaults.doubleForKey(splitView->objectName()).value_or(0);
    return size >= 1 && size < 10000 ? static_cast<int>(size) : otherwise;
}
