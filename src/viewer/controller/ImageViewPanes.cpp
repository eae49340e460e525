#include "viewer/controller/ImageViewPanes.h"

#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBSplitView.h"

#include <QApplication>
#include <QSplitterHandle>

#include <algorithm>

namespace {

/// Bit n is set while the pane with the number n is hidden.
const QString hiddenPanesKey = QStringLiteral("ImageHiddenPanes");
/// The picture has all the width at first.
constexpr qint64 hiddenAtFirst = 1 << static_cast<int>(ImageViewPanes::Pane::Info);

// Points.
constexpr PBSplitView::Limits editLimits{10, 20};
constexpr PBSplitView::Limits infoLimits{200, 400};
constexpr PBSplitView::Limits thumbnailLimits{48, 96};
constexpr int smallestPictureWidth = 200;
constexpr int smallestPictureHeight = 120;

} // namespace

ImageViewPanes::ImageViewPanes(
    const Contents& contents, platform::UserDefaults& defaults, QObject* parent)
    : QObject(parent), _contents(contents), _defaults(defaults),
      _editSplitView(new PBSplitView(Qt::Horizontal)),
      _imageInfoSplitView(new PBSplitView(Qt::Horizontal)),
      _imageThumbSplitView(new PBSplitView(Qt::Vertical)),
      _splits{
          {_imageThumbSplitView, Pane::PhotoBin, 76, thumbnailLimits.minimum,
           thumbnailLimits.maximum},
          {_imageInfoSplitView, Pane::Info, 260, infoLimits.minimum, infoLimits.maximum}} {
    _editSplitView->setObjectName(QStringLiteral("EditSplitPos"));
    _imageInfoSplitView->setObjectName(QStringLiteral("ImageInfoSplitPos"));
    _imageThumbSplitView->setObjectName(QStringLiteral("PhotoBinSplitPos"));
    _imageThumbSplitView->setPanes(
        contents.image, contents.thumbnails, 1, thumbnailLimits, smallestPictureHeight);
    _imageInfoSplitView->setPanes(
        _imageThumbSplitView, contents.info, 1, infoLimits, smallestPictureWidth);
    _editSplitView->setPanes(contents.edit, _imageInfoSplitView, 0, editLimits, 0);
    _editSplitView->handle(1)->setEnabled(false);
    contents.edit->setEnabled(false);
    for (const Split& split : _splits) {
        connect(split.view, &PBSplitView::splitViewDidResizeSubviews, this, [this] {
            enablePanes();
            Q_EMIT changed();
        });
        connect(
            split.view, &PBSplitView::dividerReleased, this,
            &ImageViewPanes::splitViewSavePosition);
    }
}

QWidget* ImageViewPanes::view() const {
    return _editSplitView;
}

const ImageViewPanes::Split& ImageViewPanes::splitOf(Pane pane) const {
    return *std::ranges::find(_splits, pane, &Split::pane);
}

bool ImageViewPanes::isShown(Pane pane) const {
    return !splitOf(pane).view->isPaneCollapsed(1);
}

bool ImageViewPanes::isAnimationRunning() const {
    return std::ranges::any_of(
        _splits, [](const Split& split) { return split.view->isAnimationRunning(); });
}

void ImageViewPanes::toggle(Pane pane) {
    platform::assertMainThread();
    const Split& split = splitOf(pane);
    if (split.view->isAnimationRunning()) return;
    int size = 0;
    if (isShown(pane)) {
        save(split);
    } else {
        size = stored(split);
    }
    split.view->animateToPosition(split.view->length() - size, [this] { saveHiddenPanes(); });
}

void ImageViewPanes::restorePositions() {
    platform::assertMainThread();
    const qint64 hidden = _defaults.integerForKey(hiddenPanesKey).value_or(hiddenAtFirst);
    _editSplitView->setFixedPaneSize(0);
    for (const Split& split : _splits) {
        const bool isHidden = ((hidden >> static_cast<int>(split.pane)) & 1) != 0;
        split.view->setFixedPaneSize(isHidden ? 0 : stored(split));
    }
    _wasRestored = true;
    enablePanes();
    Q_EMIT changed();
}

void ImageViewPanes::splitViewSavePosition() {
    platform::assertMainThread();
    // A view that was never shown has no sizes worth keeping.
    if (!_wasRestored) return;
    for (const Split& split : _splits)
        if (isShown(split.pane)) save(split);
    saveHiddenPanes();
}

void ImageViewPanes::save(const Split& split) {
    // While a divider moves by itself it stands nowhere.
    if (split.view->isAnimationRunning()) return;
    _defaults.setDouble(split.view->fixedPaneSize(), split.view->objectName());
}

void ImageViewPanes::saveHiddenPanes() {
    qint64 hidden = 0;
    for (const Split& split : _splits)
        if (!isShown(split.pane)) hidden |= 1 << static_cast<int>(split.pane);
    if (hidden != _defaults.integerForKey(hiddenPanesKey).value_or(hiddenAtFirst))
        _defaults.setInteger(hidden, hiddenPanesKey);
    Q_EMIT changed();
}

/// What is out of sight takes no keys.
void ImageViewPanes::enablePanes() {
    if (!_wasRestored) return;
    const std::pair<QWidget*, Pane> panes[] = {
        {_contents.thumbnails, Pane::PhotoBin}, {_contents.info, Pane::Info}};
    for (const auto& [widget, pane] : panes) {
        const QWidget* focus = QApplication::focusWidget();
        if (!isShown(pane) && focus && widget->isAncestorOf(focus))
            _contents.image->setFocus(Qt::OtherFocusReason);
        widget->setEnabled(isShown(pane));
    }
}

int ImageViewPanes::stored(const Split& split) const {
    const double size = _defaults.doubleForKey(split.view->objectName()).value_or(0);
    if (!(size >= 1 && size < 10000)) return split.firstSize;
    return std::clamp(static_cast<int>(size), split.smallest, split.largest);
}
