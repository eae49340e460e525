#pragma once

#include "browser/feed/BrowserServices.h"
#include "browser/feed/BrowserThumbnailFeed.h"
#include "browser/input/BrowserInput.h"
#include "browser/layout/BrowserLayout.h"
#include "browser/painting/BrowserPainter.h"
#include "browser/state/BrowserCarryOver.h"
#include "browser/state/BrowserLeafList.h"
#include "browser/state/BrowserScrollCapture.h"
#include "browser/state/BrowserSelection.h"

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

class BrowserNeighbour;
class PBImageBrowserScrollView;
class PBImageBrowserSelectView;
class PBModalTextField;
class PBScrollView;
class QHelpEvent;
class QNativeGestureEvent;

namespace platform {
class TrackingScope;
}

/// The sheet of thumbnails: shows the leaves of the live tree one below the other, as far as they
/// are in sight. Puts layout, painter, thumbnail feed, input and selection together and connects
/// them with Qt's events. Main thread.
class PBImageBrowserView final : public QWidget, private BrowserInputHost {
    Q_OBJECT

public:
    /// Becomes the document view of the scroll view. Both outlive this widget.
    PBImageBrowserView(PBImageBrowserScrollView& scrollView, BrowserServices& services);
    ~PBImageBrowserView() override;

    /// What is shown from the next `reloadData` on.
    void setLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves);
    /// Looks at the leaves again, whose images may look otherwise, and keeps what is held in place
    /// where it is.
    void reloadData();
    /// Both, for leaves of which most images are the same and look the same: those are not measured
    /// again.
    void showLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves);
    /// Forgets images and position: other things will be shown.
    void reset();
    /// There are photographs, and each on show has its thumbnail or the camera's small picture.
    [[nodiscard]] bool isPictured();
    /// The same, but the photographs will come again as other items: those that do come keep
    /// selection, current image and place, until `allCame`.
    void resetForSamePhotographs();
    /// What has not come does not come any more.
    void allCame();
    /// What the user has on the sheet, for another run of the program.
    [[nodiscard]] BrowserCarryOver::Noted noted();
    /// Photographs that are there, or come until `allCame`, get what a former run noted of them.
    void bringBack(const BrowserCarryOver::Noted& noted);
    /// The selection that is told of changes because photographs came again, and not by the user.
    [[nodiscard]] bool isCarryingOver() const { return _isCarryingOver; }

    [[nodiscard]] double thumbnailSize() const { return _layout.metrics().thumbnailSize; }
    /// Between 64 and 256 points. Takes effect with the next `reloadData`.
    void setThumbnailSize(double size);
    [[nodiscard]] std::uint64_t style() const { return _layout.metrics().style; }
    /// Bits of `BrowserMetrics::StyleBit`; shown at once.
    void setStyle(std::uint64_t style);

    [[nodiscard]] std::int64_t pageItemCount() const;
    [[nodiscard]] BrowserLayout& browserLayout() { return _layout; }
    [[nodiscard]] const BrowserLeafList& leaves() const { return _leaves; }
    [[nodiscard]] const BrowserSelection& selection() const { return _selection; }
    [[nodiscard]] bool hasGroups() const { return _leaves.leafCount() > 0; }
    /// For the window of decoded thumbnails.
    [[nodiscard]] const BrowserOrder& browserOrder() const { return _leaves; }

    /// The selection was changed from outside: tells of it and redraws.
    void selectDidChange() override;
    void GotoIndex(const PBImageBrowserIndex& index) { _input.gotoIndex(index); }
    void goTo(BrowserStep step) { _input.gotoIndex(_input.stepIndex(step)); }
    [[nodiscard]] PBImageBrowserIndex stepIndex(BrowserStep step) const {
        return _input.stepIndex(step);
    }
    /// The image that keys start from; selection and sheet stay as they are.
    void setCurrentImageFile(const std::shared_ptr<PBImageFileItem>& item) {
        _input.setCurrent(item);
    }
    /// The sheet comes into sight again with that image as the current one: it stays where it is
    /// unless the image lies outside, and is there at once.
    void showCurrent(const std::shared_ptr<PBImageFileItem>& item);
    [[nodiscard]] PBImageBrowserIndex currentIndex() const { return _input.currentIndex(); }
    void scrollIndexToVisible(const PBImageBrowserIndex& index) override;
    /// Shows the head of a leaf at the top; animated unless it is far.
    void scrollToGroup(std::int64_t group);

    void captureScrollWithMode(ScrollCaptureMode mode);
    /// Before a swap that moves selected photographs to other groups: the first of them that is on
    /// show stays at its place, and without one what lies nearest to the middle.
    void captureScrollOfSelection();
    /// The mouse button is down: no tree may be swapped in.
    [[nodiscard]] bool isDragging() const { return _input.isDragging(); }
    /// Begins the rename of an image in place, with a text that was typed before if there is one.
    void renameIndex(const PBImageBrowserIndex& index, const QString& typed = {});

    /// A thumbnail was built for the image.
    void buildThumbDidFinish(qint64 fileId);
    void adjustBuildThumb();
    /// The path of a head in words.
    [[nodiscard]] QString headText(std::int64_t group) const;
    /// Where a cell lies in this widget.
    [[nodiscard]] QRect widgetRect(const PBImageBrowserIndex& index);
    /// Another number each time that other images may be shown.
    [[nodiscard]] std::uint64_t contentGeneration() const { return _contentGeneration; }
    /// Where a head lies in this widget, when it does not stick to the top.
    [[nodiscard]] QRect headRect(std::int64_t group);
    /// The group whose head is at a point of this widget; -1 if there is none.
    [[nodiscard]] std::int64_t headAt(const QPoint& point);
    /// The whole name of a file, or path of a group, that is shortened at a point of this widget.
    [[nodiscard]] QString toolTipAt(const QPoint& point);
    /// Adds the image to the selection, or takes it out again.
    void toggleIndex(const PBImageBrowserIndex& index);
    void openIndex(const PBImageBrowserIndex& index) { enterToLargeView(index); }
    /// The image at a point of this widget; invalid if there is none.
    [[nodiscard]] PBImageBrowserIndex indexAt(const QPoint& point);

Q_SIGNALS:
    void selectionDidChange(qint64 selectCount);
    void itemCountDidChange(qint64 itemCount);
    void enterToLargeViewRequested(PBImageBrowserIndex index);
    /// The user gave an image another name; `text` may be the old one.
    void renameRequested(const std::shared_ptr<PBImageFileItem>& item, const QString& text);
    void flagToggleRequested();
    /// 0 to 5 stars, by their keys.
    void ratingRequested(int stars);
    void rotateLeftRequested();
    void rotateRightRequested();
    /// By a gesture; in force already.
    void thumbnailSizeDidChange(double size);
    void contextMenuRequested(bool isOnItem, const QPoint& globalPosition);
    /// The page has room for another number of thumbnails.
    void pageItemCountDidChange(qint64 count);

protected:
    bool event(QEvent* event) override;
    /// Of the whole program while a button is down: its release may go to a popup, or be lost to a
    /// modal window.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    // What the input wants.
    [[nodiscard]] QRectF visibleRect() const override;
    void scrollToEnd(bool isStart) override;
    void enterToLargeView(const PBImageBrowserIndex& index) override;
    void beginDragOut(const PBImageBrowserIndex& index) override;
    void beginRename(const PBImageBrowserIndex& index) override;
    void showBand(const QRectF& band) override;
    void setSelectTimerScrollStep(int step) override;
    void setDragging(bool isDragging) override;
    void perform(BrowserCommand command) override;
    void applyThumbnailSize(double size) override;

    /// What will be on show when a motion that runs is over.
    [[nodiscard]] QRectF restingRect() const;
    /// Scrolls by so much more than a motion that runs will.
    void scrollFromRest(double distance);
    void forgetImages();
    void didScroll();
    void scrollPixels(double distance);
    /// Fits the sheet into its width, keeping what is held in place where it is.
    void layoutSheet();
    void updateDocument();
    /// Takes a position to keep, if none is held.
    void captureScrollIfNone();
    void restoreCapture();
    /// Gives images that came again what they had; answers whether any was selected.
    void showLeaves();
    [[nodiscard]] bool takeCarriedOver();
    void goOnWith(const BrowserNeighbour& neighbour);
    void noteVisible();
    void placeNameField();
    void pressAt(QMouseEvent* event, int clickCount);
    [[nodiscard]] QPointF toSheet(const QPointF& point) const;
    [[nodiscard]] QRect toWidget(const QRectF& sheetRect) const;
    void updateSheetRect(const QRectF& sheetRect);
    void thumbnailArrived(const PBImageFileItem& item);
    bool nativeGesture(QNativeGestureEvent* event);
    bool showToolTip(const QHelpEvent& event);
    [[nodiscard]] bool isTyping() const;
    void typed(const QString& text);

    PBImageBrowserScrollView& _scrollView;
    BrowserServices& _services;
    BrowserLeafList _leaves;
    BrowserLayout _layout;
    BrowserThumbnailFeed _feed;
    BrowserPainter _painter;
    BrowserSelection _selection;
    BrowserInput _input;

    std::optional<PBImageBrowserViewScrollCapture> _scrollCapture;
    BrowserCarryOver _carryOver;
    /// When the selection changed last; whoever takes an image away may have cleared it by now.
    bool _isCurrentSelected = false;
    bool _hasGoneOn = false;      ///< another image was selected for those that left
    bool _isCarryingOver = false; ///< the selection changes by that, and not by the user
    std::shared_ptr<PBImageFileItem> _editingNameFileItem;
    QPointer<PBModalTextField> _editFileNameTextField;
    PBImageBrowserSelectView* _selectView;
    std::unique_ptr<platform::TrackingScope> _tracking;
    QBasicTimer _selectTimer;
    QBasicTimer _adjustTimer;
    QBasicTimer _largerTimer;
    QBasicTimer _standInTimer;
    int _selectTimerScrollStep = 0;
    QPoint _lastMouse;
    int _clickCount = 1;
    double _oldScrollPosition = 0;
    bool _scrollDirection = true; // down
    bool _isAutoRepeat = false;   // the key that is handled
    bool _ignoreUpdateScrollCapture = false;
    bool _isReloading = false;
    std::uint64_t _contentGeneration = 0;
    std::int64_t _lastPageItemCount = 0;
    QString _typed;
    double _lastTyped = 0;
};
