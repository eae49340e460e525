#include "ui/FolderDropTarget.h"

#include "support/Support.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

namespace {

struct FolderDropTargetTest : testing::Test {
    FolderDropTargetTest() {
        QObject::connect(target, &FolderDropTarget::draggingChanged, target, [this](bool isOver) {
            told.append(isOver ? u"over"_s : u"out"_s);
        });
        QObject::connect(
            target, &FolderDropTarget::dropped, target,
            [this](const QStringList& folders) { told.append(folders.join(u',')); });
    }
    bool enter(const QList<QUrl>& urls) {
        data.setUrls(urls);
        QDragEnterEvent event(
            {5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    }
    bool drop() {
        QDropEvent event(
            QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    }

    QWidget widget;
    FolderDropTarget* target = new FolderDropTarget(
        widget, [](const QString& path) { return path.startsWith(u"/dir"_s); });
    QMimeData data;
    QStringList told;
};

TEST_F(FolderDropTargetTest, onlyFoldersOfThisMachineAreTakenAndNeverMoved) {
    const auto local = [](const char* path) {
        return QUrl::fromLocalFile(QString::fromLatin1(path));
    };
    EXPECT_FALSE(enter({local("/file"), QUrl(u"https://host/dir"_s)}));
    EXPECT_FALSE(enter({QUrl(u"file://elsewhere/dir"_s)}));
    EXPECT_FALSE(enter({}));
    EXPECT_FALSE(drop());
    EXPECT_TRUE(told.isEmpty());
    EXPECT_TRUE(enter({local("/dir 1"), local("/file"), local("/dir2"), local("/dir 1")}));
    EXPECT_TRUE(drop());
    EXPECT_EQ(told, (QStringList{u"over"_s, u"out"_s, u"/dir 1,/dir2"_s}));
    told.clear();
    EXPECT_TRUE(enter({local("/dir")}));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&widget, &leave);
    EXPECT_FALSE(drop());
    EXPECT_EQ(told, (QStringList{u"over"_s, u"out"_s}));
}

} // namespace
