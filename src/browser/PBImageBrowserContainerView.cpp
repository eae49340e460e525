#include "browser/PBImageBrowserContainerView.h"

#include "browser/PBImageBrowserDragTipView.h"
#include "platform/tasks/MainThread.h"
#include "ui/FolderDropTarget.h"

#include <utility>

PBImageBrowserContainerView::PBImageBrowserContainerView(
    std::function<bool(const QString& path)> isFolder, QWidget* parent)
    : QWidget(parent), _dropTarget(new FolderDropTarget(*this, std::move(isFolder))),
      _dragTipView(new PBImageBrowserDragTipView(this)) {
    connect(_dropTarget, &FolderDropTarget::draggingChanged, this, [this](bool isOver) {
        _dragTipView->setVisible(isOver);
        _dragTipView->raise();
    });
    connect(
        _dropTarget, &FolderDropTarget::dropped, this,
        &PBImageBrowserContainerView::foldersDropped);
}

void PBImageBrowserContainerView::addLayer(QWidget* widget) {
    platform::assertMainThread();
    widget->setParent(this);
    widget->setGeometry(rect());
    _layers.push_back(widget);
    _dragTipView->raise();
}

void PBImageBrowserContainerView::resizeEvent(QResizeEvent*) {
    for (QWidget* layer : _layers)
        layer->setGeometry(rect());
    _dragTipView->setGeometry(rect());
}
