#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>

class FolderDropTarget;
class PBImageBrowserDragTipView;

/// The browser's parent: holds what the pane shows, one over the other, and takes folders that are
/// dropped there.
class PBImageBrowserContainerView final : public QWidget {
    Q_OBJECT

public:
    /// `isFolder` tells whether a dragged path can be added.
    explicit PBImageBrowserContainerView(
        std::function<bool(const QString& path)> isFolder, QWidget* parent = nullptr);

    /// Adds a widget that fills the pane, above those added before it.
    void addLayer(QWidget* widget);

Q_SIGNALS:
    void foldersDropped(const QStringList& folders);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    FolderDropTarget* _dropTarget;
    PBImageBrowserDragTipView* _dragTipView;
    std::vector<QWidget*> _layers; // children
};
