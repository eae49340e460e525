#include "platform/program/HarmlessText.h"

#include <algorithm>

namespace platform {

namespace {

constexpr QChar firstStrongIsolate(0x2068);
constexpr QChar popDirectionalIsolate(0x2069);

/// The embeddings, overrides and isolates of Unicode's bidirectional algorithm, and their ends.
bool turnsDirection(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

} // namespace

QString harmlessText(const QString& text) {
    if (std::ranges::none_of(text, turnsDirection)) return text;
    QString harmless = text;
    std::replace_if(
        harmless.begin(), harmless.end(), turnsDirection, QChar(QChar::ReplacementCharacter));
    return harmless;
}

QString isolatedText(const QString& text) {
    const QString harmless = harmlessText(text);
    const bool mayReorder = std::ranges::any_of(harmless, [](QChar character) {
        const QChar::Direction direction = character.direction();
        // Halves of pairs have no direction of their own, but may be letters from right to left.
        return direction == QChar::DirR || direction == QChar::DirAL || character.isSurrogate();
    });
    return mayReorder ? firstStrongIsolate + harmless + popDirectionalIsolate : harmless;
}

QString briefText(const QString& text, qsizetype most) {
    const QString line = text.simplified();
    if (line.size() <= most) return line;
    const qsizetype half = most / 2;
    // Halves of pairs stay together.
    const qsizetype start = half - (line[half - 1].isHighSurrogate() ? 1 : 0);
    const qsizetype end = half - (line[line.size() - half].isLowSurrogate() ? 1 : 0);
    constexpr QChar ellipsis(0x2026);
    return line.left(start) + ellipsis + line.right(end);
}

} // namespace platform
