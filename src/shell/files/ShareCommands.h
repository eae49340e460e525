#pragma once

#include "fileactions/FileEdit.h"
#include "platform/desktop/Wallpaper.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/files/FileTasks.h"

#include <QIcon>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class ChosenPhotographs;
class FMDatabase;
class PBImageImporterManager;
class QMenu;

namespace group {
class FolderPaths;
}

/// Something that takes files from the program.
struct ShareService {
    QString title;
    QIcon image;
    /// Hands the files over; calls back with whether somebody took them.
    std::function<void(const QStringList& paths, std::function<void(bool isTaken)> done)>
        performWithItems;
    /// A program of the desktop, which can also open the originals.
    bool isProgram = false;
};

/// What the desktop has for files of these types. Main thread.
using FindShareServices = std::function<std::vector<ShareService>(const QStringList& mimeTypes)>;
[[nodiscard]] std::vector<ShareService> desktopShareServices(const QStringList& mimeTypes);

/// Hands the chosen photographs to other programs, and one to the desktop as its picture. Those
/// that are turned go as upright copies. Main thread.
class ShareCommands final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        PBImageImporterManager& imageImporterManager;
        const group::FolderPaths& folderPaths;
        FMDatabase& mainFileDb;
        FileTasks& tasks;
        QWidget& window;
        const ChosenPhotographs& chosen;
        FindShareServices sharingServicesForItems = desktopShareServices;
        std::function<void(
            const QString& path, std::function<void(platform::Wallpaper::Result)> answered)>
            setWallpaper = [](const QString& path, auto answered) {
                platform::Wallpaper::set(path, std::move(answered));
            };
        QString cacheFolder; ///< for the copies of sharings
        QString dataFolder;  ///< for the copy that the desktop shows
    };
    /// Removes what sharings of more than a day ago have left. All that is named outlives this
    /// object.
    explicit ShareCommands(Environment environment);

    /// Fills the menu with what takes the chosen photographs.
    void menuNeedsUpdate(QMenu& menu);
    /// Programs only, for the photographs as they are.
    void openWithMenuNeedsUpdate(QMenu& menu);
    /// Shows the menu of services at a place of the screen.
    void shareClicked(const QPoint& globalPosition);
    void setDesktop();

private:
    struct Photograph {
        QByteArray path;
        double angle = 0;
        qint64 fileId = 0;
        bool needsCopy = false;
    };
    [[nodiscard]] std::vector<Photograph> photographs() const;
    [[nodiscard]] Photograph first() const;
    [[nodiscard]] bool isTurned(qint64 fileId, double angle) const;
    [[nodiscard]] std::vector<ShareService> services() const;
    void shareService(const ShareService& service);
    /// Copies of those that need one; `made` is told of all paths, in their order, unless it came
    /// to nothing, when the folder goes.
    void convert(
        const std::vector<Photograph>& photographs, const QByteArray& folder,
        std::function<void(const QStringList& paths)> made);
    void perform(const ShareService& service, const QStringList& paths);
    /// Of pictures for the desktop.
    void removeOtherCopies(const QString& folder);
    void tellWallpaper(platform::Wallpaper::Result result);

    const Environment _environment;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _cleaning{QStringLiteral("share")};
};
