#pragma once

#include "browser/BrowserLayout.h"
#include "browser/BrowserLeafList.h"
#include "ui/TextLines.h"

#include <QHash>
#include <QIcon>
#include <QPair>

#include <functional>

class QPainter;

/// Draws the heads of groups: the chain of the group as a path from the outermost criterion to the
/// innermost, with its symbols. Main thread.
class GroupHeadPainter {
public:
    using TagLookup = std::function<QString(qint64 tagId)>;

    explicit GroupHeadPainter(TagLookup tagWithTagId);

    /// The path in words, as for a screen reader.
    [[nodiscard]] QString text(const BrowserLeafList::Leaf& leaf) const;
    /// Draws at the rectangle, whose points the painter maps onto the widget.
    void
    draw(QPainter& painter, const QRectF& rect, const BrowserLeafList::Leaf& leaf, bool hasTopLine);
    /// Names may have changed.
    void forgetNames() { _paths.clear(); }

private:
    struct Step {
        QString name;
        group::IconName icon;
        bool isNarrow = false; ///< a folder's path gets no more than its share
        bool isUnspecified = false;
    };
    using Path = std::vector<Step>;

    [[nodiscard]] const Path& path(const BrowserLeafList::Leaf& leaf) const;
    [[nodiscard]] double
    drawIcon(QPainter& painter, const QRectF& rect, const group::IconName& icon) const;

    const TagLookup _tagWithTagId;
    TextLines _lines;
    TextLines _innermost;
    mutable QHash<const PBGroupItemData*, Path> _paths;
    mutable QHash<QPair<int, QString>, QIcon> _icons;
};
