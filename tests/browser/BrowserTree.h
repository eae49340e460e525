#pragma once

#include "browser/state/BrowserLeafList.h"
#include "support/Support.h"

/// A tree of folders with images of 3000 x 2000, named after their folder and number: "a0", "a1" …
struct BrowserTree {
    explicit BrowserTree(std::initializer_list<int> counts) {
        for (const int count : counts) {
            const int group = static_cast<int>(tree.size());
            const QString name(QChar(u'a' + group));
            tree.push_back(
                PBGroupItem::groupItemWithParent(nullptr, 5, PBValue(u"/photos/"_s + name)));
            for (int index = 0; index < std::max(count, 1); ++index)
                add(group, name + QString::number(index));
            if (count == 0) remove(group, {item(group, 0)}); // a leaf stays one
        }
    }

    std::shared_ptr<PBImageFileItem> add(int group, const QString& name, qint64 folder = 1) {
        auto item = PBImageFileItem::imageFileItemWithId(++nextId, folder, name, 1234567, 1);
        item->setImageSize({3000, 2000});
        node(group).sortAddImageFileItem(item, 0, false);
        return item;
    }
    void remove(int group, PBImageFileList gone) { node(group).removeImageFiles(gone); }
    std::vector<PBGroupItem*> leaves() const {
        std::vector<PBGroupItem*> all;
        for (const auto& node : tree)
            all.push_back(node.get());
        return all;
    }
    /// As a scan publishes it: other nodes, the same data and items.
    void swapForCopy() {
        for (auto& node : tree)
            node = node->copyWithParent(nullptr);
        for (const auto& node : tree)
            node->updateDataGroupItem();
    }
    PBGroupItem& node(int group) const { return *tree.at(static_cast<std::size_t>(group)); }
    PBGroupItemData& data(int group) const { return *node(group).data(); }
    const std::shared_ptr<PBImageFileItem>& item(int group, int index) const {
        return node(group).imageFiles()[static_cast<std::size_t>(index)];
    }
    /// The names of the selected images, with a blank between them.
    QString selected() const {
        QStringList names;
        for (const auto& node : tree)
            for (const auto& item : node->imageFiles())
                if (item->isSelected()) names += item->fileName();
        return names.join(u' ');
    }

    PBGroupItemArray tree;
    qint64 nextId = 0;
};
