#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <set>
#include <vector>

class QDropEvent;
class QMimeData;
class QPoint;
class QWidget;

/// Lets the folders of the sidebar take photographs that are dropped on them. With Shift, or by
/// itself within one disk and this program, a drop moves, with Control it copies, as in file
/// managers. Drags without photographs go on to whoever else is there. Main thread.
class PhotographDrops final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        /// The absolute path of the folder whose row is there; empty: none.
        std::function<QString(const QPoint& position)> folderAt;
        /// Marks that row; nothing marks none.
        std::function<void(const std::optional<QPoint>& position)> mark;
        std::function<std::vector<QByteArray>(const QMimeData& data)> photographsOf;
        /// Without asking a disk.
        std::function<bool(const QByteArray& path, const QByteArray& other)> areOnOneDisk;
        std::function<void(const QString& folder, const std::vector<QByteArray>& paths, bool move)>
            transfer;
    };
    /// Belongs to the widget, which the rows are drawn on; comes before what was there.
    PhotographDrops(QWidget& widget, Environment environment);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] Qt::DropAction actionOf(const QDropEvent& event, const QByteArray& folder) const;
    /// Nothing where the drop would do nothing, or where there is no folder.
    [[nodiscard]] QString targetOf(QDropEvent& event, Qt::DropAction& action) const;
    void over(QDropEvent& event);
    void end();

    const Environment _environment;
    std::vector<QByteArray> _photographs; ///< of the drag that is over the widget
    std::set<QByteArray> _folders;        ///< theirs: few, of thousands of photographs
};
