#pragma once

#include "info/rows/GeneralMerge.h"
#include "info/tags/TagsChange.h"

#include <QString>
#include <QStringList>

#include <vector>

/// A tag in the field: of all photographs, or only of some of them.
struct TagToken {
    QString text;
    bool isOfAll = true;

    bool operator==(const TagToken&) const = default;
};

/// The tags in the field, and how they read as text. In a text, tags are separated by commas and
/// line breaks; one with a comma or line break in it, or with a quote before it, stands in double
/// quotes, its own doubled. Tags are compared without regard to case. A value; any thread.
class TagTokens {
public:
    TagTokens() = default;
    /// As the catalogue has them.
    explicit TagTokens(const MergedTags& tags);

    [[nodiscard]] const std::vector<TagToken>& tokens() const { return _tokens; }
    [[nodiscard]] bool isEmpty() const { return _tokens.empty(); }

    /// Adds a tag for all photographs, at the end. One that is there already stays where it is, and
    /// all have it from now on; nothing is added for an empty text.
    void add(const QString& tag);
    /// Puts one that was taken out at the end, as it was, unless it is there.
    void putBack(const TagToken& token);
    void removeAt(std::size_t index);
    void clear() { _tokens.clear(); }

    /// What makes photographs with the tags of `before` have these.
    [[nodiscard]] TagsChange changeFrom(const TagTokens& before) const;

    /// A tag as it is stored: in one line, without blanks around it.
    [[nodiscard]] static QString cleaned(const QString& text);
    /// A tag as it is written in a list.
    [[nodiscard]] static QString written(const QString& tag);
    /// All of them as a list.
    [[nodiscard]] QString written() const;

    /// A list that is being typed or was pasted.
    struct Parts {
        QStringList complete; ///< what stands before separators
        QString rest;         ///< behind the last one, as it was typed
    };
    [[nodiscard]] static Parts partsOf(const QString& text);
    /// What was typed as one tag: without the quotes around it.
    [[nodiscard]] static QString unquoted(const QString& text);

    bool operator==(const TagTokens&) const = default;

private:
    std::vector<TagToken> _tokens;
};
