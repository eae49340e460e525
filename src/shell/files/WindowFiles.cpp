#include "shell/files/WindowFiles.h"

#include "catalogue/PBCatalogue.h"
#include "group/PBGroupTreeDataSource.h"
#include "image/ThumbnailStore.h"
#include "platform/program/StandardFolders.h"
#include "platform/volumes/Volumes.h"
#include "shell/files/PhotographDrops.h"
#include "shell/groups/GroupMenus.h"
#include "shell/menus/MainMenu.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceSidebar.h"
#include "shell/toolbar/MainToolbar.h"
#include "shell/toolbar/ToolbarController.h"

#include <QColorSpace>
#include <QFile>
#include <QMainWindow>
#include <QMenu>

#include <algorithm>

using Command = MenuCommand;

namespace {

/// By the table of mounts alone: no disk is asked while somebody drags.
bool areOnOneDisk(const QByteArray& path, const QByteArray& other) {
    const platform::MountTable table = platform::Volumes().mountTable();
    const platform::Mount* one = table.mountOfPath(QFile::decodeName(path));
    const platform::Mount* two = table.mountOfPath(QFile::decodeName(other));
    return one && two && one->major == two->major && one->minor == two->minor;
}

} // namespace

WindowFiles::WindowFiles(const Parts& parts)
    : _parts(parts), _sheets(parts.window),
      _tasks(
          {.services = parts.services.files,
           .aliasManager = parts.services.aliasManager,
           .questions = _sheets,
           .window = parts.window,
           .thumbnail =
               [&thumbnails = parts.services.mainThumbDb](qint64 fileId) {
                   const auto item =
                       PBImageFileItem::imageFileItemWithId(fileId, 0, QString(), 0, 0);
                   return ThumbnailStore::loadThumbnail(
                       thumbnails, item->fileId(), true, QColorSpace());
               }}),
      _commands(
          {.imageImporterManager = parts.services.imageImporterManager,
           .groupTreeDataSource = parts.services.groupTreeDataSource,
           .services = parts.services.files,
           .folderPaths = parts.browserPane.folderPaths(),
           .tasks = _tasks,
           .questions = _sheets,
           .tagWithTagId = [&catalogue = parts.services.mainFileDb](
                               qint64 tagId) { return PBCatalogue(catalogue).tagWithTagId(tagId); },
           .chosen = parts.chosen,
           .selectedFolder =
               [&sidebar = parts.sourceSidebar] {
                   const auto folder = sidebar.tree().selectedFolder();
                   return folder ? folder->folderPath() : QString();
               }}),
      _exportDialogs(parts.window),
      _exports(
          {.imageImporterManager = parts.services.imageImporterManager,
           .folderPaths = parts.browserPane.folderPaths(),
           .tasks = _tasks,
           .questions = _sheets,
           .exportQuestions = _exportDialogs,
           .chosen = parts.chosen,
           .finished =
               [this](const fileactions::FileOutcome& outcome) {
                   _commands.took(outcome, u"UndoExportFile", u"UndoExportFiles");
               }}),
      _shares(
          {.imageImporterManager = parts.services.imageImporterManager,
           .folderPaths = parts.browserPane.folderPaths(),
           .mainFileDb = parts.services.mainFileDb,
           .tasks = _tasks,
           .window = parts.window,
           .chosen = parts.chosen,
           .sharingServicesForItems =
               [this](const QStringList& mimeTypes, const ShareServices::Found& found) {
                   _shareServices.find(mimeTypes, found);
               },
           .setDesktopImage =
               [this](const QString& path, auto answered) {
                   _shareServices.setDesktopImage(path, std::move(answered));
               },
           .cacheFolder =
               platform::StandardFolders::cacheFolder() + QStringLiteral("/SharingService"),
           .dataFolder = platform::StandardFolders::dataFolder()}) {
    connectMenus();
    connectShares();
    takeDrops();
    QObject::connect(
        &_commands, &FileCommands::didChangeFiles, &_commands,
        [this](const fileactions::FileEdit& inverse, const QString& text) {
            _parts.services.edits.didOther(text, wayOf(inverse));
        });
}

fileactions::OtherWay WindowFiles::wayOf(const fileactions::FileEdit& edit) {
    return {[this, edit](fileactions::OtherWay::Ended done) {
        _commands.perform(
            edit, [this, done = std::move(done)](const fileactions::FileOutcome& outcome) {
                using End = fileactions::OtherWay::End;
                const End end = outcome.isStillToDo         ? End::StillToDo
                                : outcome.inverse.isEmpty() ? End::Void
                                : outcome.rest.isEmpty()    ? End::Done
                                                            : End::Partly;
                done(end, wayOf(outcome.inverse), wayOf(outcome.rest));
            });
    }};
}

WindowFiles::~WindowFiles() = default;

void WindowFiles::connectMenus() {
    MainMenu& menu = _parts.menu;
    menu.connectCommand(Command::copyTo, [this] { _commands.doCopyMoveTo(false); });
    menu.connectCommand(Command::moveTo, [this] { _commands.doCopyMoveTo(true); });
    menu.connectCommand(Command::duplicate, [this] { _commands.doDuplicate(); });
    menu.connectCommand(Command::copy, [this] { _commands.copy(false); });
    menu.connectCommand(Command::cut, [this] { _commands.copy(true); });
    menu.connectCommand(Command::paste, [this] { _commands.doPaste(); });
    menu.connectCommand(Command::exportImage, [this] { _exports.exportImage(); });
    menu.connectCommand(Command::deleteClicked, [this] { _commands.deleteClicked(); });
    menu.connectCommand(Command::deleteForGood, [this] { _commands.deleteForGood(); });
    _parts.toolbarController.serve(
        *_parts.toolbar.deleteAction(), ToolbarValidation::Command::deleteClicked,
        [this] { _commands.deleteClicked(); });
    _parts.groupMenus.setDoGroupCopyMoveTo([this](GroupMenus::GroupTransfer transfer) {
        _commands.doGroupCopyMoveTo(transfer == GroupMenus::GroupTransfer::Move);
    });
}

/// From the toolbar, the menu opens under the button on show.
void WindowFiles::connectShares() {
    constexpr int gap = 6;
    MainMenu& menu = _parts.menu;
    menu.connectCommand(Command::setDesktop, [this] { _shares.setDesktop(); });
    menu.connectCommand(Command::shareClicked, [this] {
        const auto& buttons = _parts.toolbar.shareButtons();
        const auto shown = std::ranges::find_if(buttons, &QWidget::isVisible);
        const QWidget& sender = shown == buttons.end() ? _parts.window : **shown;
        const int y = shown == buttons.end() ? gap : sender.height() + gap;
        _shares.shareClicked(sender.mapToGlobal(QPoint(0, y)));
    });
    _parts.toolbarController.serve(
        *_parts.toolbar.shareAction(), ToolbarValidation::Command::shareClicked,
        [&menu] { menu.trigger(Command::shareClicked); });
    QMenu& share = menu.shareMenu();
    QObject::connect(
        &share, &QMenu::aboutToShow, &_shares, [this, &share] { _shares.menuNeedsUpdate(share); });
    QMenu& openWith = menu.openWithMenu();
    QObject::connect(&openWith, &QMenu::aboutToShow, &_shares, [this, &openWith] {
        _shares.openWithMenuNeedsUpdate(openWith);
    });
}

void WindowFiles::takeDrops() {
    SourceTreeController& tree = _parts.sourceSidebar.tree();
    auto* drops = new PhotographDrops(
        *_parts.sourceSidebar.view()->viewport(),
        {.folderAt =
             [&tree](const QPoint& position) {
                 const auto folder = tree.folderAt(position);
                 return folder ? folder->folderPath() : QString();
             },
         .mark =
             [&tree](const std::optional<QPoint>& position) {
                 tree.markDropTarget(position ? tree.folderAt(*position) : nullptr);
             },
         .photographsOf = [this](const QMimeData& data) { return _commands.photographsOf(data); },
         .areOnOneDisk = areOnOneDisk,
         .transfer =
             [this](const QString& folder, const std::vector<QByteArray>& paths, bool move) {
                 _commands.transferInto(folder, paths, move);
             }});
    drops->setObjectName(QStringLiteral("photographDrops"));
}
