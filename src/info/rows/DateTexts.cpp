#include "info/rows/DateTexts.h"

#include <QRegularExpression>

namespace DateTexts {

namespace {

/// The long format has the order, the full month and the weekday.
QString dateFormat(const QLocale& locale) {
    static const QRegularExpression weekday(
        QStringLiteral("^dddd?[\\s,،.、]*|[\\s,،(]*dddd?\\)?$|dddd?[\\s,،]*"));
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(weekday);
    format.replace(QStringLiteral("MMMM"), QStringLiteral("MMM"));
    return format.trimmed();
}

/// The long format has the seconds, and the zone.
QString timeFormat(const QLocale& locale) {
    static const QRegularExpression zone(QStringLiteral("[\\s(\\[]*t+[)\\]]*"));
    QString format = locale.timeFormat(QLocale::LongFormat);
    format.remove(zone);
    return format.trimmed();
}

} // namespace

QString dateText(QDate date, const QLocale& locale) {
    return locale.toString(date, dateFormat(locale));
}

QString dateTimeText(const QDateTime& dateTime, const QLocale& locale) {
    return dateText(dateTime.date(), locale) + QStringLiteral(", ") +
           locale.toString(dateTime.time(), timeFormat(locale));
}

std::optional<QString> cameraDateText(const QString& text, const QLocale& locale) {
    constexpr qsizetype dateLength = 10;
    const QString told = text.trimmed();
    const QDate date = QDate::fromString(told.left(dateLength), QStringLiteral("yyyy:MM:dd"));
    if (!date.isValid()) return std::nullopt;
    if (told.size() == dateLength) return dateText(date, locale);
    const QTime time = QTime::fromString(told.mid(dateLength), QStringLiteral(" HH:mm:ss"));
    if (!time.isValid()) return std::nullopt;
    // A clock on a wall: in no zone, or the hour that a change to summer time skips would move.
    return dateTimeText(QDateTime(date, time, Qt::UTC), locale);
}

} // namespace DateTexts
