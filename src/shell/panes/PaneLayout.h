#pragma once

#include <QObject>
#include <QString>

class PBSplitView;
class QWidget;

namespace platform {
class UserDefaults;
}

/// The panes of the main window: the sidebar (folders above groups) at the left, the browser in the
/// middle, the information panel at the right. Keeps in the settings how large they are and which
/// are hidden. Main thread.
class PaneLayout final : public QObject {
    Q_OBJECT

public:
    enum class Pane { SideBar, Folder, Group, Info };

    struct Contents {
        QWidget* source; ///< the folders
        QWidget* group;
        QWidget* thumbnail; ///< the browser and what belongs to it; gets the keys of a hidden pane
        QWidget* info;
    };

    /// Takes the four widgets in. The settings outlive this object.
    PaneLayout(const Contents& contents, platform::UserDefaults& defaults, QObject* parent);

    /// The widget that holds all panes; the caller gives it a place.
    [[nodiscard]] QWidget* view() const;

    [[nodiscard]] bool isShown(Pane pane) const;
    /// Shows a hidden pane at its last size, hides a shown one; both take a moment, and while a
    /// pane of the same split moves nothing happens.
    void toggle(Pane pane);
    [[nodiscard]] bool isAnimationRunning() const;
    /// Width of the sidebar in points; 0 while it is hidden.
    [[nodiscard]] int sideBarWidth() const;

    /// Sizes from the settings; call once the window has its size.
    void restorePositions();
    void savePositions();

Q_SIGNALS:
    /// A pane was shown, hidden or resized.
    void changed();

private:
    void toggleSideBar();
    void toggleInfo();
    /// Of the two panes of the sidebar, 0 the upper and 1 the lower one.
    void toggleLeftPane(int index);
    [[nodiscard]] int leftPanesPosition() const;
    void splitViewSavePosition(PBSplitView* splitView);
    void saveHiddenPanes();
    /// Tells the sidebar what to leave the others before it gives way, which the information pane
    /// does first.
    void keepRoom();
    /// What is out of sight takes no keys.
    void enablePanes();
    [[nodiscard]] int stored(PBSplitView* splitView, int otherwise) const;

    const Contents _contents;
    platform::UserDefaults& _defaults;
    PBSplitView* _baseSplitView;
    PBSplitView* _groupSplitView;
    PBSplitView* _thumbnailSplitView;
    bool _wasRestored = false;
};
