#include "shell/session/WindowSession.h"

#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserView.h"
#include "catalogue/CatalogueIdentity.h"
#include "group/PBImageFileItem.h"
#include "library/OpenedRoots.h"
#include "platform/tasks/MainThread.h"
#include "shell/large/LargeView.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceTreeController.h"

#include <QTimerEvent>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

constexpr int writeDelay = 2000; // milliseconds: what a crash may cost
/// Of more than these photographs only ids are kept.
constexpr std::size_t mostPaths = 1000;
/// A photograph that was shown large in so many runs that crashed is not opened at the next start.
constexpr int mostCrashes = 2;

/// Fills in where the photographs of the browser lie.
class PathsOfPhotographs {
public:
    explicit PathsOfPhotographs(const BrowserPane& pane) : _pane(pane) {}
    void want(SessionState::Photograph& photograph) {
        if (photograph.fileId != 0) _wanted.emplace(photograph.fileId, &photograph);
    }
    void find() const {
        group::FolderPathCache folders;
        _pane.browserView().leaves().forEachImage(
            FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
                const auto [first, last] = _wanted.equal_range(item->fileId());
                for (auto it = first; it != last; ++it)
                    it->second->path = item->filePath(_pane.folderPaths(), folders);
            });
    }

private:
    const BrowserPane& _pane;
    std::unordered_multimap<qint64, SessionState::Photograph*> _wanted;
};

} // namespace

WindowSession::WindowSession(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts), _restore(parts, this) {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    const auto noteSoon = [this] {
        if (!_file.isEmpty()) _timer.start(writeDelay, this); // at rest: it takes a look at all
    };
    connect(&browser, &PBImageBrowserView::selectionDidChange, this, noteSoon);
    connect(&_parts.browserPane.scrollView(), &PBScrollView::didScroll, this, noteSoon);
    connect(&_parts.tree, &SourceTreeController::selectionDidChange, this, noteSoon);
    connect(&_parts.largeView, &LargeView::isShownDidChange, this, noteSoon);
    connect(&_restore, &SessionRestore::didEnd, this, noteSoon);
    connect(&_restore, &SessionRestore::didEnd, this, &WindowSession::didBringBack);
}

void WindowSession::begin(const QString& file, bool bringsBack) {
    platform::assertMainThread();
    _file = file;
    _isExpected = false;
    auto former = SessionState::read(file);
    if (former && bringsBack) {
        noteCrash(*former);
        _restore.begin(std::move(*former));
    } else if (former) {
        _lasting = std::move(*former);
    }
    // A photograph that ends the program as soon as it is opened counts, too.
    write(false);
    if (!isBringingBack()) Q_EMIT didBringBack();
}

void WindowSession::noteCrash(SessionState& former) {
    former.crashes = former.hasEnded || !former.isLargeView ? 0 : former.crashes + 1;
    former.hasEnded = false;
    if (former.crashes >= mostCrashes) {
        former.isLargeView = false;
        former.selected = {former.current}; // as after leaving it
        former.crashes = 0;
    }
    _suspect = former.current;
    _crashes = former.crashes;
}

void WindowSession::drop() {
    // What is shown until now may be what the next run is to bring back.
    if (_timer.isActive()) write(false);
    _restore.end();
}

void WindowSession::finish() {
    platform::assertMainThread();
    _timer.stop();
    write(true);
    _file.clear();
}

void WindowSession::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _timer.timerId()) return QObject::timerEvent(event);
    _timer.stop();
    write(false);
}

void WindowSession::write(bool hasEnded) {
    platform::assertMainThread();
    if (_file.isEmpty()) return;
    SessionState state = _restore.pending() ? *_restore.pending() : present();
    if (isForThisRun(state.folder)) {
        // The next run knows nothing of it, and goes on from before.
        state = _lasting;
    } else {
        state.hasEnded = true; // once something else is shown
        _lasting = state;
        state.hasEnded = hasEnded;
    }
    if (state == _written) return;
    // A folder that can't be written is told by the catalogue, which lies there, too.
    if (state.write(_file)) _written = std::move(state);
}

SessionState WindowSession::present() const {
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    SessionState state;
    const auto folder = _parts.tree.selectedFolder();
    if (!folder) return state;
    state.folder = folder->folderPath();
    state.catalogue =
        CatalogueIdentity::identityOf(_parts.services.mainFileDb).value_or(state.catalogue);
    const BrowserCarryOver::Noted noted = browser.noted();
    state.current.fileId = noted.currentId;
    state.anchor.fileId = noted.anchorId;
    state.anchorOffset = noted.anchorOffset;
    if (_parts.largeView.isShown()) {
        describeLargeView(state);
    } else {
        for (const qint64 id : noted.selectedIds)
            state.selected.push_back({id, {}});
    }
    PathsOfPhotographs paths(_parts.browserPane);
    if (state.selected.size() <= mostPaths)
        std::ranges::for_each(state.selected, [&](auto& one) { paths.want(one); });
    paths.want(state.current);
    paths.want(state.anchor);
    paths.find();
    return state;
}

bool WindowSession::isForThisRun(const QString& folder) const {
    if (folder.isEmpty()) return true;
    const auto root = _parts.services.aliasManager.findAliasObjectByPath(folder);
    return root && OpenedRoots::isOpened(*root);
}

void WindowSession::describeLargeView(SessionState& state) const {
    const PhotoBin& bin = _parts.largeView.controller().bin();
    state.isLargeView = true;
    if (const auto focus = bin.focusImageFileItem()) state.current.fileId = focus->fileId();
    state.isListSelected = !bin.groupItem() && bin.count() > 1;
    if (state.isListSelected) {
        for (const auto& item : bin.fileItemArray())
            state.selected.push_back({item->fileId(), {}});
    }
    state.crashes = state.current.fileId == _suspect.fileId ? _crashes : 0;
}
