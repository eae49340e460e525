#include "ui/FolderDropTarget.h"

#include <QDropEvent>
#include <QMimeData>
#include <QSet>
#include <QUrl>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace {

/// Of a drag that only comes by nobody waits for more: each look at a disk takes its time.
constexpr qsizetype mostLooks = 500;

/// Empty for what is no path of this machine: lists of other programs may hold comment lines and
/// places on the net.
QString pathOf(const QUrl& url) {
    return url.isLocalFile() && url.host().isEmpty() ? url.toLocalFile() : QString();
}

} // namespace

FolderDropTarget::FolderDropTarget(QWidget& widget, Test isFolder)
    : QObject(&widget), _isFolder(std::move(isFolder)) {
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

bool FolderDropTarget::hasFolder(const QMimeData& data) const {
    const QList<QUrl> urls = data.urls();
    return std::ranges::any_of(
        urls.first(std::min(urls.size(), mostLooks)), [this](const QUrl& url) {
            const QString path = pathOf(url);
            return !path.isEmpty() && _isFolder(path);
        });
}

QStringList FolderDropTarget::folders(const QMimeData& data) const {
    QStringList paths;
    QSet<QString> known;
    for (const QUrl& url : data.urls()) {
        const QString path = pathOf(url);
        if (path.isEmpty() || known.contains(path)) continue;
        known.insert(path);
        if (_isFolder(path)) paths.append(path);
    }
    return paths;
}

bool FolderDropTarget::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter: {
        auto& drag = static_cast<QDragEnterEvent&>(*event);
        // What is dragged from this program are photographs.
        _isTaking = !drag.source() && hasFolder(*drag.mimeData());
        if (_isTaking) {
            drag.setDropAction(Qt::CopyAction);
            drag.accept();
            Q_EMIT draggingChanged(true);
        } else {
            drag.ignore();
        }
        return true;
    }
    case QEvent::DragMove: {
        auto& drag = static_cast<QDragMoveEvent&>(*event);
        drag.setDropAction(Qt::CopyAction);
        drag.setAccepted(_isTaking);
        return true;
    }
    case QEvent::DragLeave:
        endDragging();
        return true;
    case QEvent::Drop: {
        auto& drop = static_cast<QDropEvent&>(*event);
        const QStringList taken = _isTaking ? folders(*drop.mimeData()) : QStringList();
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
    if (!std::exchange(_isTaking, false)) return;
    Q_EMIT draggingChanged(false);
}
