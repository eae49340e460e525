#include "info/tags/TagTokens.h"

#include "core/Texts.h"

#include <algorithm>

namespace {

constexpr QChar quote = u'"';

bool isSameTag(const QString& left, const QString& right) {
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

bool isSeparator(QChar character) {
    return character == u',' || character == u'\n' || character == u'\r' ||
           character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
}

bool hasExactly(const std::vector<TagToken>& tokens, const QString& tag) {
    return std::ranges::find(tokens, tag, &TagToken::text) != tokens.end();
}

} // namespace

TagTokens::TagTokens(const MergedTags& tags) {
    for (const QString& tag : tags.ofAll)
        _tokens.push_back({tag, true});
    for (const QString& tag : tags.ofSome)
        _tokens.push_back({tag, false});
}

void TagTokens::add(const QString& tag) {
    const QString added = cleaned(tag);
    if (added.isEmpty()) return;
    auto known = std::ranges::find(_tokens, added, &TagToken::text);
    if (known == _tokens.end()) {
        known = std::ranges::find_if(
            _tokens, [&](const TagToken& token) { return isSameTag(token.text, added); });
    }
    if (known == _tokens.end()) {
        _tokens.push_back({added, true});
    } else {
        known->isOfAll = true;
    }
}

void TagTokens::putBack(const TagToken& token) {
    if (!hasExactly(_tokens, token.text)) _tokens.push_back(token);
}

void TagTokens::removeAt(std::size_t index) {
    if (index < _tokens.size()) _tokens.erase(_tokens.begin() + static_cast<std::ptrdiff_t>(index));
}

TagsChange TagTokens::changeFrom(const TagTokens& before) const {
    // Of two tags that differ in case alone, one can be taken away; one that was typed anew in
    // another case is the same.
    const auto has = [](const std::vector<TagToken>& tokens, const QString& tag,
                        const std::vector<TagToken>& others, bool ofAllOnly) {
        return std::ranges::any_of(tokens, [&](const TagToken& token) {
            if (ofAllOnly && !token.isOfAll) return false;
            return token.text == tag ||
                   (isSameTag(token.text, tag) && !hasExactly(others, token.text));
        });
    };
    TagsChange change;
    for (const TagToken& token : _tokens) {
        if (token.isOfAll && !has(before._tokens, token.text, _tokens, true))
            change.added.append(token.text);
    }
    for (const TagToken& token : before._tokens) {
        if (!has(_tokens, token.text, before._tokens, false)) change.removed.append(token.text);
    }
    return change;
}

QString TagTokens::cleaned(const QString& text) {
    return PBUtilities::removeNewline(text).trimmed();
}

QString TagTokens::written(const QString& tag) {
    if (!tag.startsWith(quote) && std::ranges::none_of(tag, isSeparator)) return tag;
    QString inner = tag;
    inner.replace(quote, QStringLiteral("\"\""));
    return quote + inner + quote;
}

QString TagTokens::written() const {
    QStringList tags;
    for (const TagToken& token : _tokens)
        tags.append(written(token.text));
    return tags.join(QStringLiteral(", "));
}

TagTokens::Parts TagTokens::partsOf(const QString& text) {
    Parts parts;
    qsizetype start = 0;
    bool isQuoted = false;
    for (qsizetype position = 0; position < text.size(); ++position) {
        const QChar character = text[position];
        if (character == quote && isQuoted && text.mid(position + 1, 1) == quote) {
            ++position; // one that stands in the tag
        } else if (character == quote) {
            // Quotes mean something only where they begin a tag.
            const QStringView before = QStringView(text).sliced(start, position - start);
            isQuoted = !isQuoted && before.trimmed().isEmpty();
        } else if (isSeparator(character) && !isQuoted) {
            const QString part = text.sliced(start, position - start);
            if (!part.trimmed().isEmpty()) parts.complete.append(part);
            start = position + 1;
        }
    }
    parts.rest = text.sliced(start);
    return parts;
}

QString TagTokens::unquoted(const QString& text) {
    const QString typed = text.trimmed();
    if (typed.size() < 2 || !typed.startsWith(quote) || !typed.endsWith(quote))
        return cleaned(text);
    QString inner = typed.sliced(1, typed.size() - 2);
    inner.replace(QStringLiteral("\"\""), QStringLiteral("\""));
    return cleaned(inner);
}
