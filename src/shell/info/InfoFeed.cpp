#include "shell/info/InfoFeed.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "fileactions/marks/EditRunner.h"
#include "library/PBAliasManager.h"
#include "places/PBGeoManager.h"
#include "platform/tasks/MainThread.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/InfoPane.h"
#include "shell/services/ChosenPhotographs.h"
#include "shell/services/ShellServices.h"
#include "ui/FlagFeedback.h"

#include <QTimerEvent>

#include <utility>

using fileactions::PhotographEdit;

namespace {

/// So many photographs are read again with every swap of trees, as they are while a scan runs;
/// more of them when it is over.
constexpr std::size_t mostReadAgain = 256;

std::vector<qint64> idsOf(const PBImageFileList& items) {
    std::vector<qint64> fileIds;
    fileIds.reserve(items.size());
    for (const auto& item : items)
        fileIds.push_back(item->fileId());
    return fileIds;
}

} // namespace

InfoFeed::InfoFeed(const ShellServices& services)
    : _services(services), _folderPaths(services.mainFileDb, services.aliasManager),
      _pane(new InfoPane(
          {.mainFileDb = services.mainFileDb,
           .folderPaths = _folderPaths,
           .userDefaults = services.userDefaults,
           .edits = *this})) {}

InfoFeed::~InfoFeed() = default;

void InfoFeed::connectWindow(const Parts& parts) {
    platform::assertMainThread();
    _parts = std::make_unique<const Parts>(parts);
    _rename = std::make_unique<RenameCommand>(RenameCommand::Parts{
        .edits = _services.edits,
        .browserPane = parts.browserPane,
        .window = parts.window,
        .typeAgain = [this](const std::shared_ptr<PBImageFileItem>& item, const QString& typed) {
            _pane->panel().renameAgain(item, typed);
        }});
    const PBImageBrowserView& view = parts.browserPane.browserView();
    connect(&view, &PBImageBrowserView::selectionDidChange, this, &InfoFeed::selectionDidChange);
    // The items of another tree may be other ones.
    connect(&view, &PBImageBrowserView::itemCountDidChange, this, &InfoFeed::selectionDidChange);
    connect(&_services.geoManager, &PBGeoManager::reverseGeoFinished, this, &InfoFeed::updateInfo);
    connect(&_pane->panel(), &InfoPanel::didComeOnShow, this, &InfoFeed::selectionDidChange);
    using fileactions::EditRunner;
    connect(
        &_services.edits, &EditRunner::didBegin, this, [this] { _pane->panel().setPaused(true); });
    connect(&_services.edits, &EditRunner::didEdit, this, &InfoFeed::didEdit);
    connect(&_services.edits, &EditRunner::didFail, this, &InfoFeed::updateInfo);
    // What nobody told of may have paused the panel, too.
    connect(&_services.edits, &EditRunner::didEnd, this, &InfoFeed::selectionDidChange);
    connect(&_services.edits, &EditRunner::didReadAgain, this, &InfoFeed::updateInfo);
}

void InfoFeed::selectionDidChange() {
    if (!_feedTimer.isActive()) _feedTimer.start(0, this);
}

void InfoFeed::updateInfo() {
    _isOutOfDate = true;
    selectionDidChange();
}

void InfoFeed::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _feedTimer.timerId()) return QObject::timerEvent(event);
    _feedTimer.stop();
    feed();
}

InfoSelection InfoFeed::selection() const {
    PBImageFileList chosen = _parts->chosen.all();
    if (_services.delegate.isLargeViewMode()) return {chosen, chosen};
    const BrowserSelection& selection = _parts->browserPane.browserView().selection();
    return {selection.selectedFileArray(FoldedLeaves::Excluded), std::move(chosen)};
}

void InfoFeed::feed() {
    // Taking a million photographs together for nobody takes a while, too.
    if (!_pane->panel().isOnShow()) return;
    _pane->panel().setPaused(_services.edits.pendingCount() > 0);
    InfoSelection wanted = selection();
    const bool isSame = wanted.shown == _fed.shown && wanted.edited == _fed.edited;
    if (isSame && !_isOutOfDate && wanted.shown.size() > mostReadAgain) return;
    _isOutOfDate = false;
    _fed = wanted;
    _pane->panel().setSelection(std::move(wanted));
}

void InfoFeed::didEdit(const fileactions::EditResult& result) {
    updateInfo();
    if (result.kind != fileactions::EditResult::Kind::Flag || result.changed.empty()) return;
    QWidget* browser = _parts->browserPane.view();
    QWidget* large = _largeView ? _largeView.data() : &_parts->window;
    FlagFeedback::showOver(browser->isVisible() ? *browser : *large, result.isFlagged);
}

void InfoFeed::toggleFlag(const PBImageFileList& items) {
    _services.edits.run({idsOf(items), PhotographEdit::ToggleFlag{}});
}

void InfoFeed::setStar(const PBImageFileList& items, int star) {
    _services.edits.run({idsOf(items), PhotographEdit::Rate{star}});
}

void InfoFeed::changeTags(const PBImageFileList& items, const TagsChange& change) {
    _services.edits.run({idsOf(items), PhotographEdit::ChangeTags{change.added, change.removed}});
}

void InfoFeed::rename(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) {
    _rename->finish(item, typedName);
}
