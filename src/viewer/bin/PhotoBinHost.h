#pragma once

#include <QPoint>
#include <QString>

#include <cstdint>
#include <memory>

class PBImageFileItem;
class QKeyEvent;

/// What the photo bin asks of the large view around it. Main thread.
class PhotoBinHost {
public:
    virtual ~PhotoBinHost() = default;
    /// Shows the photograph at the index of the bin's list; nothing for one outside of it.
    virtual void showImageAtIndex(std::int64_t index) = 0;
    /// Another photograph has the focus, or none.
    virtual void selectDidChange() = 0;
    /// Decodes what lies ahead in the direction of the last move.
    virtual void tryPreloadNextOrPrevImage() = 0;
    /// The focus goes from this photograph to another one.
    virtual void focusDidLeave(PBImageFileItem& item) = 0;
    /// The photograph that is shown came again as another item; its file may be another, too.
    virtual void focusWasReplaced(
        const std::shared_ptr<PBImageFileItem>& former,
        const std::shared_ptr<PBImageFileItem>& item) = 0;
    /// The list was read anew: buttons, label and title follow.
    virtual void listDidReload() = 0;
    /// There is something to show after all.
    virtual void stopProgress() = 0;
    /// A key that came to the strip, which means the same on the picture.
    virtual void keyDown(QKeyEvent& event) = 0;
    virtual void popUpContextMenu(const QPoint& globalPosition) = 0;
    /// A slideshow covers the window: the strip need not be painted.
    [[nodiscard]] virtual bool isSlideShowMode() const = 0;
    /// Empty where it is not known.
    [[nodiscard]] virtual QString filePath(const PBImageFileItem& item) const = 0;
};
