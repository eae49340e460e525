#include "core/Texts.h"

#include "core/LocalTime.h"
#include "platform/program/LocalizedTexts.h"

#include <QDateTime>

#include <algorithm>

namespace PBUtilities {

namespace {

bool isNewline(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x0A && code <= 0x0D) || code == 0x85 || code == 0x2028 || code == 0x2029;
}

/// The number that the ASCII digits at this position make; -1 if there is anything else.
int digitsAt(QStringView text, qsizetype position, qsizetype count) {
    int number = 0;
    for (qsizetype end = position + count; position < end; ++position) {
        const char16_t character = text[position].unicode();
        if (character < u'0' || character > u'9') return -1;
        number = number * 10 + (character - u'0');
    }
    return number;
}

} // namespace

QString stringWithFileSize(quint64 size) {
    // The narrowing to single precision is part of what the user sees: sizes of neighbouring files
    // round to the same text.
    const auto narrowed = static_cast<double>(static_cast<float>(size));
    if (size <= 1023) return platform::localizedFormat(u"FileSize_Bytes", {size});
    if (size <= 0xFFFFF)
        return platform::localizedFormat(u"FileSize_KB", {narrowed * (1.0 / 1024)});
    if (size <= 0x3FFFFFFF) {
        return platform::localizedFormat(u"FileSize_MB", {narrowed * (1.0 / 1048576)});
    }
    return platform::localizedFormat(u"FileSize_GB", {narrowed * (1.0 / 1073741824)});
}

QString removeNewline(const QString& text) {
    if (std::ranges::none_of(text, isNewline)) return text;
    QString line = text;
    std::replace_if(line.begin(), line.end(), isNewline, QChar(u' '));
    return line;
}

bool isEmptyOrWhitespace(QStringView text) {
    return std::ranges::all_of(text, [](QChar character) { return character.isSpace(); });
}

std::optional<PBDate> exifDate(QStringView text) {
    constexpr QStringView pattern = u"####:##:## ##:##:##";
    if (text.size() != pattern.size()) return std::nullopt;
    for (qsizetype position = 0; position < pattern.size(); ++position) {
        if (pattern[position] != u'#' && text[position] != pattern[position]) return std::nullopt;
    }
    const int year = digitsAt(text, 0, 4);
    const QDate date(year, digitsAt(text, 5, 2), digitsAt(text, 8, 2));
    const QTime time(digitsAt(text, 11, 2), digitsAt(text, 14, 2), digitsAt(text, 17, 2));
    if (year < 1 || !date.isValid() || !time.isValid()) return std::nullopt;

    return PBDate{static_cast<double>(secondsOfLocalTime(date, time))};
}

} // namespace PBUtilities
