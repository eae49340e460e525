#pragma once

#include <QObject>

class PBSplitView;
class QWidget;

namespace platform {
class UserDefaults;
}

/// The panes of the large view: the picture with the strip below it, the information panel at the
/// right, and at the left a pane for editing, which is closed. Keeps in the settings how large they
/// are and which are hidden. Main thread.
class ImageViewPanes final : public QObject {
    Q_OBJECT

public:
    enum class Pane { PhotoBin, Info };

    struct Contents {
        QWidget* edit;
        QWidget* image; ///< gets the keys of a hidden pane
        QWidget* thumbnails;
        QWidget* info;
    };

    /// Takes the four widgets in. The settings outlive this object.
    ImageViewPanes(const Contents& contents, platform::UserDefaults& defaults, QObject* parent);

    /// The widget that holds all panes; the caller gives it a place.
    [[nodiscard]] QWidget* view() const;

    [[nodiscard]] bool isShown(Pane pane) const;
    /// Shows a hidden pane at its last size, hides a shown one; both take a moment, and while the
    /// pane moves nothing happens.
    void toggle(Pane pane);
    [[nodiscard]] bool isAnimationRunning() const;

    /// Sizes from the settings; once the view has its size.
    void restorePositions();
    void splitViewSavePosition();

Q_SIGNALS:
    /// A pane was shown, hidden or resized.
    void changed();

private:
    struct Split {
        PBSplitView* view;
        Pane pane;
        int firstSize; ///< in a window that was never arranged
        int smallest;
        int largest;
    };
    [[nodiscard]] const Split& splitOf(Pane pane) const;
    [[nodiscard]] int stored(const Split& split) const;
    void save(const Split& split);
    void saveHiddenPanes();
    void enablePanes();

    const Contents _contents;
    platform::UserDefaults& _defaults;
    PBSplitView* _editSplitView;
    PBSplitView* _imageInfoSplitView;
    PBSplitView* _imageThumbSplitView;
    const Split _splits[2];
    bool _wasRestored = false;
};
