#include "browser/input/BrowserInput.h"

#include "platform/tasks/MainThread.h"

PBImageBrowserIndex BrowserInput::currentIndex() const {
    return _leaves.indexForImageFile(_downImageFileItem ? _downImageFileItem : _shiftFileItem);
}

bool BrowserInput::keyDown(BrowserKey key, BrowserModifiers modifiers) {
    platform::assertMainThread();
    if (modifiers.hasCommandOrOther()) return false;
    if (key == BrowserKey::Space) {
        _host.perform(BrowserCommand::ToggleFlag);
        return true;
    }
    if (key == BrowserKey::Return) {
        const PBImageBrowserIndex current = currentIndex();
        if (current.isValid()) _host.enterToLargeView(current);
        return true;
    }
    const PBImageBrowserIndex target = keyTarget(key);
    const auto item = _leaves.imageFileAtIndex(target);
    if (!item) return true;
    _downImageFileItem = item;
    if (modifiers.shift) {
        extendTo(target);
    } else {
        _shiftFileItem = item;
        selectOnly(item);
    }
    if (key == BrowserKey::Home || key == BrowserKey::End) {
        _host.scrollToEnd(key == BrowserKey::Home);
    } else {
        _host.scrollIndexToVisible(target);
    }
    _host.selectDidChange();
    return true;
}

/// The range from the anchor is built anew on each step, and shrinks when the user comes back.
void BrowserInput::extendTo(const PBImageBrowserIndex& index) {
    PBImageBrowserIndex anchor = _leaves.indexForImageFile(_shiftFileItem);
    if (!anchor.isValid()) {
        _shiftFileItem = _downImageFileItem;
        anchor = index;
    }
    _selection.deselectAll();
    _selection.selectFrom(anchor, index);
}

PBImageBrowserIndex BrowserInput::keyTarget(BrowserKey key) const {
    const PBImageBrowserIndex current = currentIndex();
    switch (key) {
    case BrowserKey::Up:
        return _layout.colPrevIndex(current);
    case BrowserKey::Down:
        return _layout.colNextIndex(current);
    case BrowserKey::Left:
        return _layout.prevIndex(current);
    case BrowserKey::Right:
        return _layout.nextIndex(current);
    case BrowserKey::PageUp:
        return pageStep(current, false);
    case BrowserKey::PageDown:
        return pageStep(current, true);
    case BrowserKey::Home:
        return _layout.nextIndex({});
    case BrowserKey::End:
        return _layout.prevIndex({});
    default:
        return {};
    }
}

PBImageBrowserIndex BrowserInput::pageStep(const PBImageBrowserIndex& from, bool isDown) const {
    const auto step = [&](const PBImageBrowserIndex& index) {
        return isDown ? _layout.colNextIndex(index) : _layout.colPrevIndex(index);
    };
    if (!from.isValid()) return step(from);
    const double page = _host.visibleRect().height() - BrowserMetrics::headHeight;
    const double start = _layout.cellRectAtIndex(from).top();
    PBImageBrowserIndex target = step(from);
    for (PBImageBrowserIndex next = step(target); target.isValid() && next.isValid();
         next = step(target)) {
        if (std::abs(_layout.cellRectAtIndex(next).top() - start) > page) break;
        target = next;
    }
    return target;
}

void BrowserInput::typeAhead(const QString& beginning) {
    platform::assertMainThread();
    if (beginning.isEmpty()) return;
    PBImageBrowserIndex index = currentIndex();
    // More letters may still mean the same image.
    const bool mayStay = beginning.size() > 1 && index.isValid();
    if (!mayStay) index = _layout.nextIndex(index);
    const std::int64_t count = _selection.itemCount(FoldedLeaves::Excluded);
    for (std::int64_t looked = 0; looked < count; ++looked) {
        if (!index.isValid()) index = _layout.nextIndex({}); // round to the start
        const auto item = _leaves.imageFileAtIndex(index);
        if (item && item->fileName().startsWith(beginning, Qt::CaseInsensitive)) {
            gotoIndex(index);
            return;
        }
        index = _layout.nextIndex(index);
    }
}

void BrowserInput::gotoIndex(const PBImageBrowserIndex& index) {
    platform::assertMainThread();
    const auto item = _leaves.imageFileAtIndex(index);
    if (!item) return;
    _downImageFileItem = item;
    _shiftFileItem = item;
    selectOnly(item);
    _host.scrollIndexToVisible(index);
    _host.selectDidChange();
}

PBImageBrowserIndex BrowserInput::stepIndex(BrowserStep step) const {
    const PBImageBrowserIndex current = currentIndex();
    const std::int64_t leaves = _leaves.leafCount();
    const auto unlessThere = [&](const PBImageBrowserIndex& index) {
        return index == current || !index.isValid() ? PBImageBrowserIndex{} : index;
    };
    const auto lastOf = [&](std::int64_t group) {
        return PBImageBrowserIndex{group, _leaves.imageFileCount(group) - 1};
    };
    if (leaves == 0) return {};
    switch (step) {
    case BrowserStep::PrevIndex:
        return _layout.prevIndex(current);
    case BrowserStep::NextIndex:
        return _layout.nextIndex(current);
    case BrowserStep::FirstIndex:
        return unlessThere({0, 0});
    case BrowserStep::LastIndex:
        return unlessThere(lastOf(leaves - 1));
    case BrowserStep::PreviousGroup:
        if (!current.isValid()) return {0, 0};
        return current.group > 0 ? PBImageBrowserIndex{current.group - 1, 0}
                                 : PBImageBrowserIndex{};
    case BrowserStep::NextGroup:
        if (!current.isValid()) return {0, 0};
        return current.group + 1 < leaves ? PBImageBrowserIndex{current.group + 1, 0}
                                          : PBImageBrowserIndex{};
    case BrowserStep::FirstIndexInGroup:
        return current.isValid() ? unlessThere({current.group, 0}) : PBImageBrowserIndex{};
    case BrowserStep::LastIndexInGroup:
        return current.isValid() ? unlessThere(lastOf(current.group)) : PBImageBrowserIndex{};
    }
    return {};
}
