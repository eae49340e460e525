#include "shell/files/ShareCommands.h"

#include "codec/PBImageImporterManager.h"
#include "fileactions/export/PictureExport.h"
#include "fileactions/share/ShareCopies.h"
#include "group/MetadataRows.h"
#include "group/PBGroupItem.h"
#include "platform/files/PathNames.h"
#include "platform/files/TypeIdentifiers.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/ChosenPhotographs.h"
#include "ui/MenuTracking.h"
#include "ui/WindowAlert.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMenu>
#include <QPointer>

#include <chrono>
#include <utility>

namespace copies = fileactions::ShareCopies;
using platform::localizedFormat;
using platform::localizedString;
using platform::Wallpaper::Result;

namespace {

/// How many photographs are looked at to find the services; more make no difference.
constexpr std::size_t mostAsked = 51;
/// Number of the last look for what a menu is to show.
constexpr char requestProperty[] = "request";
/// Within the data folder.
const QString wallpapers = QStringLiteral("/Wallpaper");

QString typeOf(const QByteArray& path) {
    return platform::TypeIdentifiers::forExtension(QFileInfo(QFile::decodeName(path)).suffix());
}

/// Every desktop shows these.
bool isShownByDesktops(const QByteArray& path) {
    const QString type = typeOf(path);
    return type == QStringLiteral("public.jpeg") || type == QStringLiteral("public.png");
}

void addNotice(QMenu& menu, QStringView key) {
    menu.addAction(localizedString(key))->setEnabled(false);
}

/// A name may have the sign that marks letters of a menu.
QString menuText(QString name) {
    return name.replace(u'&', QStringLiteral("&&"));
}

} // namespace

ShareCommands::ShareCommands(Environment environment) : _environment(std::move(environment)) {
    removeOld();
    _hourly.setInterval(std::chrono::hours(1));
    connect(&_hourly, &QTimer::timeout, this, &ShareCommands::removeOld);
    _hourly.start();
}

void ShareCommands::removeOld() {
    _cleaning.addOperation([folder = _environment.cacheFolder] {
        copies::removeOld(folder, QDateTime::currentMSecsSinceEpoch());
    });
}

/// The stored orientation is another program's word on how to turn the file.
void ShareCommands::findTurned(std::vector<Photograph>& photographs) const {
    group::MetadataRows rows({{QStringLiteral("Tiff"), {QStringLiteral("Orientation")}}});
    std::vector<qint64> fileIds;
    for (const Photograph& photograph : photographs)
        fileIds.push_back(photograph.fileId);
    rows.willRead(std::move(fileIds));
    for (Photograph& photograph : photographs) {
        rows.read(photograph.fileId, _environment.mainFileDb);
        const auto row = rows.row(0);
        photograph.needsCopy =
            copies::needsCopy(photograph.angle, row.empty() ? 0 : row.front().toInteger());
    }
}

std::vector<ShareCommands::Photograph> ShareCommands::photographs(std::size_t most) const {
    std::vector<Photograph> photographs;
    group::FolderPathCache cache;
    for (const auto& item : _environment.chosen.all()) {
        if (photographs.size() == most) break;
        const QString path = item->filePath(_environment.folderPaths, cache);
        if (!path.isEmpty())
            photographs.push_back(
                {QFile::encodeName(path), item->rotateAngle(), item->fileId(), false});
    }
    return photographs;
}

ShareCommands::Photograph ShareCommands::first() const {
    const auto item = _environment.chosen.first();
    if (!item) return {};
    group::FolderPathCache cache;
    return {
        QFile::encodeName(item->filePath(_environment.folderPaths, cache)), item->rotateAngle(),
        item->fileId(), false};
}

QStringList ShareCommands::chosenTypes() const {
    QStringList types;
    for (const Photograph& photograph : photographs(mostAsked))
        types.append(platform::TypeIdentifiers::mimeType(typeOf(photograph.path)));
    types.removeDuplicates();
    return types;
}

void ShareCommands::menuNeedsUpdate(QMenu& menu) {
    fill(menu, false);
}

void ShareCommands::openWithMenuNeedsUpdate(QMenu& menu) {
    fill(menu, true);
}

void ShareCommands::fill(QMenu& menu, bool withOriginals) {
    platform::assertMainThread();
    menu.clear();
    const int request = ++_requests;
    menu.setProperty(requestProperty, request);
    if (!_environment.chosen.first()) {
        addNotice(menu, u"No Photo Selected");
        return;
    }
    addNotice(menu, u"LookingForPrograms");
    _environment.sharingServicesForItems(
        chosenTypes(), [this, alive = std::weak_ptr(_alive), request, withOriginals,
                        shown = QPointer(&menu)](const std::vector<ShareService>& services) {
            if (alive.expired() || !shown || shown->property(requestProperty) != request) return;
            fillWith(*shown, services, withOriginals);
        });
}

void ShareCommands::fillWith(
    QMenu& menu, const std::vector<ShareService>& services, bool withOriginals) {
    menu.clear();
    for (const ShareService& service : services) {
        if (withOriginals && !service.isProgram) continue;
        QAction* entry = menu.addAction(service.image, menuText(service.title));
        connect(entry, &QAction::triggered, this, [this, service, withOriginals] {
            if (withOriginals) {
                openOriginals(service);
            } else {
                shareService(service);
            }
        });
    }
    if (menu.isEmpty()) addNotice(menu, withOriginals ? u"NoProgramForFiles" : u"RequireSystem");
}

void ShareCommands::openOriginals(const ShareService& service) {
    QStringList paths;
    for (const Photograph& photograph : photographs())
        paths.append(QFile::decodeName(photograph.path));
    if (!paths.isEmpty()) perform(service, paths);
}

void ShareCommands::shareClicked(const QPoint& globalPosition) {
    platform::assertMainThread();
    auto* menu = new QMenu(localizedString(u"Share"), &_environment.window);
    menu->setObjectName(QStringLiteral("shareMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menuNeedsUpdate(*menu);
    keepContentsWhileShown(*menu);
    menu->popup(globalPosition);
}

void ShareCommands::shareService(const ShareService& service) {
    std::vector<Photograph> chosen = photographs();
    bool needsCopies = false;
    QStringList paths;
    findTurned(chosen);
    for (const Photograph& photograph : chosen) {
        needsCopies = needsCopies || photograph.needsCopy;
        paths.append(QFile::decodeName(photograph.path));
    }
    if (chosen.empty()) return;
    if (!needsCopies) {
        perform(service, paths);
        return;
    }
    const QByteArray folder = copies::makeFolder(_environment.cacheFolder);
    if (folder.isEmpty()) {
        showWindowAlert(
            _environment.window,
            localizedFormat(u"Convert File Failed", {QFileInfo(paths.constFirst()).fileName()}));
        return;
    }
    convert(chosen, folder, [this, service, folder](const QStringList& made) {
        perform(service, made, folder);
    });
}

void ShareCommands::convert(
    const std::vector<Photograph>& photographs, const QByteArray& folder,
    std::function<void(const QStringList& paths)> made) {
    std::vector<QByteArray> sources;
    for (const Photograph& photograph : photographs)
        if (photograph.needsCopy) sources.push_back(photograph.path);
    const std::vector<copies::Place> places = copies::placesOfCopies(sources, folder);
    fileactions::TransferPlan plan;
    plan.endsAtFailure = true;
    std::size_t next = 0;
    QStringList paths;
    QByteArray madeFolder = folder;
    for (const Photograph& photograph : photographs) {
        paths.append(QFile::decodeName(photograph.path));
        if (!photograph.needsCopy) continue;
        const copies::Place& place = places[next++];
        paths.last() = QFile::decodeName(platform::pathInFolder(place.folder, place.name));
        if (place.folder != madeFolder && place.folder != folder) plan.addFolder(place.folder);
        madeFolder = place.folder;
        plan.addFile(
            {.source = photograph.path,
             .folder = place.folder,
             .name = place.name,
             .fileId = photograph.fileId,
             .make =
                 [&importers = _environment.imageImporterManager,
                  photograph](const std::stop_token& stop, QByteArray& content) {
                     fileactions::ExportedPicture picture = fileactions::exportPicture(
                         importers, QFile::decodeName(photograph.path), photograph.angle,
                         {.type = QStringLiteral("public.jpeg"), .quality = 0.8}, stop);
                     content = std::move(picture.content);
                     return picture.error;
                 },
             .isCounted = copies::needsCopy(photograph.angle, 0)});
    }
    _environment.tasks.start(
        {.counterKey = QStringLiteral("PreparingShareFile"),
         .deed = FileQuestions::Deed::Share,
         .work = [plan](const fileactions::FileEditor& editor) { return editor.transfer(plan); },
         .finished =
             [this, folder, paths, count = sources.size(),
              made = std::move(made)](const fileactions::FileOutcome& outcome) {
                 if (!outcome.isCancelled && outcome.made.size() == count) {
                     made(paths);
                 } else {
                     removeCopies(folder);
                 }
             }});
}

void ShareCommands::perform(
    const ShareService& service, const QStringList& paths, const QByteArray& folder) {
    service.performWithItems(
        paths, [this, alive = std::weak_ptr(_alive), title = service.title, folder](bool isTaken) {
            if (alive.expired() || isTaken) return;
            if (!folder.isEmpty()) removeCopies(folder);
            showWindowAlert(_environment.window, localizedFormat(u"CantShare", {title}));
        });
}

void ShareCommands::setDesktop() {
    platform::assertMainThread();
    std::vector<Photograph> chosen{first()};
    Photograph& photograph = chosen.front();
    if (photograph.path.isEmpty()) return;
    const auto set = [this](const QString& path, const QString& folder) {
        _environment.setDesktopImage(
            path, [this, folder, alive = std::weak_ptr(_alive)](Result result) {
                if (alive.expired()) return;
                _wallpapersInMaking.removeAll(folder);
                // Until now the desktop may have shown the copy before.
                if (result == Result::Done) {
                    removeOtherCopies(folder);
                } else if (!folder.isEmpty()) {
                    removeCopies(QFile::encodeName(folder));
                }
                tellWallpaper(result);
            });
    };
    findTurned(chosen);
    if (!isShownByDesktops(photograph.path)) photograph.needsCopy = true;
    if (!photograph.needsCopy) {
        set(QFile::decodeName(photograph.path), {});
        return;
    }
    // A new name each time: desktops keep what they have read by its name.
    const QString base = _environment.dataFolder + wallpapers;
    const QByteArray folder = copies::makeFolder(base);
    if (folder.isEmpty()) {
        tellWallpaper(Result::Failed);
        return;
    }
    _wallpapersInMaking.append(QFile::decodeName(folder));
    convert(chosen, folder, [set, folder](const QStringList& paths) {
        set(paths.constFirst(), QFile::decodeName(folder));
    });
}

void ShareCommands::removeCopies(const QByteArray& folder) {
    _cleaning.addOperation([folder] { copies::removeFolder(folder); });
}

/// Looked for at once: what is made from now on stays.
void ShareCommands::removeOtherCopies(const QString& folder) {
    const auto others = QDir(_environment.dataFolder + wallpapers)
                            .entryInfoList(QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QFileInfo& other : others) {
        const QString path = other.filePath();
        if (path != folder && !_wallpapersInMaking.contains(path))
            removeCopies(QFile::encodeName(path));
    }
}

void ShareCommands::tellWallpaper(Result result) {
    if (result == Result::Done || result == Result::Cancelled) return;
    showWindowAlert(
        _environment.window, localizedString(u"CantSetDesktop"),
        result == Result::Nobody ? localizedString(u"CantSetDesktopNobody") : QString());
}
