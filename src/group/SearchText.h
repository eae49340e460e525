#pragma once

#include <QString>
#include <QStringList>

namespace group {

/// What the user looks for in the names of files: words, all of which a name has to hold, in any
/// order and in any case; what stands in quotes is one word with its blanks. Accented letters are
/// the same whether they are stored as one character or as two. Made once for many names.
class SearchText {
public:
    SearchText() = default;
    /// Implicit: a text is looked for as the user typed it.
    SearchText(const QString& text); // NOLINT(google-explicit-constructor)

    /// Nothing is looked for: every name matches.
    [[nodiscard]] bool isEmpty() const { return _words.isEmpty(); }
    [[nodiscard]] bool matches(const QString& name) const;
    [[nodiscard]] bool operator==(const SearchText& other) const = default;

private:
    QStringList _words; ///< in normal form
};

} // namespace group
