#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QMimeData;
class QWidget;

/// Makes a widget take folders that are dragged onto it. Main thread.
class FolderDropTarget final : public QObject {
    Q_OBJECT

public:
    /// Whether a path is a folder that can be taken. Asked of a drag that comes from another
    /// program until there is one, and of all that is dropped.
    using Test = std::function<bool(const QString& path)>;

    /// Belongs to the widget.
    FolderDropTarget(QWidget& widget, Test isFolder);

Q_SIGNALS:
    /// A drag with folders came over the widget, or it left or was dropped.
    void draggingChanged(bool isOver);
    void dropped(const QStringList& folders);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool hasFolder(const QMimeData& data) const;
    [[nodiscard]] QStringList folders(const QMimeData& data) const;
    void endDragging();

    const Test _isFolder;
    bool _isTaking = false; ///< of the drag that is over the widget, something can be taken
};
