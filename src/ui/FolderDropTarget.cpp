#include "ui/FolderDropTarget.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

/// Nobody adds more folders at once, and each look at a disk takes its time.
constexpr qsizetype mostPaths = 32;

} // namespace

FolderDropTarget::FolderDropTarget(QWidget& widget, Test isFolder)
    : QObject(&widget), _isFolder(std::move(isFolder)) {
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

QStringList FolderDropTarget::folders(const QMimeData& data) const {
    QStringList paths;
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls.first(std::min(urls.size(), mostPaths))) {
        // Lists of other programs may hold comment lines and places on the net.
        const QString path =
            url.isLocalFile() && url.host().isEmpty() ? url.toLocalFile() : QString();
        if (!path.isEmpty() && !paths.contains(path) && _isFolder(path)) paths.append(path);
    }
    return paths;
}

bool FolderDropTarget::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter: {
        auto& drag = static_cast<QDragEnterEvent&>(*event);
        // What is dragged from this program are photographs.
        _supportURLArray = drag.source() ? QStringList() : folders(*drag.mimeData());
        if (_supportURLArray.isEmpty()) {
            drag.ignore();
        } else {
            drag.setDropAction(Qt::CopyAction);
            drag.accept();
            Q_EMIT draggingChanged(true);
        }
        return true;
    }
    case QEvent::DragMove: {
        auto& drag = static_cast<QDragMoveEvent&>(*event);
        drag.setDropAction(Qt::CopyAction);
        drag.setAccepted(!_supportURLArray.isEmpty());
        return true;
    }
    case QEvent::DragLeave:
        endDragging();
        return true;
    case QEvent::Drop: {
        auto& drop = static_cast<QDropEvent&>(*event);
        const QStringList taken = _supportURLArray;
        endDragging();
        // The files stay where they are.
        drop.setDropAction(Qt::CopyAction);
        drop.setAccepted(!taken.isEmpty());
        if (!taken.isEmpty()) Q_EMIT dropped(taken);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

void FolderDropTarget::endDragging() {
    if (_supportURLArray.isEmpty()) return;
    _supportURLArray.clear();
    Q_EMIT draggingChanged(false);
}
