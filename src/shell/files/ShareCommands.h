#pragma once

#include "platform/desktop/Wallpaper.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/files/FileTasks.h"
#include "shell/files/ShareServices.h"

#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <limits>
#include <memory>
#include <vector>

class ChosenPhotographs;
class FMDatabase;
class PBImageImporterManager;
class QMenu;

namespace group {
class FolderPaths;
}

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
        /// What takes files of all these types; may answer more than once, the last one counts.
        std::function<void(const QStringList& mimeTypes, ShareServices::Found found)>
            sharingServicesForItems;
        std::function<void(
            const QString& path, std::function<void(platform::Wallpaper::Result)> answered)>
            setDesktopImage;
        QString cacheFolder; ///< for the copies of sharings
        QString dataFolder;  ///< for the copy that the desktop shows
    };
    /// Removes what sharings of more than a day ago have left, now and each hour. All that is named
    /// outlives this object.
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
    [[nodiscard]] std::vector<Photograph>
    photographs(std::size_t most = std::numeric_limits<std::size_t>::max()) const;
    [[nodiscard]] Photograph first() const;
    /// Those that are to be handed on as copies.
    void findTurned(std::vector<Photograph>& photographs) const;
    [[nodiscard]] QStringList chosenTypes() const;
    /// Once what takes the photographs is known; until then the menu says that it is looked for.
    void fill(QMenu& menu, bool withOriginals);
    void fillWith(QMenu& menu, const std::vector<ShareService>& services, bool withOriginals);
    void openOriginals(const ShareService& service);
    void shareService(const ShareService& service);
    void removeOld();
    /// Copies of those that need one; `made` is told of all paths, in their order, unless it came
    /// to nothing, when the folder goes.
    void convert(
        const std::vector<Photograph>& photographs, const QByteArray& folder,
        std::function<void(const QStringList& paths)> made);
    /// `folder` has the copies among them, which go if nobody takes them; may be empty.
    void
    perform(const ShareService& service, const QStringList& paths, const QByteArray& folder = {});
    void removeCopies(const QByteArray& folder);
    /// Of pictures for the desktop, which now shows the one in the folder, or none of them.
    void removeOtherCopies(const QString& folder);
    void tellWallpaper(platform::Wallpaper::Result result);

    const Environment _environment;
    int _requests = 0;
    QStringList _wallpapersInMaking; ///< folders
    QTimer _hourly;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _cleaning{QStringLiteral("share")};
};
