#include "ui/SearchField.h"

#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QAction>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>

namespace {

constexpr int fieldHeight = 28;
constexpr int usualWidth = 220;
constexpr int smallestWidth = 108;
constexpr double cornerRadius = 6;

} // namespace

SearchField::SearchField(const QString& placeholder, QWidget* parent)
    : QLineEdit(parent),
      _clear(addAction(Icons::named(QStringLiteral("clear")), QLineEdit::TrailingPosition)) {
    addAction(Icons::named(QStringLiteral("search")), QLineEdit::LeadingPosition);
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setFrame(false);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setFixedHeight(fieldHeight);
    setMaximumWidth(usualWidth);
    connect(_clear, &QAction::triggered, this, [this] { clear(); });
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        updateClearAction();
        Q_EMIT searchChanged(text);
    });
    updateClearAction();
    updateColors();
}

QSize SearchField::sizeHint() const {
    return {usualWidth, fieldHeight};
}

QSize SearchField::minimumSizeHint() const {
    return {smallestWidth, fieldHeight};
}

void SearchField::focusSearch() {
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

void SearchField::showText(const QString& text) {
    platform::assertMainThread();
    if (text == this->text()) return;
    const QSignalBlocker blocker(this);
    setText(text);
    updateClearAction();
}

void SearchField::updateClearAction() {
    _clear->setVisible(!text().isEmpty());
}

bool SearchField::event(QEvent* event) {
    // Escape belongs to the field while it has the keyboard, whatever shortcut the window has.
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        clear();
        [[fallthrough]];
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Down:
        Q_EMIT finished();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchField::paintEvent(QPaintEvent* event) {
    const PBThemes::Colors& colors = PBThemes::colors();
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(colors.browser);
        painter.setPen(QPen(hasFocus() ? colors.accent : colors.separator, hasFocus() ? 1.5 : 1));
        const double inset = hasFocus() ? 0.75 : 0.5;
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
    }
    QLineEdit::paintEvent(event);
}

void SearchField::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) updateColors();
}

void SearchField::updateColors() {
    // The frame is drawn here, with its own ground.
    QPalette own = palette();
    if (own.color(QPalette::Base) == Qt::transparent) return;
    own.setColor(QPalette::Base, Qt::transparent);
    setPalette(own);
}
