#include "fileactions/copy/DuplicateNames.h"

#include <QRegularExpression>

namespace fileactions {

namespace {

constexpr qsizetype longestName = 255; // bytes

/// Without the ending "copy" or "copy 3", if it has one.
QByteArray withoutEnding(const QByteArray& base, const QString& word) {
    const QString text = QString::fromUtf8(base);
    // Of a name in another encoding only the bytes are known.
    if (text.toUtf8() != base) return base;
    const QString escaped = QRegularExpression::escape(word);
    for (const QString& pattern :
         {QStringLiteral(" %1 \\d").arg(escaped), QStringLiteral(" %1").arg(escaped)}) {
        const QRegularExpression expression(pattern, QRegularExpression::CaseInsensitiveOption);
        QRegularExpressionMatch last;
        for (auto matches = expression.globalMatch(text); matches.hasNext();)
            last = matches.next();
        if (!last.hasMatch()) continue;
        const bool isEnding = last.capturedEnd() == text.size() && last.capturedStart() > 0;
        return isEnding ? text.first(last.capturedStart()).toUtf8() : base;
    }
    return base;
}

} // namespace

DuplicateNames::DuplicateNames(const QByteArray& name, const QString& word) : _word(word.toUtf8()) {
    const qsizetype dot = name.lastIndexOf('.');
    _extension = dot > 0 ? name.sliced(dot) : QByteArray();
    _base = withoutEnding(dot > 0 ? name.first(dot) : name, word);
}

QByteArray DuplicateNames::name(std::int64_t n) const {
    const QByteArray ending =
        ' ' + _word + (n > 0 ? ' ' + QByteArray::number(n) : QByteArray()) + _extension;
    QByteArray base = _base;
    while (base.size() + ending.size() > longestName && !base.isEmpty()) {
        // Whole characters of UTF-8: the last byte of one, and what is before it down to its first.
        bool isWithin = true;
        while (isWithin && !base.isEmpty()) {
            isWithin = (static_cast<unsigned char>(base.back()) & 0xC0) == 0x80;
            base.chop(1);
        }
    }
    return base + ending;
}

QByteArray portableFolderName(const QByteArray& name) {
    QByteArray portable = name;
    for (char& c : portable) {
        const auto code = static_cast<unsigned char>(c);
        constexpr unsigned char deleteCode = 0x7F;
        if (code < ' ' || code == deleteCode || QByteArrayView("<>:\"\\|?*/").contains(c)) c = '_';
    }
    if (portable.endsWith('.') || portable.endsWith(' ')) portable.back() = '_';
    return portable;
}

} // namespace fileactions
