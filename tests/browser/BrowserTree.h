#pragma once

#include "browser/BrowserLeafList.h"
#include "support/Support.h"

/// A tree of folders with images of 3000 x 2000, named after their folder and number: "a0", "a1" …
struct BrowserTree {
    explicit BrowserTree(std::initializer_list<int> counts) {
        char letter = 'a';
        for (const int count : counts) {
            const QString name = QString(QChar::fromLatin1(letter++));
            tree.push_back(
                PBGroupItem::groupItemWithParent(nullptr, 5, PBValue(u"/photos/"_s + name)));
            for (int index = 0; index < count; ++index)
                add(static_cast<int>(tree.size()) - 1, name + QString::number(index));
            // A leaf stays one when it is empty.
            if (count == 0) {
                PBImageFileList gone{add(static_cast<int>(tree.size()) - 1, name)};
                tree.back()->removeImageFiles(gone);
            }
        }
    }

    std::shared_ptr<PBImageFileItem> add(int group, const QString& name) {
        auto item = PBImageFileItem::imageFileItemWithId(++nextId, 1, name, 1234567, 1);
        item->setImageSize({3000, 2000});
        tree[static_cast<std::size_t>(group)]->sortAddImageFileItem(item, 0, false);
        return item;
    }
    std::vector<PBGroupItem*> leaves() const {
        std::vector<PBGroupItem*> all;
        for (const auto& node : tree)
            all.push_back(node.get());
        return all;
    }
    /// As a scan publishes it: other nodes, the same data and items.
    void swapForCopy() {
        PBGroupItemArray copy;
        for (const auto& node : tree)
            copy.push_back(node->copyWithParent(nullptr));
        tree = std::move(copy);
        for (const auto& node : tree)
            node->updateDataGroupItem();
    }
    const std::shared_ptr<PBImageFileItem>& item(int group, int index) const {
        return tree.at(static_cast<std::size_t>(group))
            ->imageFiles()[static_cast<std::size_t>(index)];
    }
    PBGroupItemData& data(int group) const {
        return *tree.at(static_cast<std::size_t>(group))->data();
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
