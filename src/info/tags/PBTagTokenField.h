#pragma once

#include "info/tags/TagTokens.h"
#include "ui/TextLines.h"

#include <QRect>
#include <QWidget>

#include <functional>
#include <optional>
#include <vector>

class QCompleter;
class QStringListModel;
class TagEditor;

/// The tags of photographs as tokens, with a line to type further ones in. A comma or Return closes
/// what was typed to a token; Backspace before the line opens the last one again; a pasted list
/// becomes tokens. Tokens of some of the photographs only are pale. Main thread.
///
/// An edit begins with the first change, and ends with Return, with the loss of the keyboard, or
/// when its owner takes it; then `tagChanged` is sent, once, and only where something is other than
/// before. Escape takes it back.
class PBTagTokenField final : public QWidget {
    Q_OBJECT

public:
    /// Tags that contain the text, the most used first.
    using Completions = std::function<QStringList(const QString& part)>;

    explicit PBTagTokenField(Completions completions, QWidget* parent = nullptr);
    ~PBTagTokenField() override;

    /// Shows what the catalogue has, unless an edit has begun.
    void setTags(const MergedTags& tags);
    /// The same, and drops an edit.
    void resetTags(const MergedTags& tags);
    /// Not all photographs were read yet: nothing is shown, and nothing can be typed.
    void setGathering();
    [[nodiscard]] const TagTokens& tokens() const { return _tokens; }

    /// Something was typed or changed that was not sent.
    [[nodiscard]] bool isEditing() const;
    /// Ends an edit that has begun.
    void commit();
    /// The line that is typed in; it has the keyboard when this widget has it.
    [[nodiscard]] QWidget& editor() const;

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    void didBecomeFirstResponder();
    void tagChanged(const TagsChange& change);
    /// It wants another height.
    void heightDidChange();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;

private:
    friend class TagEditor;
    struct Layout {
        std::vector<QRect> tokens;
        QRect editor;
        int height = 0;
    };

    // What the editor wants.
    /// Answers whether the key was this field's.
    [[nodiscard]] bool keyPress(const QKeyEvent& event);
    [[nodiscard]] bool tokenKeyPress(const QKeyEvent& event);
    void textEdited(const QString& text);
    void focusDidChange(bool hasFocus, Qt::FocusReason reason);

    [[nodiscard]] Layout layoutFor(int width) const;
    void layOut();
    void tokensDidChange();
    void closeToken();
    void openToken(std::size_t index);
    void removeToken(std::size_t index);
    void giveToAll(const QString& tag);
    /// What is in the editor becomes a token.
    void takeTyped();
    void addTyped(const QString& typed);
    /// -1 for none, the number of tokens for all of them.
    void select(int index);
    void copySelected() const;
    void removeSelected();
    void revert();
    void complete(const QString& part);
    void hideCompletions();
    /// -1 for none.
    [[nodiscard]] int tokenAt(const QPoint& point) const;
    [[nodiscard]] QRect closeRect(std::size_t index) const;
    void paintToken(QPainter& painter, std::size_t index) const;
    [[nodiscard]] int count() const { return static_cast<int>(_tokens.tokens().size()); }

    const Completions _completions;
    TextLines _lines;
    TagTokens _tokens;
    TagTokens _base; ///< as the catalogue has them
    Layout _layout;
    std::optional<TagToken> _opened; ///< what the editor had at first
    int _selected = -1;
    bool _isGathering = false;
    TagEditor* _editor;
    QStringListModel* _completionModel;
    QCompleter* _completer;
};
