#pragma once

#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserSelection.h"
#include "ui/TwoFingerGesture.h"

#include <QString>

#include <cstdint>
#include <memory>

/// Modifier keys by what they mean here.
struct BrowserModifiers {
    bool shift = false;
    bool command = false; ///< Ctrl on this platform
    bool other = false;   ///< option or control
    [[nodiscard]] bool hasCommandOrOther() const { return command || other; }
};

enum class BrowserKey { Up, Down, Left, Right, PageUp, PageDown, Home, End, Space, Return };

/// Steps of the menu from the current image.
enum class BrowserStep {
    PrevIndex,
    NextIndex,
    FirstIndex,
    LastIndex,
    PreviousGroup,
    NextGroup,
    FirstIndexInGroup,
    LastIndexInGroup,
};

/// What gestures and keys do to the selected images.
enum class BrowserCommand { ToggleFlag, RotateLeft, RotateRight };

/// What the input wants of the view, and what it needs to know of it.
class BrowserInputHost {
public:
    virtual ~BrowserInputHost() = default;
    /// The part of the sheet on show.
    [[nodiscard]] virtual QRectF visibleRect() const = 0;

    /// The selection has changed: tell the window, and redraw.
    virtual void selectDidChange() = 0;
    virtual void scrollIndexToVisible(const PBImageBrowserIndex& index) = 0;
    /// To the very start of the sheet, or its end.
    virtual void scrollToEnd(bool isStart) = 0;
    virtual void enterToLargeView(const PBImageBrowserIndex& index) = 0;
    /// The selected images leave by a drag; `index` is the one under the mouse.
    virtual void beginDragOut(const PBImageBrowserIndex& index) = 0;
    virtual void beginRename(const PBImageBrowserIndex& index) = 0;
    /// The rubber band, on the sheet; null hides it.
    virtual void showBand(const QRectF& band) = 0;
    /// Points a sixtieth of a second to scroll by while the mouse stays where it is; 0 stops.
    virtual void setSelectTimerScrollStep(int step) = 0;
    /// A mouse button goes down and up again; nothing may be swapped in between.
    virtual void setDragging(bool isDragging) = 0;
    virtual void perform(BrowserCommand command) = 0;
    /// A new size by a gesture.
    virtual void applyThumbnailSize(double size) = 0;
};

/// What mouse, keys and gestures mean: events in, intentions out. Points are on the sheet. Main
/// thread.
class BrowserInput {
public:
    /// All outlive this object.
    BrowserInput(
        BrowserLayout& layout, const BrowserLeafList& leaves, const BrowserTextWidths& textWidths,
        BrowserInputHost& host);

    void mouseDown(const QPointF& point, BrowserModifiers modifiers);
    void mouseDragged(const QPointF& point);
    /// `clickCount` is 2 for the end of a double click.
    void mouseUp(int clickCount);
    /// Takes what is under the mouse for a menu; answers whether that is an image.
    [[nodiscard]] bool rightMouseDown(const QPointF& point);
    /// The button was let go where nobody could hear it.
    void cancelDrag();
    /// Ends the rubber band and gives back what it has changed; false if there is none.
    bool cancelBand();
    [[nodiscard]] bool hasBand() const { return _hasBand; }

    /// False if the key means nothing here.
    bool keyDown(BrowserKey key, BrowserModifiers modifiers);
    /// Goes to the next image whose name begins so; a single letter goes on from the current one.
    void typeAhead(const QString& beginning);

    /// Two fingers on a touchpad: one turn or a zoom, whichever they clearly mean first. They
    /// always do a little of both.
    void beginGesture();
    void endGesture();
    /// Degrees since the last update; positive turns left. Comes before the zoom of its update.
    void rotate(double rotation);
    /// What the distance of the fingers has grown by since the last update, in parts of what it was
    /// when they began.
    void magnify(double magnification);

    /// So many turns of the wheel, or parts of one, make the thumbnails larger or smaller.
    void zoom(double turns);

    /// Makes the image the sole selection and shows it. Nothing for an index without an image.
    void gotoIndex(const PBImageBrowserIndex& index);
    /// Where a step of the menu leads; invalid if nowhere.
    [[nodiscard]] PBImageBrowserIndex stepIndex(BrowserStep step) const;
    /// The image that keys start from.
    [[nodiscard]] PBImageBrowserIndex currentIndex() const;

    [[nodiscard]] bool isDragging() const { return _isDragging; }
    [[nodiscard]] const std::shared_ptr<PBImageFileItem>& downImageFileItem() const {
        return _downImageFileItem;
    }
    /// A rename has begun: the keys have no current image until it is clicked again.
    void clearDownImageFileItem() { _downImageFileItem.reset(); }
    /// The image that keys start from; selection and sheet stay as they are.
    void setCurrent(const std::shared_ptr<PBImageFileItem>& item);
    /// Forgets every image.
    void reset();

private:
    void selectOnly(const std::shared_ptr<PBImageFileItem>& item);
    void setDragging(bool isDragging);
    void beginBand();
    void endBand();
    void updateBand(const QPointF& point);
    void updateAutoScroll(const QPointF& point);
    bool applyBand(const QRectF& band);
    [[nodiscard]] PBImageBrowserIndex keyTarget(BrowserKey key) const;
    [[nodiscard]] PBImageBrowserIndex pageStep(const PBImageBrowserIndex& from, bool isDown) const;
    void extendTo(const PBImageBrowserIndex& index);
    void turn(TwoFingerGesture::Turn turn);

    BrowserLayout& _layout;
    const BrowserLeafList& _leaves;
    const BrowserTextWidths& _textWidths;
    BrowserInputHost& _host;
    BrowserSelection _selection;

    QPointF _downPoint;
    BrowserModifiers _downModifiers;
    std::shared_ptr<PBImageFileItem> _downImageFileItem;
    std::shared_ptr<PBImageFileItem> _shiftFileItem;
    TwoFingerGesture _gesture;
    double _gestureThumbnailSize = 0; // when it began
    double _wheelThumbnailSize = 0;   // what turns of the wheel have led to, not rounded
    bool _isDragging = false;
    bool _hasBand = false;
    BrowserRange _bandRange; // images outside have the state that was stored
};
