#include "info/tags/PBTagTokenField.h"

#include "info/painting/AccentText.h"
#include "info/tags/TagEditor.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QCompleter>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QStringListModel>
#include <QToolTip>

#include <algorithm>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr int margin = 4;       // between the frame and the tokens
constexpr int gap = 4;          // between tokens
constexpr int tokenRoom = 7;    // left and right of a token's text
constexpr int closeSize = 14;   // of the cross at its end
constexpr int editorWidth = 70; // at least
constexpr int leastHeight = 55;
constexpr int mostCompletions = 20;
/// Longer tags are shortened in the middle, and need not be measured as a whole.
constexpr qsizetype mostShown = 200;
constexpr qsizetype mostInToolTip = 1500;

QString shownTag(const QString& tag) {
    return platform::briefText(tag, mostShown);
}

} // namespace

PBTagTokenField::PBTagTokenField(Completions completions, QWidget* parent)
    : QWidget(parent), _completions(std::move(completions)), _lines(font()),
      _editor(new TagEditor(*this)), _completionModel(new QStringListModel(this)),
      _completer(new QCompleter(_completionModel, this)) {
    setFocusProxy(_editor);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
    _editor->setAccessibleName(localizedString(u"Tag"));
    // It completes what is typed, not the whole text of a widget.
    _completer->setWidget(_editor);
    _completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    connect(
        _completer, qOverload<const QString&>(&QCompleter::activated), this,
        [this](const QString& tag) {
            _editor->setText(TagTokens::written(tag));
            closeToken();
        });
    layOut();
}

PBTagTokenField::~PBTagTokenField() = default;

QWidget& PBTagTokenField::editor() const {
    return *_editor;
}

bool PBTagTokenField::isEditing() const {
    return !_isGathering && (!_editor->text().trimmed().isEmpty() || !(_tokens == _base));
}

void PBTagTokenField::setTags(const MergedTags& tags) {
    if (!isEditing()) resetTags(tags);
}

void PBTagTokenField::resetTags(const MergedTags& tags) {
    platform::assertMainThread();
    const TagTokens shown(tags);
    _isGathering = false;
    _editor->setEnabled(true);
    _base = shown;
    _opened.reset();
    if (!_editor->text().isEmpty()) _editor->clear();
    hideCompletions();
    if (_tokens == shown) return layOut();
    _tokens = shown;
    tokensDidChange();
}

void PBTagTokenField::setGathering() {
    platform::assertMainThread();
    resetTags({});
    _isGathering = true;
    _editor->setEnabled(false);
    layOut();
}

void PBTagTokenField::tokensDidChange() {
    _selected = -1;
    QStringList told;
    for (const TagToken& token : _tokens.tokens()) {
        const QString tag = shownTag(token.text);
        told.append(token.isOfAll ? tag : localizedFormat(u"TagOfSome", {tag}));
    }
    _editor->setAccessibleDescription(told.join(QStringLiteral(", ")));
    layOut();
}

// Layout

PBTagTokenField::Layout PBTagTokenField::layoutFor(int width) const {
    Layout layout;
    const int lineHeight = static_cast<int>(_lines.height()) + 5;
    const int right = std::max(width - margin, margin + editorWidth);
    int x = margin;
    int y = margin;
    const auto place = [&](int wanted) {
        const int taken = std::min(wanted, right - margin);
        if (x > margin && x + taken > right) {
            x = margin;
            y += lineHeight + gap;
        }
        const QRect rect(x, y, taken, lineHeight);
        x += taken + gap;
        return rect;
    };
    for (const TagToken& token : _tokens.tokens()) {
        const double text = _lines.width(shownTag(token.text));
        layout.tokens.push_back(place(static_cast<int>(text) + 1 + 2 * tokenRoom + closeSize));
    }
    layout.editor = place(editorWidth);
    layout.editor.setRight(right);
    layout.height = std::max(leastHeight, y + lineHeight + margin);
    return layout;
}

int PBTagTokenField::heightForWidth(int width) const {
    return layoutFor(width).height;
}

QSize PBTagTokenField::sizeHint() const {
    return {180, heightForWidth(180)};
}

void PBTagTokenField::layOut() {
    const int before = std::exchange(_layout, layoutFor(width())).height;
    _editor->setGeometry(_layout.editor);
    const bool isEmpty = _tokens.isEmpty();
    _editor->setPlaceholderText(
        _isGathering ? localizedString(u"GatheringValue")
        : isEmpty    ? localizedString(u"TagPlaceholder")
                     : QString());
    update();
    if (before != _layout.height) Q_EMIT heightDidChange();
}

void PBTagTokenField::resizeEvent(QResizeEvent*) {
    layOut();
}

void PBTagTokenField::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) update();
    if (event->type() != QEvent::FontChange) return;
    _lines.setFont(font());
    layOut();
}

// Painting

void PBTagTokenField::paintEvent(QPaintEvent*) {
    const PBThemes::Colors& colors = PBThemes::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool hasKeyboard = _editor->hasFocus();
    painter.setPen(QPen(hasKeyboard ? colors.accent : colors.dimSelection, 1));
    painter.setBrush(colors.browser);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setFont(_lines.font());
    for (std::size_t index = 0; index < _tokens.tokens().size(); ++index)
        paintToken(painter, index);
}

void PBTagTokenField::paintToken(QPainter& painter, std::size_t index) const {
    const PBThemes::Colors& colors = PBThemes::colors();
    const TagToken& token = _tokens.tokens()[index];
    const bool isSelected = _selected == static_cast<int>(index) || _selected == count();
    const QRectF frame = QRectF(_layout.tokens[index]).adjusted(0.5, 0.5, -0.5, -0.5);
    QColor ground = token.isOfAll ? colors.accent : colors.dimSelection;
    ground.setAlphaF(isSelected ? 1.0F : token.isOfAll ? 0.16F : 0.0F);
    QColor line = token.isOfAll ? colors.accent : colors.dimSelection;
    if (!isSelected) line.setAlphaF(0.6F);
    painter.setPen(QPen(line, 1, token.isOfAll ? Qt::SolidLine : Qt::DashLine));
    painter.setBrush(isSelected ? colors.accent : ground);
    painter.drawRoundedRect(frame, frame.height() / 2, frame.height() / 2);
    painter.setPen(
        isSelected      ? accentTextColor()
        : token.isOfAll ? colors.text
                        : colors.secondaryText);
    _lines.drawLeading(
        painter, frame.adjusted(tokenRoom, 0, -closeSize - tokenRoom + 4, 0), shownTag(token.text));
    const QPointF middle = QRectF(closeRect(index)).center();
    constexpr double arm = 2.5;
    painter.setPen(QPen(isSelected ? accentTextColor() : colors.secondaryText, 1.2));
    painter.drawLine(middle - QPointF(arm, arm), middle + QPointF(arm, arm));
    painter.drawLine(middle - QPointF(arm, -arm), middle + QPointF(arm, -arm));
}

QRect PBTagTokenField::closeRect(std::size_t index) const {
    const QRect& token = _layout.tokens[index];
    return {token.right() - closeSize - 2, token.top(), closeSize, token.height()};
}

int PBTagTokenField::tokenAt(const QPoint& point) const {
    const auto found = std::ranges::find_if(
        _layout.tokens, [&](const QRect& token) { return token.contains(point); });
    return found == _layout.tokens.end()
               ? -1
               : static_cast<int>(std::distance(_layout.tokens.begin(), found));
}

// Edits

void PBTagTokenField::closeToken() {
    takeTyped();
    tokensDidChange();
}

void PBTagTokenField::takeTyped() {
    const QString typed = _editor->text();
    _editor->clear();
    hideCompletions();
    addTyped(typed);
}

void PBTagTokenField::addTyped(const QString& typed) {
    const auto opened = std::exchange(_opened, std::nullopt);
    if (opened && typed == TagTokens::written(opened->text)) {
        _tokens.putBack(*opened); // nobody meant to change it
    } else {
        _tokens.add(TagTokens::unquoted(typed));
    }
}

void PBTagTokenField::openToken(std::size_t index) {
    const TagToken opened = _tokens.tokens()[index];
    _tokens.removeAt(index);
    takeTyped();
    _opened = opened;
    _editor->setText(TagTokens::written(opened.text));
    _editor->setFocus();
    tokensDidChange();
}

void PBTagTokenField::removeToken(std::size_t index) {
    _tokens.removeAt(index);
    _editor->setFocus();
    tokensDidChange();
}

void PBTagTokenField::giveToAll(const QString& tag) {
    _tokens.add(tag);
    tokensDidChange();
    commit();
}

void PBTagTokenField::commit() {
    if (!isEditing()) return;
    if (!_editor->text().isEmpty()) closeToken();
    hideCompletions();
    const TagsChange change = _tokens.changeFrom(_base);
    _base = _tokens;
    if (!change.isEmpty()) Q_EMIT tagChanged(change);
}

void PBTagTokenField::revert() {
    _editor->clear();
    _opened.reset();
    hideCompletions();
    if (_tokens == _base) return;
    _tokens = _base;
    tokensDidChange();
}

void PBTagTokenField::select(int index) {
    _selected = index;
    update();
}

void PBTagTokenField::copySelected() const {
    if (_selected < 0) return;
    const QString text =
        _selected == count()
            ? _tokens.written()
            : TagTokens::written(_tokens.tokens()[static_cast<std::size_t>(_selected)].text);
    QGuiApplication::clipboard()->setText(text);
}

void PBTagTokenField::removeSelected() {
    if (_selected == count()) {
        _tokens.clear();
    } else {
        _tokens.removeAt(static_cast<std::size_t>(_selected));
    }
    tokensDidChange();
}

// The editor

void PBTagTokenField::textEdited(const QString& text) {
    select(-1);
    const TagTokens::Parts parts = TagTokens::partsOf(text);
    if (parts.complete.isEmpty()) return complete(text);
    // One that was typed ends with the comma; behind the last one of a list that was pasted there
    // is none.
    for (const QString& part : parts.complete)
        addTyped(part);
    const bool isList = parts.complete.size() > 1 || !parts.rest.trimmed().isEmpty();
    _editor->setText(isList ? parts.rest : parts.rest.trimmed());
    if (isList) {
        closeToken();
    } else {
        hideCompletions();
        tokensDidChange();
    }
}

void PBTagTokenField::complete(const QString& part) {
    const QString typed = part.trimmed();
    QStringList found;
    if (!typed.isEmpty() && !typed.startsWith(u'"')) found = _completions(typed);
    found.removeIf([this, &typed](const QString& tag) {
        return tag == typed || std::ranges::any_of(_tokens.tokens(), [&](const TagToken& token) {
                   return token.isOfAll && token.text == tag;
               });
    });
    if (found.isEmpty()) return hideCompletions();
    _completer->popup()->setFont(font());
    _completionModel->setStringList(found.mid(0, mostCompletions));
    _completer->complete();
    _completer->popup()->setCurrentIndex({}); // what was typed counts until one is chosen
}

void PBTagTokenField::hideCompletions() {
    _completer->popup()->hide();
}

bool PBTagTokenField::keyPress(const QKeyEvent& event) {
    const bool hasChoice =
        _completer->popup()->isVisible() && _completer->popup()->currentIndex().isValid();
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (hasChoice) return false;
        if (_selected >= 0 && _selected < count()) {
            openToken(static_cast<std::size_t>(_selected));
        } else {
            commit();
        }
        return true;
    case Qt::Key_Escape:
        if (_completer->popup()->isVisible()) {
            hideCompletions();
        } else {
            revert();
        }
        return true;
    default:
        return tokenKeyPress(event);
    }
}

/// Keys that are about tokens: where there is no text before the cursor.
bool PBTagTokenField::tokenKeyPress(const QKeyEvent& event) {
    const bool isAtStart = _editor->cursorPosition() == 0 && !_editor->hasSelectedText();
    if (event.matches(QKeySequence::SelectAll) && _editor->text().isEmpty() && count() > 0) {
        select(count());
        return true;
    }
    if (_selected >= 0) {
        if (event.matches(QKeySequence::Copy) || event.matches(QKeySequence::Cut)) {
            copySelected();
            if (event.matches(QKeySequence::Cut)) removeSelected();
            return true;
        }
        if (event.key() == Qt::Key_Backspace || event.key() == Qt::Key_Delete) {
            removeSelected();
            return true;
        }
        if (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right) {
            const int next = _selected + (event.key() == Qt::Key_Left ? -1 : 1);
            select(next < 0 ? 0 : next >= count() ? -1 : next);
            return true;
        }
        // Modifiers alone, and what scrolls, leave the selection; text replaces it.
        if (!event.text().isEmpty()) select(-1);
        return false;
    }
    if (!isAtStart || count() == 0 || event.modifiers() != Qt::NoModifier) return false;
    if (event.key() == Qt::Key_Backspace) {
        openToken(static_cast<std::size_t>(count()) - 1);
        return true;
    }
    if (event.key() == Qt::Key_Left) {
        select(count() - 1);
        return true;
    }
    return false;
}

void PBTagTokenField::focusDidChange(bool hasFocus, Qt::FocusReason reason) {
    update();
    if (hasFocus) {
        Q_EMIT didBecomeFirstResponder();
        return;
    }
    // A popup, as that of the completions, and another window, give the keyboard back.
    if (reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason ||
        reason == Qt::MenuBarFocusReason)
        return;
    select(-1);
    commit();
}

// Mouse

void PBTagTokenField::mousePressEvent(QMouseEvent* event) {
    if (_isGathering) return event->ignore();
    const int token = tokenAt(event->position().toPoint());
    _editor->setFocus(Qt::MouseFocusReason);
    if (event->button() != Qt::LeftButton) return;
    if (token >= 0 &&
        closeRect(static_cast<std::size_t>(token)).contains(event->position().toPoint()))
        return removeToken(static_cast<std::size_t>(token));
    select(token);
}

void PBTagTokenField::mouseDoubleClickEvent(QMouseEvent* event) {
    const int token = tokenAt(event->position().toPoint());
    if (_isGathering || token < 0 || event->button() != Qt::LeftButton) return;
    openToken(static_cast<std::size_t>(token));
}

void PBTagTokenField::contextMenuEvent(QContextMenuEvent* event) {
    const int token = tokenAt(event->pos());
    if (_isGathering || token < 0) return event->ignore();
    select(token);
    // Other tags may be shown by the time that something is chosen.
    const TagToken about = _tokens.tokens()[static_cast<std::size_t>(token)];
    QMenu menu(this);
    QAction* give = menu.addAction(
        localizedString(u"TagGiveToAll"), this, [this, about] { giveToAll(about.text); });
    give->setVisible(!about.isOfAll);
    menu.addAction(localizedString(u"TagCopy"), this, [this] { copySelected(); });
    menu.addAction(localizedString(u"TagRemove"), this, [this, about] {
        const auto& tokens = _tokens.tokens();
        const auto found = std::ranges::find(tokens, about.text, &TagToken::text);
        removeToken(static_cast<std::size_t>(std::distance(tokens.begin(), found)));
    });
    menu.exec(event->globalPos());
}

bool PBTagTokenField::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const int token = tokenAt(help->pos());
    if (token < 0) {
        QToolTip::hideText();
        return true;
    }
    const auto index = static_cast<std::size_t>(token);
    const TagToken& shown = _tokens.tokens()[index];
    QString text = platform::harmlessText(shown.text.left(mostInToolTip));
    if (closeRect(index).contains(help->pos())) {
        text = localizedFormat(u"RemoveTagTip", {text});
    } else if (!shown.isOfAll) {
        text = localizedFormat(u"TagOfSome", {text});
    }
    QToolTip::showText(
        help->globalPos(),
        QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(text.toHtmlEscaped()), this,
        _layout.tokens[index]);
    return true;
}
