#include "shell/panes/WorkProgressView.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/panes/WorkProgress.h"
#include "ui/PBThemes.h"

#include <QLocale>
#include <QPainter>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr QSizeF barSize(56, 3);
constexpr double barSpacing = 8;

QString textOf(const WorkProgress::State& state) {
    const QLocale locale;
    switch (state.kind) {
    case WorkProgress::Kind::Thumbnails:
        return localizedFormat(
            u"ThumbnailsOf", {locale.toString(state.done), locale.toString(state.total)});
    case WorkProgress::Kind::Scanning:
        return state.done == 0 ? localizedString(u"Scanning")
                               : localizedFormat(u"ScanningCount", {locale.toString(state.done)});
    case WorkProgress::Kind::Editing:
        return state.total == 1 ? localizedString(u"EditingCount_1")
                                : localizedFormat(u"EditingCount", {locale.toString(state.total)});
    case WorkProgress::Kind::None:
        break;
    }
    return {};
}

} // namespace

WorkProgressView::WorkProgressView(QWidget* parent) : QWidget(parent) {
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    setFont(small);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
}

QSize WorkProgressView::sizeHint() const {
    const QString widest =
        localizedFormat(u"ThumbnailsOf", {QStringLiteral("888,888"), QStringLiteral("888,888")});
    const double width = barSize.width() + barSpacing + fontMetrics().horizontalAdvance(widest);
    return {static_cast<int>(width) + 8, fontMetrics().height()};
}

void WorkProgressView::setProgress(WorkProgress& progress) {
    connect(&progress, &WorkProgress::changed, this, [this, &progress] { show(progress); });
    show(progress);
}

void WorkProgressView::show(const WorkProgress& progress) {
    const WorkProgress::State& state = progress.state();
    _text = textOf(state);
    _part = state.total == 0 || state.kind == WorkProgress::Kind::Editing
                ? -1
                : static_cast<double>(state.done) / static_cast<double>(state.total);
    setAccessibleName(_text);
    update();
}

void WorkProgressView::paintEvent(QPaintEvent*) {
    if (_text.isEmpty()) return;
    const PBThemes::Colors& colors = PBThemes::colors();
    QPainter painter(this);
    const QRectF room = QRectF(rect()).adjusted(0, 0, -8, 0);
    const QString shown =
        fontMetrics().elidedText(_text, Qt::ElideRight, static_cast<int>(room.width()));
    painter.setPen(colors.secondaryText);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, shown);
    const double left =
        room.right() - fontMetrics().horizontalAdvance(shown) - barSpacing - barSize.width();
    if (_part < 0 || left < 0) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QRectF bar(QPointF(left, (height() - barSize.height()) / 2.0), barSize);
    QColor ground = colors.icon;
    ground.setAlphaF(0.25F);
    painter.setBrush(ground);
    painter.drawRoundedRect(bar, 1.5, 1.5);
    bar.setWidth(std::max(3.0, bar.width() * _part));
    painter.setBrush(colors.accent);
    painter.drawRoundedRect(bar, 1.5, 1.5);
}
