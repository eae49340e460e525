#pragma once

#include "group/GroupChainMenu.h"
#include "ui/TextLines.h"

#include <QRectF>
#include <QSizeF>

#include <memory>
#include <optional>
#include <vector>

class PBPathCell;
class QPainter;

/// How the steps of paths are written; shared by all paths of a view, for the sake of the texts
/// that it keeps laid out.
struct PathCellStyle {
    /// With emphasis on the last step the others are dim, and it alone is strong.
    PathCellStyle(const QFont& font, bool emphasizesLastItem);
    void setFont(const QFont& font);

    const bool emphasizesLastItem;
    TextLines plain;
    TextLines strong;
};

/// One step of a path: a symbol, a title, and an arrow towards the next step.
class PBPathComponentCell {
public:
    /// The path outlives its steps.
    PBPathComponentCell(
        const PBPathCell& path, QString title, group::IconName image, bool limitWidth)
        : _path(path), _title(std::move(title)), _image(std::move(image)), _limitWidth(limitWidth) {
    }

    [[nodiscard]] const QString& title() const { return _title; }
    [[nodiscard]] const group::IconName& image() const { return _image; }
    /// The step gives way where the path is too long for its place.
    [[nodiscard]] bool limitWidth() const { return _limitWidth; }
    /// A step that names no value is written dim.
    void setIsUnspecified(bool isUnspecified) { _isUnspecified = isUnspecified; }

    [[nodiscard]] bool isLastItem() const;
    /// Position in the path.
    [[nodiscard]] std::size_t position() const;

    /// Whole points; without width for an empty title.
    [[nodiscard]] QSizeF sizeOfTitle() const;
    /// The room that the step takes: its own, or what the others leave of the path's width.
    [[nodiscard]] QSizeF cellSize() const;
    /// The room of all but the title.
    [[nodiscard]] double leastWidth() const;
    /// What the other steps take together, each in whole points; the longest of them give way, too.
    [[nodiscard]] int widthOfOtherCell() const;

    struct Rects {
        QRectF title;
        QRectF image; ///< empty without one
        QRectF arrow; ///< empty for the last step
    };
    [[nodiscard]] Rects calcRectForCellRect(const QRectF& cellRect) const;
    void draw(QPainter& painter, const QRectF& cellRect) const;

    /// The menu by which the user changes the chain at this step.
    [[nodiscard]] std::vector<group::ChainMenuEntry>
    groupMenuOfView(std::span<const int> groupTypeArray) const {
        return group::groupMenuOfChain(groupTypeArray, position());
    }

private:
    [[nodiscard]] bool hasImage() const { return _image.kind != group::IconName::Kind::None; }
    [[nodiscard]] const TextLines& lines() const;
    void drawTitle(QPainter& painter, const QRectF& titleRect) const;

    const PBPathCell& _path;
    QString _title;
    group::IconName _image;
    bool _limitWidth;
    bool _isUnspecified = false;
};

/// A path of steps in one line, as the breadcrumb of group types and the heads of groups have it.
/// Main thread.
class PBPathCell {
public:
    /// In points; the breadcrumb and the heads of groups have the same, and so stand in one line.
    static constexpr double leftMargin = 3;
    static constexpr double usualHeight = 20;

    /// The style outlives this object.
    explicit PBPathCell(const PathCellStyle& style) : _style(style) {}
    PBPathCell(const PBPathCell&) = delete;
    PBPathCell& operator=(const PBPathCell&) = delete;

    [[nodiscard]] const PathCellStyle& style() const { return _style; }
    [[nodiscard]] const std::vector<std::unique_ptr<PBPathComponentCell>>&
    pathComponentCells() const {
        return _cells;
    }
    [[nodiscard]] std::size_t itemCount() const { return _cells.size(); }
    PBPathComponentCell&
    addItemWithTitle(const QString& title, const group::IconName& image, bool limitWidth) {
        return insertItemWithTitle(title, image, itemCount(), limitWidth);
    }
    PBPathComponentCell& insertItemWithTitle(
        const QString& title, const group::IconName& image, std::size_t index, bool limitWidth);
    void removeAllItem() { _cells.clear(); }

    /// The place for the whole path.
    [[nodiscard]] const QSizeF& size() const { return _size; }
    void setSize(const QSizeF& size) { _size = size; }
    /// The widest that the title of a step that gives way may be, so that all fit: the longest
    /// titles get narrower, as much as is needed, and the others keep their size.
    [[nodiscard]] double longestLimitedTitle() const;
    /// Where a step lies, from the path's top left corner. What goes beyond the path is cut off.
    [[nodiscard]] QRectF rectOfItem(std::size_t index) const;
    /// The step at a point.
    [[nodiscard]] std::optional<std::size_t> itemAt(const QPointF& point) const;
    void draw(QPainter& painter, const QPointF& topLeft) const;

private:
    const PathCellStyle& _style;
    std::vector<std::unique_ptr<PBPathComponentCell>> _cells;
    QSizeF _size;
};
