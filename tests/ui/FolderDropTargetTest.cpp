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
    // Nobody who drags many files by is kept waiting by a look at each; what is dropped comes
    // whole.
    told.clear();
    QStringList many(1000, u"file:///file"_s);
    many[499] = u"file:///dir"_s;
    for (int number = 500; number < 600; ++number)
        many[number] = u"file:///dir%1"_s.arg(number);
    EXPECT_TRUE(enter(many));
    EXPECT_TRUE(drop());
    EXPECT_EQ(told.join(u' ').count(u"/dir"_s), 101);
    many.prepend(u"file:///other"_s);
    EXPECT_FALSE(enter(many));
}
