#include "ui/HeaderBar.h"

#include "ui/PBThemes.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

/// One line, shortened in the middle.
class HeaderBar::Title final : public QWidget {
public:
    Title(const QString& text, QWidget* parent) : QWidget(parent) {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        setText(text);
    }
    void setText(const QString& text) {
        _text = text;
        setAccessibleName(text);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const QString shown = fontMetrics().elidedText(_text, Qt::ElideMiddle, width());
        setToolTip(
            shown == _text ? QString() : QStringLiteral("<p>%1</p>").arg(_text.toHtmlEscaped()));
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shown);
    }

private:
    QString _text;
};

HeaderBar::HeaderBar(const QString& title, Line line, QWidget* parent)
    : QWidget(parent), _line(line), _title(new Title(title, this)), _layout(new QHBoxLayout(this)) {
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.92);
    small.setWeight(QFont::DemiBold);
    _title->setFont(small);
    _layout->setContentsMargins(10, 0, 6, 0);
    _layout->setSpacing(2);
    _layout->addWidget(_title, 1);
    setFixedHeight(28);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    updateColors();
}

void HeaderBar::setTitle(const QString& title) {
    _title->setText(title);
}

void HeaderBar::addWidget(QWidget* widget) {
    _layout->addWidget(widget);
}

void HeaderBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PBThemes::colors().bar);
    const int y = _line == Line::Below ? height() - 1 : 0;
    painter.fillRect(QRect(0, y, width(), 1), PBThemes::colors().separator);
}

void HeaderBar::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    const bool concernsColors =
        event->type() == QEvent::PaletteChange || event->type() == QEvent::ActivationChange;
    if (concernsColors) updateColors();
}

void HeaderBar::updateColors() {
    QPalette palette = _title->palette();
    QColor color = PBThemes::colors().secondaryText;
    if (isVisible() && !isActiveWindow()) color.setAlphaF(PBThemes::inactiveStrength);
    if (palette.color(QPalette::WindowText) == color) return;
    palette.setColor(QPalette::WindowText, color);
    _title->setPalette(palette);
    update();
}
