#pragma once

#include "group/GroupPublication.h"
#include "group/GroupTreeViews.h"
#include "group/PBGroupItem.h"
#include "group/PublicationMailbox.h"
#include "platform/tasks/OperationQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

/// Holds the two trees: the live tree, which the views show, and the identity of the work tree,
/// which belongs to the scan thread and of which nothing else is looked at here. Takes the copies
/// that scans publish and puts them in the live tree's place when the user is not in the middle of
/// something. Main thread only, but for the publisher.
class PBGroupTreeDataSource {
public:
    PBGroupTreeDataSource();
    ~PBGroupTreeDataSource();
    PBGroupTreeDataSource(const PBGroupTreeDataSource&) = delete;
    PBGroupTreeDataSource& operator=(const PBGroupTreeDataSource&) = delete;

    /// The views outlive this object or are taken away by nullptr. Without them trees are swapped
    /// all the same.
    void setOutline(group::GroupOutline* outline) { _outline = outline; }
    void setDisplay(group::GroupTreeDisplay* display) { _display = display; }
    /// Called after each swap.
    void setDidSwap(std::function<void()> didSwap) { _didSwap = std::move(didSwap); }

    [[nodiscard]] const PBGroupItemArray& groupItemArray() const { return _groupItemArray; }
    /// The views must not look at nodes of the former tree any more: they go in the background.
    void setGroupItemArray(PBGroupItemArray groupItemArray);
    [[nodiscard]] const std::shared_ptr<PBGroupItemArray>& groupItemArray_work() const {
        return _groupItemArray_work;
    }
    void setGroupItemArray_work(std::shared_ptr<PBGroupItemArray> work);

    /// Takes images out of the live tree, and out of the views, at once; the work tree follows by
    /// itself. Answers those that were there.
    PBImageFileList removeItemsWithIds(std::unordered_set<qint64> fileIds);

    /// Makes the nodes of the live tree those that their data name.
    void checkGroupItemArray();
    /// All leaves of the live tree, in tree order; valid until the tree is replaced.
    [[nodiscard]] std::vector<PBGroupItem*> leafGroupItemArray() const;

    /// Takes a publication. One of a work tree that is no longer the current one is dropped. While
    /// the user scrolls or drags, the latest one waits.
    void groupItemArrayDidFinish(const std::shared_ptr<group::GroupPublication>& publication);
    /// The user has come to rest: what waits is shown.
    void motionDidEnd();
    /// Drops what waits.
    void cancelDelayedPublications();
    /// For other threads: brings a publication to `groupItemArrayDidFinish` in default mode, in
    /// order. May be called when this object is gone.
    [[nodiscard]] group::GroupPublisher publisher();
    /// What was published last is not on show yet.
    [[nodiscard]] bool isWaiting() const { return _mailbox->isWaiting(); }
    /// The same for other threads. May be called when this object is gone.
    [[nodiscard]] std::function<bool()> waitsForDisplay() const;
    /// Calls when all that was published of this work tree is on show, which may be at once; never
    /// when another work tree has taken its place.
    void whenShown(std::shared_ptr<const PBGroupItemArray> workTree, std::function<void()> shown);

    /// Opens the rows of the live tree that the user never closed.
    void expandItems();

    /// Selections made by this object itself must not move the browser.
    [[nodiscard]] bool ignoreSelectionChanged() const { return _ignoreSelectionChanged; }
    void setIgnoreSelectionChanged(bool ignore) { _ignoreSelectionChanged = ignore; }
    /// The user has scrolled the outline, so that its position is worth keeping.
    [[nodiscard]] bool isOutlineViewScrolled() const { return _isOutlineViewScrolled; }
    void setIsOutlineViewScrolled(bool isScrolled) { _isOutlineViewScrolled = isScrolled; }

private:
    void delayGroupItemArrayDidFinish(const std::shared_ptr<group::GroupPublication>& publication);
    void showWaitingAfter(std::chrono::milliseconds delay);
    void setWaiting(std::shared_ptr<group::GroupPublication> publication);
    void takePublished();
    void tellShown();
    void swapIn(group::GroupPublication& publication);
    void refreshViews();
    void refreshOutline();
    /// Lets go of something with trees in the background, without a look at it: a million images
    /// take a while.
    void discard(std::shared_ptr<const void> trees);

    group::GroupOutline* _outline = nullptr;
    group::GroupTreeDisplay* _display = nullptr;
    std::function<void()> _didSwap;
    PBGroupItemArray _groupItemArray;
    std::shared_ptr<PBGroupItemArray> _groupItemArray_work;
    std::shared_ptr<group::GroupPublication> _waiting; ///< for the end of a motion
    const std::shared_ptr<group::PublicationMailbox> _mailbox;
    std::vector<std::function<void()>> _whenShown; ///< of the present work tree
    std::chrono::steady_clock::time_point _restsUntil;
    bool _ignoreSelectionChanged = false;
    bool _isOutlineViewScrolled = false;
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<PBGroupTreeDataSource*> _self;
    platform::OperationQueue _discarded{QStringLiteral("Discard")};
};
