#include "ui/FolderDropTarget.h"

#include "support/Support.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

TEST(FolderDropTargetTest, onlyFoldersOfThisMachineAreTakenAndNeverMoved) {
    QWidget widget;
    const auto isFolder = [](const QString& path) { return path.startsWith(u"/dir"_s); };
    auto* target = new FolderDropTarget(widget, isFolder);
    QStringList told;
    QObject::connect(target, &FolderDropTarget::draggingChanged, target, [&](bool isOver) {
        told += isOver ? u"over"_s : u"out"_s;
    });
    QObject::connect(target, &FolderDropTarget::dropped, target, [&](const QStringList& folders) {
        told += folders.join(u',');
    });
    QMimeData data;
    const auto isTaken = [&](QDropEvent&& event) {
        QCoreApplication::sendEvent(&widget, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    };
    constexpr auto actions = Qt::CopyAction | Qt::MoveAction;
    const auto enter = [&](const QStringList& urls) {
        data.setUrls(QUrl::fromStringList(urls));
        return isTaken(QDragEnterEvent({5, 5}, actions, &data, Qt::LeftButton, {}));
    };
    const auto drop = [&] { return isTaken({{5, 5}, actions, &data, Qt::LeftButton, {}}); };
    EXPECT_FALSE(enter({u"file:///file"_s, u"https://host/dir"_s, u"file://elsewhere/dir"_s}));
    EXPECT_FALSE(enter({}) || drop());
    EXPECT_TRUE(
        enter({u"file:///dir 1"_s, u"file:///file"_s, u"file:///dir2"_s, u"file:///dir 1"_s}));
    EXPECT_TRUE(drop());
    EXPECT_TRUE(enter({u"file:///dir"_s}));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&widget, &leave);
    EXPECT_FALSE(drop());
    EXPECT_EQ(told.join(u' '), u"over out /dir 1,/dir2 over out");
    // Whoever drags a thousand files is not kept waiting by a thousand looks.
    QStringList many(32, u"file:///file"_s);
    many[31] = u"file:///dir"_s;
    EXPECT_TRUE(enter(many));
    many.prepend(u"file:///other"_s);
    EXPECT_FALSE(enter(many));
}
