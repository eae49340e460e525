#pragma once

#include <QPoint>
#include <QString>
#include <QStringList>

#include <memory>

class PBImageFileItem;

/// What the large view asks of the window and the program. Main thread.
class LargeViewHost {
public:
    virtual ~LargeViewHost() = default;

    /// Another photograph is shown, or none: the browser's selection follows.
    virtual void selectDidChange(const std::shared_ptr<PBImageFileItem>& focus) = 0;
    /// Empty texts without a photograph.
    virtual void updateWindowTitle(const QString& title, const QString& representedFile) = 0;
    /// What can be zoomed, stepped to and marked may be other than before.
    virtual void revalidateToolbar() = 0;

    // Commands on the photograph that is shown.
    virtual void rotateLeft() = 0;
    virtual void rotateRight() = 0;
    virtual void toggleFlag() = 0;
    virtual void leaveLargeView() = 0;
    virtual void showContextMenu(const QPoint& globalPosition) = 0;

    [[nodiscard]] virtual bool canOpenPath(const QString& path) const = 0;
    virtual void openDroppedPaths(const QStringList& paths) = 0;
    [[nodiscard]] virtual bool isSlideShowMode() const = 0;
};
