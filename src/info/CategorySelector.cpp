#include "info/CategorySelector.h"

#include "info/painting/AccentText.h"
#include "ui/PBThemes.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int titleRoom = 10; // left and right of it
constexpr int cornerRadius = 5;

class SegmentButton final : public QAbstractButton {
public:
    SegmentButton(const QString& title, bool isFirst, bool isLast)
        : _isFirst(isFirst), _isLast(isLast) {
        setText(title);
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    [[nodiscard]] QSize sizeHint() const override {
        const QFontMetrics metrics(font());
        return {metrics.horizontalAdvance(text()) + 2 * titleRoom, metrics.height() + 6};
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        return {sizeHint().width() - titleRoom, sizeHint().height()};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const PBThemes::Colors& colors = PBThemes::colors();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        // Round at the ends of the row only: the other corners lie outside.
        QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.setClipRect(rect());
        if (!_isFirst) frame.setLeft(frame.left() - cornerRadius - 1);
        if (!_isLast) frame.setRight(frame.right() + cornerRadius + 1);
        QColor ground = isChecked() ? colors.accent : colors.browser;
        if (isDown()) ground = isChecked() ? ground.darker(110) : colors.bar;
        painter.setPen(QPen(hasFocus() ? colors.accent : colors.dimSelection, 1));
        painter.setBrush(ground);
        painter.drawRoundedRect(frame, cornerRadius, cornerRadius);
        if (!_isFirst) painter.drawLine(QPointF(0.5, 1), QPointF(0.5, height() - 1));
        if (hasFocus() && isChecked()) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(accentTextColor(), 1));
            painter.drawRect(QRectF(rect()).adjusted(3.5, 3.5, -3.5, -3.5));
        }
        painter.setPen(isChecked() ? accentTextColor() : colors.text);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }

private:
    const bool _isFirst;
    const bool _isLast;
};

} // namespace

CategorySelector::CategorySelector(QWidget* parent)
    : QWidget(parent), _layout(new QHBoxLayout(this)), _buttons(new QButtonGroup(this)) {
    _layout->setContentsMargins(0, 0, 0, 0);
    _layout->setSpacing(0);
    connect(_buttons, &QButtonGroup::idClicked, this, &CategorySelector::segmentClicked);
}

void CategorySelector::setSegments(const QStringList& titles) {
    if (titles == _titles) return;
    _titles = titles;
    for (QAbstractButton* button : _buttons->buttons()) {
        _buttons->removeButton(button);
        delete button;
    }
    for (int index = 0; index < titles.size(); ++index) {
        auto* button = new SegmentButton(titles[index], index == 0, index == titles.size() - 1);
        _layout->addWidget(button);
        _buttons->addButton(button, index);
    }
}

void CategorySelector::setSelectedSegment(int segment) {
    if (QAbstractButton* button = _buttons->button(segment)) button->setChecked(true);
}
