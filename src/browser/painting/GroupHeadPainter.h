#pragma once

#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserLeafList.h"
#include "ui/PBPathCell.h"

#include <functional>
#include <memory>
#include <unordered_map>

class QPainter;

/// Draws the heads of groups: the chain of the group as a path from the outermost criterion to the
/// innermost, with its symbols. Main thread.
class GroupHeadPainter {
public:
    using TagLookup = std::function<QString(qint64 tagId)>;
    struct Names {
        TagLookup tagWithTagId;
        /// What is shown of a folder with that path.
        std::function<QString(const QString& path)> folderTitle;
    };

    explicit GroupHeadPainter(Names names);

    /// The path in words, with whole paths of folders, as for a screen reader.
    [[nodiscard]] QString text(const BrowserLeafList::Leaf& leaf) const;
    struct Look {
        bool hasTopLine = false;
        bool isActive = true; ///< the window is the active one; in another, heads step back
    };
    /// Draws at the rectangle, whose points the painter maps onto the widget.
    void draw(
        QPainter& painter, const QRectF& rect, const BrowserLeafList::Leaf& leaf, const Look& look);
    /// Names may have changed.
    void forgetNames() { _paths.clear(); }
    void fontDidChange();
    /// Whether a head of that width shows less than the whole text.
    [[nodiscard]] bool isShortened(const BrowserLeafList::Leaf& leaf, double width) const;

private:
    [[nodiscard]] PBPathCell& path(const BrowserLeafList::Leaf& leaf) const;

    [[nodiscard]] QString title(const PBGroupItem& node) const;

    const Names _names;
    PathCellStyle _style;
    mutable std::unordered_map<const PBGroupItemData*, std::unique_ptr<PBPathCell>> _paths;
};
