#include "group/PBGroupItem.h"

#include "core/SortedArray.h"
#include "group/ItemOrder.h"

#include <utility>

std::unique_ptr<PBGroupItem>
PBGroupItem::groupItemWithParent(PBGroupItem* parent, int type, PBValue value) {
    auto item = std::make_unique<PBGroupItem>(
        parent, std::make_shared<PBGroupItemData>(type, std::move(value)));
    item->_data->setGroupItem(item.get());
    return item;
}

std::unique_ptr<PBGroupItem>
PBGroupItem::groupItemWithParent(PBGroupItem* parent, std::shared_ptr<PBGroupItemData> data) {
    return std::make_unique<PBGroupItem>(parent, std::move(data));
}

PBGroupItem::PBGroupItem(PBGroupItem* parent, std::shared_ptr<PBGroupItemData> data)
    : _parent(parent), _data(std::move(data)) {}

PBGroupItem::~PBGroupItem() {
    _data->forgetGroupItem(this);
}

const PBImageFileArray& PBGroupItem::imageFiles() const {
    static const PBImageFileArray none;
    return _imageFiles ? *_imageFiles : none;
}

std::size_t PBGroupItem::imageFileCount() const {
    if (_imageFiles) return _imageFiles->size();
    std::size_t count = 0;
    for (const auto& child : _children)
        count += child->imageFileCount();
    return count;
}

namespace {

void appendLeaves(const PBGroupItemArray& level, std::vector<PBGroupItem*>& leaves) {
    for (const auto& node : level) {
        if (node->isLeafNode()) {
            leaves.push_back(node.get());
        } else {
            appendLeaves(node->children(), leaves);
        }
    }
}

} // namespace

std::vector<PBGroupItem*> group::leavesOf(const PBGroupItemArray& level) {
    std::vector<PBGroupItem*> leaves;
    appendLeaves(level, leaves);
    return leaves;
}

std::vector<PBGroupItem*> PBGroupItem::leafGroupItemArray() const {
    return group::leavesOf(_children);
}

PBGroupItem* PBGroupItem::firstLeafGroupItem() {
    if (isLeafNode()) return this;
    return _children.empty() ? nullptr : _children.front()->firstLeafGroupItem();
}

std::int64_t PBGroupItem::sortCompare(const PBGroupItem& other) const {
    if (_data == other._data) return 0;
    return _data->orderKey().compare(other._data->orderKey());
}

PBGroupItem& PBGroupItem::sortAddGroupItem(
    PBGroupItemArray& level, PBGroupItem* parent, int type, const PBValue& value) {
    // As sortAddObject, but the node is made only when there is a place for it.
    const group::GroupOrderKey key(type, value);
    const bool descending = !group::isAscendingWithGroupType(type);
    core::BinaryProbe probe(level.size());
    while (probe.isOpen()) {
        PBGroupItem& node = *level[probe.middle()];
        const int order = node._data->orderKey().compare(key);
        if (order == 0) return node;
        probe.move(order, descending);
    }
    const auto place = level.begin() + static_cast<std::ptrdiff_t>(probe.place());
    return **level.insert(place, groupItemWithParent(parent, type, value));
}

void PBGroupItem::sortAddImageFileItem(
    std::shared_ptr<PBImageFileItem> item, int sortType, bool isDescending) {
    if (!_imageFiles) _imageFiles.emplace();
    if (sortType == group::SortNone) {
        _imageFiles->push_back(std::move(item));
    } else {
        sortAddObject(
            *_imageFiles, std::move(item), sortType, isDescending, EqualElements::AddedBehind);
    }
}

std::unique_ptr<PBGroupItem> PBGroupItem::copyWithParent(PBGroupItem* parent) const {
    auto copy = groupItemWithParent(parent, _data);
    copy->_imageFiles = _imageFiles;
    copy->_children.reserve(_children.size());
    for (const auto& child : _children)
        copy->_children.push_back(child->copyWithParent(copy.get()));
    return copy;
}

void PBGroupItem::updateDataGroupItem() {
    _data->setGroupItem(this);
    for (const auto& child : _children)
        child->updateDataGroupItem();
}
