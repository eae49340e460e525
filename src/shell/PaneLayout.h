#pragma once

#include <QObject>
#include <QString>

class PBSplitView;
class QWidget;

namespace platform {
class UserDefaults;
}

/// The panes of the main window: the sidebar (folders above groups) at the left, the browser in the
/// middle, the information panel at the right. Keeps their sizes in the settings.
class PaneLayout final : public QObject {
    Q_OBJECT

public:
    enum class Pane { SideBar, Folder, Group, Info };

    struct Contents {
        QWidget* source; ///< the folders
        QWidget* group;
        QWidget* thumbnail; ///< the browser and what belongs to it
        QWidget* info;
    };

    /// Takes the four widgets in. The settings outlive this object.
    PaneLayout(const Contents& contents, platform::UserDefaults& defaults, QObject* parent);

    /// The widget that holds all panes; the caller gives it a place.
    [[nodiscard]] QWidget* view() const;

    [[nodiscard]] bool isShown(Pane pane) const;
    /// Shows a hidden pane at its last size, hides a shown one.
    void toggle(Pane pane);

    /// Width of the sidebar in points; 0 while it is hidden.
    [[nodiscard]] int sideBarWidth() const;

    /// Sizes from the settings; call once the window has its size.
    void restorePositions();
    void savePositions();

Q_SIGNALS:
    /// A pane was shown, hidden or resized.
    void changed();

private:
    void save(PBSplitView* splitView, int size);
    [[nodiscard]] int stored(PBSplitView* splitView, int otherwise) const;
    void setLeftPanes(bool showFolder, bool showGroup);

    platform::UserDefaults& _defaults;
    PBSplitView* _baseSplitView;
    PBSplitView* _groupSplitView;
    PBSplitView* _thumbnailSplitView;
};
