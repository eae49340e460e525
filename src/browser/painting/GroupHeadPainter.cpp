#include "browser/painting/GroupHeadPainter.h"

#include "group/GroupTypes.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QApplication>
#include <QPainter>
#include <QStringList>

#include <cmath>

namespace {

QFont headFont() {
    QFont font = QApplication::font();
    font.setPixelSize(12);
    return font;
}

} // namespace

GroupHeadPainter::GroupHeadPainter(Names names)
    : _names(std::move(names)), _style(headFont(), true) {}

QString GroupHeadPainter::title(const PBGroupItem& node) const {
    const QString name = node.fullDisplayName(_names.tagWithTagId);
    const bool isPath = node.type() == group::Folder && node.value().hasValue();
    return isPath ? _names.folderTitle(name) : name;
}

PBPathCell& GroupHeadPainter::path(const BrowserLeafList::Leaf& leaf) const {
    std::unique_ptr<PBPathCell>& path = _paths[leaf.data.get()];
    if (path) return *path;
    path = std::make_unique<PBPathCell>(_style);
    for (const PBGroupItem* node = leaf.data->groupItem(); node; node = node->parent()) {
        path->insertItemWithTitle(
                title(*node), node->displayIcon(), 0, node->type() == group::Folder)
            .setIsUnspecified(node->isUnspecified() && node->type() != group::AllImages);
    }
    return *path;
}

QString GroupHeadPainter::text(const BrowserLeafList::Leaf& leaf) const {
    QStringList names;
    for (const PBGroupItem* node = leaf.data->groupItem(); node; node = node->parent())
        names.prepend(node->fullDisplayName(_names.tagWithTagId));
    return names.join(QStringLiteral(", "));
}

void GroupHeadPainter::fontDidChange() {
    platform::assertMainThread();
    _style.setFont(headFont());
}

bool GroupHeadPainter::isShortened(const BrowserLeafList::Leaf& leaf, double width) const {
    for (const PBGroupItem* node = leaf.data->groupItem(); node; node = node->parent())
        if (title(*node) != node->fullDisplayName(_names.tagWithTagId)) return true;
    PBPathCell& shown = path(leaf);
    shown.setSize({width - PBPathCell::leftMargin, PBPathCell::usualHeight});
    for (std::size_t index = 0; index < shown.itemCount(); ++index) {
        const PBPathComponentCell& step = *shown.pathComponentCells()[index];
        const double room = step.calcRectForCellRect(shown.rectOfItem(index)).title.width();
        if (room < step.sizeOfTitle().width()) return true;
    }
    return false;
}

void GroupHeadPainter::draw(
    QPainter& painter, const QRectF& rect, const BrowserLeafList::Leaf& leaf, const Look& look) {
    platform::assertMainThread();
    const PBThemes::Colors& colors = PBThemes::colors();
    painter.fillRect(rect, colors.groupHead);
    painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), colors.separator);
    if (look.hasTopLine)
        painter.fillRect(QRectF(rect.left(), rect.top(), rect.width(), 1), colors.separator);
    PBPathCell& shown = path(leaf);
    shown.setSize({rect.width() - PBPathCell::leftMargin, PBPathCell::usualHeight});
    const double top = rect.top() + std::rint((rect.height() - PBPathCell::usualHeight) / 2);
    const double opacity = painter.opacity();
    if (!look.isActive) painter.setOpacity(opacity * PBThemes::inactiveStrength);
    shown.draw(painter, {rect.left() + PBPathCell::leftMargin, top});
    painter.setOpacity(opacity);
}
