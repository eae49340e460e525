#include "group/SearchText.h"

#include <algorithm>

namespace group {

namespace {

bool isQuote(QChar character) {
    // Straight ones and those that word processors and phones put in their place.
    return QStringView(u"\"\u201C\u201D\u201E\u00AB\u00BB").contains(character);
}

} // namespace

SearchText::SearchText(const QString& text) {
    QString word;
    bool isQuoted = false;
    const auto endWord = [&] {
        if (!word.trimmed().isEmpty()) _words.append(word);
        word.clear();
    };
    for (const QChar character : text.normalized(QString::NormalizationForm_C)) {
        if (isQuote(character)) {
            endWord();
            isQuoted = !isQuoted;
        } else if (!isQuoted && character.isSpace()) {
            endWord();
        } else {
            word.append(character);
        }
    }
    endWord();
}

bool SearchText::matches(const QString& name) const {
    if (_words.isEmpty()) return true;
    const QString normal = name.normalized(QString::NormalizationForm_C);
    return std::ranges::all_of(
        _words, [&](const QString& word) { return normal.contains(word, Qt::CaseInsensitive); });
}

} // namespace group
