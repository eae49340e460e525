#pragma once

#include "group/GroupOrderKey.h"
#include "platform/tasks/MainThread.h"
#include "platform/values/PBValue.h"

#include <atomic>
#include <cstdint>
#include <utility>

class PBGroupItem;

/// What stays the same in all copies of a group: shared by them, it is the group's lasting identity
/// while trees come and go. Type, value and order never change, and may be read on any thread; the
/// two states of the display belong to the main thread.
class PBGroupItemData {
public:
    /// State of the group's row in the group panel.
    enum Collapsed : std::int32_t { NeverTouched = 0, CollapsedByUser = 1, ExpandedByUser = 2 };

    PBGroupItemData(int type, PBValue value)
        : _type(type), _value(std::move(value)), _orderKey(_type, _value) {}
    PBGroupItemData(const PBGroupItemData&) = delete;
    PBGroupItemData& operator=(const PBGroupItemData&) = delete;

    [[nodiscard]] int type() const { return _type; }
    [[nodiscard]] const PBValue& value() const { return _value; }
    [[nodiscard]] const group::GroupOrderKey& orderKey() const { return _orderKey; }

    [[nodiscard]] Collapsed collapsed() const { return _collapsed; }
    void setCollapsed(Collapsed collapsed) {
        platform::assertMainThread();
        _collapsed = collapsed;
    }
    /// The group is folded in the thumbnail browser.
    [[nodiscard]] bool isCollapsedForBrowser() const { return _isCollapsedForBrowser; }
    void setIsCollapsedForBrowser(bool isCollapsed) {
        platform::assertMainThread();
        _isCollapsedForBrowser = isCollapsed;
    }

    /// The node in the tree on display to which this belongs; nullptr when that node is gone.
    [[nodiscard]] PBGroupItem* groupItem() const { return _groupItem.load(); }
    void setGroupItem(PBGroupItem* groupItem) { _groupItem.store(groupItem); }
    /// A node that goes takes its entry along, unless another one has taken its place.
    void forgetGroupItem(PBGroupItem* groupItem) {
        _groupItem.compare_exchange_strong(groupItem, nullptr);
    }

private:
    const int _type;
    const PBValue _value;
    const group::GroupOrderKey _orderKey;
    Collapsed _collapsed = NeverTouched;
    bool _isCollapsedForBrowser = false;
    std::atomic<PBGroupItem*> _groupItem{nullptr};
};
