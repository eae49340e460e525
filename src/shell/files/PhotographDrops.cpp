#include "shell/files/PhotographDrops.h"

#include "platform/files/FileSystem.h"

#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QWidget>

#include <algorithm>
#include <utility>

PhotographDrops::PhotographDrops(QWidget& widget, Environment environment)
    : QObject(&widget), _environment(std::move(environment)) {
    widget.setAcceptDrops(true);
    widget.installEventFilter(this);
}

Qt::DropAction PhotographDrops::actionOf(const QDropEvent& event, const QByteArray& folder) const {
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    bool isMove =
        event.source() != nullptr && std::ranges::all_of(_folders, [&](const QByteArray& from) {
            return _environment.areOnOneDisk(from, folder);
        });
    if (modifiers.testFlag(Qt::ShiftModifier)) isMove = true;
    if (modifiers.testFlag(Qt::ControlModifier)) isMove = false;
    const auto wanted = isMove ? Qt::MoveAction : Qt::CopyAction;
    const auto other = isMove ? Qt::CopyAction : Qt::MoveAction;
    if (event.possibleActions().testFlag(wanted)) return wanted;
    // A copy may stand for a move that the other program does not want; never the reverse.
    return isMove && event.possibleActions().testFlag(other) ? other : Qt::IgnoreAction;
}

QString PhotographDrops::targetOf(QDropEvent& event, Qt::DropAction& action) const {
    const QString folder = _environment.folderAt(event.position().toPoint());
    if (folder.isEmpty()) return {};
    const QByteArray path = QFile::encodeName(folder);
    action = actionOf(event, path);
    const bool isThere =
        std::ranges::all_of(_folders, [&path](const QByteArray& from) { return from == path; });
    const bool doesNothing = action == Qt::IgnoreAction || (isThere && action == Qt::MoveAction);
    return doesNothing ? QString() : folder;
}

void PhotographDrops::over(QDropEvent& event) {
    auto action = Qt::IgnoreAction;
    const QString folder = targetOf(event, action);
    if (folder.isEmpty()) {
        _environment.mark(std::nullopt);
        event.setDropAction(Qt::IgnoreAction);
        event.ignore();
        return;
    }
    _environment.mark(event.position().toPoint());
    event.setDropAction(action);
    event.accept();
}

bool PhotographDrops::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter: {
        auto& drag = static_cast<QDragEnterEvent&>(*event);
        _photographs = _environment.photographsOf(*drag.mimeData());
        _folders.clear();
        for (const QByteArray& photograph : _photographs)
            _folders.insert(platform::folderOfPath(photograph));
        if (_photographs.empty()) return false;
        over(drag);
        // Who refuses here is never asked again, whatever row the drag comes to.
        drag.accept();
        return true;
    }
    case QEvent::DragMove:
        if (_photographs.empty()) return false;
        over(static_cast<QDragMoveEvent&>(*event));
        return true;
    case QEvent::DragLeave:
        if (_photographs.empty()) return false;
        end();
        return true;
    case QEvent::Drop: {
        if (_photographs.empty()) return false;
        auto& drop = static_cast<QDropEvent&>(*event);
        over(drop);
        auto action = Qt::IgnoreAction;
        const QString folder = targetOf(drop, action);
        const std::vector<QByteArray> photographs = std::exchange(_photographs, {});
        end();
        if (!folder.isEmpty()) _environment.transfer(folder, photographs, action == Qt::MoveAction);
        return true;
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

void PhotographDrops::end() {
    _photographs.clear();
    _folders.clear();
    _environment.mark(std::nullopt);
}
