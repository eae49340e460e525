#include "ui/PBPathCell.h"

#include "platform/tasks/MainThread.h"
#include "ui/GroupIcons.h"
#include "ui/PBThemes.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// All in points.
constexpr double imageStrip = 19;
constexpr double imageSide = 16;
constexpr double arrowStrip = 8;
constexpr double arrowHeight = 14;
constexpr double titleGap = 2;
/// Kept free at the path's end.
constexpr double pathMargin = 2;

double centred(double room, double height) {
    return std::ceil((room - height) / 2);
}

QFont strongFont(QFont font) {
    font.setWeight(QFont::DemiBold);
    return font;
}

void drawArrow(QPainter& painter, const QPointF& centre) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(PBThemes::colors().secondaryText, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF points[] = {
        centre + QPointF(-1.5, -3), centre + QPointF(1.5, 0), centre + QPointF(-1.5, 3)};
    painter.drawPolyline(points, 3);
    painter.restore();
}

} // namespace

PathCellStyle::PathCellStyle(const QFont& font, bool emphasizesLast)
    : emphasizesLastItem(emphasizesLast), plain(font), strong(strongFont(font)) {}

void PathCellStyle::setFont(const QFont& font) {
    plain.setFont(font);
    strong.setFont(strongFont(font));
}

bool PBPathComponentCell::isLastItem() const {
    return _path.pathComponentCells().back().get() == this;
}

std::size_t PBPathComponentCell::position() const {
    const auto& cells = _path.pathComponentCells();
    const auto found = std::ranges::find(cells, this, &std::unique_ptr<PBPathComponentCell>::get);
    return static_cast<std::size_t>(found - cells.begin());
}

const TextLines& PBPathComponentCell::lines() const {
    const PathCellStyle& style = _path.style();
    return style.emphasizesLastItem && isLastItem() ? style.strong : style.plain;
}

QSizeF PBPathComponentCell::sizeOfTitle() const {
    const double width = _title.isEmpty() ? 0 : std::ceil(lines().width(_title));
    return {width, std::ceil(lines().height())};
}

double PBPathComponentCell::leastWidth() const {
    return titleGap + (hasImage() ? imageStrip : 0) + (isLastItem() ? 0 : arrowStrip);
}

int PBPathComponentCell::widthOfOtherCell() const {
    const double longest = _path.longestLimitedTitle();
    int width = 0;
    for (const auto& cell : _path.pathComponentCells()) {
        if (cell.get() == this) continue;
        const double title = cell->sizeOfTitle().width();
        width += static_cast<int>(
            cell->leastWidth() + (cell->_limitWidth ? std::min(title, longest) : title));
    }
    return width;
}

QSizeF PBPathComponentCell::cellSize() const {
    const double least = leastWidth();
    const double width = least + sizeOfTitle().width();
    const double height = _path.size().height();
    if (!_limitWidth) return {width, height};
    const double left = _path.size().width() - pathMargin - widthOfOtherCell();
    return {std::clamp(left, least, width), height};
}

PBPathComponentCell::Rects PBPathComponentCell::calcRectForCellRect(const QRectF& cellRect) const {
    Rects rects;
    QRectF rest = cellRect;
    if (hasImage()) {
        rects.image = QRectF(
            rest.left() + std::floor((imageStrip - imageSide) / 2),
            rest.top() + centred(rest.height(), imageSide), imageSide, imageSide);
        rest.setLeft(rest.left() + imageStrip);
    }
    if (!isLastItem()) {
        rects.arrow = QRectF(
            rest.right() - arrowStrip, rest.top() + centred(rest.height(), arrowHeight), arrowStrip,
            arrowHeight);
        rest.setRight(rest.right() - arrowStrip);
    }
    const double titleHeight = sizeOfTitle().height();
    rects.title = QRectF(
        rest.left() + titleGap / 2, rest.top() + centred(rest.height(), titleHeight),
        std::max(0.0, rest.width() - titleGap), titleHeight);
    return rects;
}

void PBPathComponentCell::drawTitle(QPainter& painter, const QRectF& titleRect) const {
    if (_title.isEmpty() || titleRect.width() < 1) return;
    const PBThemes::Colors& colors = PBThemes::colors();
    const bool isDim = _isUnspecified || (_path.style().emphasizesLastItem && !isLastItem());
    painter.setFont(lines().font());
    painter.setPen(isDim ? colors.secondaryText : colors.text);
    lines().drawLeading(painter, titleRect, _title);
}

void PBPathComponentCell::draw(QPainter& painter, const QRectF& cellRect) const {
    const Rects rects = calcRectForCellRect(cellRect);
    // A symbol or an arrow that doesn't fit whole says nothing.
    const bool fitsImage = rects.image.right() <= cellRect.right();
    if (hasImage() && fitsImage) {
        const QPoint place(qRound(rects.image.left()), qRound(rects.image.top()));
        Icons::ofGroup(_image).paint(&painter, QRect(place, rects.image.size().toSize()));
    }
    drawTitle(painter, rects.title);
    if (!isLastItem() && fitsImage) drawArrow(painter, rects.arrow.center());
}

PBPathComponentCell& PBPathCell::insertItemWithTitle(
    const QString& title, const group::IconName& image, std::size_t index, bool limitWidth) {
    platform::assertMainThread();
    const auto place = _cells.begin() + static_cast<std::ptrdiff_t>(std::min(index, itemCount()));
    return **_cells.insert(
        place, std::make_unique<PBPathComponentCell>(*this, title, image, limitWidth));
}

double PBPathCell::longestLimitedTitle() const {
    double room = _size.width() - pathMargin;
    std::vector<double> titles;
    for (const auto& cell : _cells) {
        const double title = cell->sizeOfTitle().width();
        room -= cell->leastWidth();
        if (cell->limitWidth())
            titles.push_back(title);
        else
            room -= title;
    }
    // What the short ones leave of their share is for the longer ones.
    std::ranges::sort(titles);
    for (std::size_t index = 0; index < titles.size(); ++index) {
        const double share = std::max(0.0, room) / static_cast<double>(titles.size() - index);
        if (titles[index] > share) return std::floor(share);
        room -= titles[index];
    }
    return titles.empty() ? 0 : titles.back();
}

QRectF PBPathCell::rectOfItem(std::size_t index) const {
    double left = 0;
    for (std::size_t before = 0; before < index; ++before)
        left += _cells[before]->cellSize().width();
    const double width = std::min(_cells[index]->cellSize().width(), _size.width() - left);
    return {left, 0, std::max(0.0, width), _size.height()};
}

std::optional<std::size_t> PBPathCell::itemAt(const QPointF& point) const {
    for (std::size_t index = 0; index < itemCount(); ++index)
        if (rectOfItem(index).contains(point)) return index;
    return std::nullopt;
}

void PBPathCell::draw(QPainter& painter, const QPointF& topLeft) const {
    for (std::size_t index = 0; index < itemCount(); ++index) {
        const QRectF rect = rectOfItem(index);
        if (rect.width() > 0) _cells[index]->draw(painter, rect.translated(topLeft));
    }
}
