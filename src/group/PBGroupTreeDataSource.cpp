#include "group/PBGroupTreeDataSource.h"

#include "group/ItemLookup.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <chrono>
#include <utility>

using group::GroupPublication;
using platform::MainLoop;

namespace {

constexpr std::string_view delayedName = "delayGroupItemArrayDidFinish";
constexpr std::string_view shownName = "tellShown";
/// For motions whose end nobody tells.
constexpr std::chrono::milliseconds patience{250};

using Clock = std::chrono::steady_clock;
/// After a swap the next one from a scan waits for so many times as long as that took, since the
/// window has to paint it, too: most of the time belongs to the user, and to the scan, which copies
/// a tree for each swap.
constexpr int restsForEachSwap = 4;
constexpr std::chrono::milliseconds leastRest{40};
constexpr std::chrono::milliseconds longestRest{200};

void expandRows(const PBGroupItem& item, group::GroupOutline& outline) {
    if (!item.isLeafNode() && item.data()->collapsed() == PBGroupItemData::NeverTouched)
        outline.expandItem(item.data());
    for (const auto& child : item.children())
        expandRows(*child, outline);
}

/// Groups that are not in the next tree have no node then.
void forgetNodes(const PBGroupItemArray& items) {
    for (const auto& item : items) {
        item->data()->forgetGroupItem(item.get());
        forgetNodes(item->children());
    }
}

} // namespace

PBGroupTreeDataSource::PBGroupTreeDataSource()
    : _mailbox(std::make_shared<group::PublicationMailbox>()),
      _self(std::make_shared<PBGroupTreeDataSource*>(this)) {}

PBGroupTreeDataSource::~PBGroupTreeDataSource() {
    cancelDelayedPublications();
    if (MainLoop* loop = MainLoop::instance())
        loop->cancelPreviousPerformRequestsWithTarget(_mailbox.get());
}

void PBGroupTreeDataSource::setGroupItemArray(PBGroupItemArray groupItemArray) {
    platform::assertMainThread();
    auto former = std::make_shared<const PBGroupItemArray>(
        std::exchange(_groupItemArray, std::move(groupItemArray)));
    forgetNodes(*former);
    discard(std::move(former));
}

void PBGroupTreeDataSource::setGroupItemArray_work(std::shared_ptr<PBGroupItemArray> work) {
    platform::assertMainThread();
    discard(std::exchange(_groupItemArray_work, std::move(work)));
    _whenShown.clear();
    // Of another folder the user has seen nothing yet.
    _restsUntil = {};
}

void PBGroupTreeDataSource::discard(std::shared_ptr<const void> trees) {
    if (!trees) return;
    _discarded.addOperation([trees = std::move(trees)]() mutable { trees.reset(); });
}

void PBGroupTreeDataSource::checkGroupItemArray() {
    platform::assertMainThread();
    for (const auto& item : _groupItemArray)
        item->updateDataGroupItem();
}

std::vector<PBGroupItem*> PBGroupTreeDataSource::leafGroupItemArray() const {
    return group::leavesOf(_groupItemArray);
}

void PBGroupTreeDataSource::groupItemArrayDidFinish(
    const std::shared_ptr<GroupPublication>& publication) {
    platform::assertMainThread();
    if (!publication->isOf(_groupItemArray_work)) {
        discard(publication);
        return;
    }
    // A publication that still waits is older than this one.
    if (_waiting && _waiting != publication)
        publication->updateScrollCapture |= _waiting->updateScrollCapture;
    cancelDelayedPublications();
    if (_display && _display->isScrollingOrDragging()) {
        delayGroupItemArrayDidFinish(publication);
    } else {
        const auto begin = Clock::now();
        swapIn(*publication);
        const auto end = Clock::now();
        _restsUntil = end + std::clamp<Clock::duration>(
                                restsForEachSwap * (end - begin), leastRest, longestRest);
        if (_didSwap) _didSwap();
    }
}

void PBGroupTreeDataSource::delayGroupItemArrayDidFinish(
    const std::shared_ptr<GroupPublication>& publication) {
    setWaiting(publication);
    showWaitingAfter(patience);
}

void PBGroupTreeDataSource::motionDidEnd() {
    platform::assertMainThread();
    // Not from within the end of the motion.
    if (_waiting) showWaitingAfter(std::chrono::milliseconds(0));
}

void PBGroupTreeDataSource::showWaitingAfter(std::chrono::milliseconds delay) {
    MainLoop* loop = MainLoop::instance();
    if (!loop) return;
    loop->cancelPreviousPerformRequestsWithTarget(this, delayedName);
    loop->performAfterDelay(this, delayedName, delay, [this] {
        const auto waiting = _waiting;
        setWaiting(nullptr);
        if (waiting) groupItemArrayDidFinish(waiting);
    });
}

void PBGroupTreeDataSource::cancelDelayedPublications() {
    platform::assertMainThread();
    if (_waiting) discard(_waiting);
    setWaiting(nullptr);
    MainLoop* loop = MainLoop::instance();
    if (!loop) return;
    loop->cancelPreviousPerformRequestsWithTarget(this);
    if (_whenShown.empty()) return;
    // Behind the one that takes its place now, if there is one.
    loop->performAfterDelay(
        _mailbox.get(), shownName, std::chrono::milliseconds(0), [this] { tellShown(); });
}

void PBGroupTreeDataSource::setWaiting(std::shared_ptr<GroupPublication> publication) {
    _waiting = std::move(publication);
    _mailbox->setHeldBack(_waiting != nullptr);
}

group::GroupPublisher PBGroupTreeDataSource::publisher() {
    return [self = std::weak_ptr(_self),
            mailbox = _mailbox](std::shared_ptr<GroupPublication> publication) {
        MainLoop* loop = MainLoop::instance();
        if (!loop || !mailbox->put(std::move(publication))) return;
        loop->post(MainLoop::Mode::Default, [self] {
            if (const auto source = self.lock()) (*source)->takePublished();
        });
    };
}

std::function<bool()> PBGroupTreeDataSource::waitsForDisplay() const {
    return [mailbox = _mailbox] { return mailbox->isWaiting(); };
}

/// Between two trees the user has his turn.
void PBGroupTreeDataSource::takePublished() {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(_restsUntil - Clock::now());
    MainLoop* loop = MainLoop::instance();
    if (loop && rest.count() > 0) {
        loop->performAfterDelay(_mailbox.get(), "takePublished", rest, [this] { takePublished(); });
        return;
    }
    while (const auto next = _mailbox->take()) {
        const bool isShown = next->isOf(_groupItemArray_work);
        groupItemArrayDidFinish(next);
        // One of a former scan takes nobody's time.
        if (isShown) return;
    }
    tellShown();
}

void PBGroupTreeDataSource::whenShown(
    std::shared_ptr<const PBGroupItemArray> workTree, std::function<void()> shown) {
    platform::assertMainThread();
    if (workTree != _groupItemArray_work) return discard(std::move(workTree));
    _whenShown.push_back(std::move(shown));
    tellShown();
}

void PBGroupTreeDataSource::tellShown() {
    if (isWaiting()) return;
    for (const auto& shown : std::exchange(_whenShown, {}))
        shown();
}

void PBGroupTreeDataSource::swapIn(GroupPublication& publication) {
    // The views hold nodes of the former tree until they are told of the new one.
    auto former = std::make_shared<const PBGroupItemArray>(
        std::exchange(_groupItemArray, std::move(publication.groupItemArray)));
    forgetNodes(*former);
    checkGroupItemArray();
    refreshViews();
    if (_display && publication.updateScrollCapture) _display->updateBrowserScrollCapture();
    discard(std::move(former));
}

PBImageFileList PBGroupTreeDataSource::removeItemsWithIds(std::unordered_set<qint64> fileIds) {
    platform::assertMainThread();
    PBImageFileList taken = group::removeItemsWithIds(_groupItemArray, fileIds);
    if (!taken.empty()) refreshViews();
    return taken;
}

void PBGroupTreeDataSource::refreshViews() {
    refreshOutline();
    if (!_display) return;
    _display->updateImageBrowserViewData();
    _display->updateLargeViewData();
    _display->updateImageBrowserTipView();
}

void PBGroupTreeDataSource::refreshOutline() {
    if (!_outline) return;
    std::optional<PBOutlineViewScrollCapture> capture;
    if (_isOutlineViewScrolled) capture = _outline->captureOutlineViewScroll();
    const auto selected = _outline->selectedItem();
    _outline->reloadData();
    expandItems();
    if (selected && selected->groupItem()) {
        const QScopedValueRollback ignoring(_ignoreSelectionChanged, true);
        _outline->selectItem(selected);
    }
    if (capture) _outline->scrollToScrollCapture(*capture);
}

void PBGroupTreeDataSource::expandItems() {
    platform::assertMainThread();
    if (!_outline) return;
    for (const auto& item : _groupItemArray)
        expandRows(*item, *_outline);
}
