#include "codec/metadata/TextDecoding.h"

#include <QStringDecoder>

#include <algorithm>
#include <optional>

namespace codec {

namespace {

constexpr qsizetype longestText = 32768;

/// What Windows-1252 has at 0x80 to 0x9F; its five holes stay as they are in Latin-1.
constexpr char16_t windows1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

QString decodeWindows1252(QByteArrayView bytes) {
    QString text = QString::fromLatin1(bytes);
    for (QChar& character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code < 0xA0) character = QChar(windows1252[code - 0x80]);
    }
    return text;
}

/// The bytes without a last character that lacks some of its bytes.
QByteArrayView withoutCutCharacter(QByteArrayView bytes) {
    qsizetype start = bytes.size();
    while (start > 0 && bytes.size() - start < 4) {
        const auto byte = static_cast<unsigned char>(bytes[--start]);
        if ((byte & 0xC0) == 0x80) continue;
        const int length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return bytes.size() - start < length ? bytes.first(start) : bytes;
    }
    return bytes;
}

std::optional<QString> decodeUtf8(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (decoder.hasError()) return std::nullopt;
    return text;
}

/// Drops control characters, replaces halves of surrogate pairs, cuts and trims.
QString cleaned(const QString& text) {
    QString kept;
    kept.reserve(std::min(text.size(), longestText));
    for (qsizetype position = 0; position < text.size() && kept.size() < longestText; ++position) {
        const QChar character = text[position];
        if (character.isNull()) break;
        if (character.isHighSurrogate() && position + 1 < text.size() &&
            text[position + 1].isLowSurrogate()) {
            kept += character;
            kept += text[++position];
        } else if (character.isSurrogate()) {
            kept += QChar(QChar::ReplacementCharacter);
        } else if (character.category() != QChar::Other_Control || character.isSpace()) {
            kept += character;
        }
    }
    return kept.trimmed();
}

/// Letters of one byte each. A few Chinese characters may look the same in UTF-16, but hardly with
/// a blank among them, and never with half a character.
bool isSingleByteText(QByteArrayView bytes) {
    if (bytes.size() < 8 && bytes.size() % 2 == 0 && bytes.indexOf(' ') < 0) return false;
    return std::ranges::all_of(bytes, [](char byte) {
        return (byte >= ' ' && byte < 0x7F) || byte == '\n' || byte == '\r';
    });
}

QByteArrayView withoutPadding(QByteArrayView bytes) {
    while (!bytes.isEmpty() && (bytes.back() == '\0' || bytes.back() == ' '))
        bytes.chop(1);
    return bytes;
}

} // namespace

QString decodeText(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf('\0');
    if (end >= 0) bytes = bytes.first(end);
    bytes = bytes.first(std::min(bytes.size(), longestText * 4));
    if (auto text = decodeUtf8(bytes)) return cleaned(*text);
    if (auto text = decodeUtf8(withoutCutCharacter(bytes))) return cleaned(*text);
    return cleaned(decodeWindows1252(bytes));
}

QString decodeUtf16(QByteArrayView bytes, bool littleEndian) {
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        littleEndian = bytes.front() == '\xFF';
        bytes = bytes.sliced(2);
    }
    QString text;
    const qsizetype count = std::min(bytes.size() / 2, longestText);
    text.reserve(count);
    for (qsizetype position = 0; position < count; ++position) {
        const auto first = static_cast<unsigned char>(bytes[position * 2]);
        const auto second = static_cast<unsigned char>(bytes[position * 2 + 1]);
        text +=
            QChar(static_cast<char16_t>(littleEndian ? second << 8 | first : first << 8 | second));
    }
    return cleaned(text);
}

QString decodeComment(QByteArrayView bytes, bool littleEndian) {
    constexpr qsizetype headSize = 8;
    if (bytes.size() <= headSize) return {};
    const QByteArrayView text = bytes.sliced(headSize);
    if (!bytes.startsWith("UNICODE")) return decodeText(withoutPadding(text));
    // Some writers put plain letters behind this name, or use another order than their file.
    const QByteArrayView letters = withoutPadding(text);
    if (isSingleByteText(letters)) return decodeText(letters);
    qsizetype evenZeros = 0;
    qsizetype oddZeros = 0;
    for (qsizetype position = 0; position < letters.size(); ++position) {
        if (letters[position] == '\0') ++(position % 2 == 0 ? evenZeros : oddZeros);
    }
    if (evenZeros != oddZeros) littleEndian = oddZeros > evenZeros;
    return decodeUtf16(text, littleEndian);
}

} // namespace codec
