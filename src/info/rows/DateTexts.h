#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>

#include <optional>

/// Dates in the order of a locale: day, short name of the month, year, and the time with seconds.
/// Any thread.
namespace DateTexts {

[[nodiscard]] QString dateText(QDate date, const QLocale& locale);
[[nodiscard]] QString dateTimeText(const QDateTime& dateTime, const QLocale& locale);

/// The same for a date as cameras write it, "yyyy:MM:dd HH:mm:ss" or "yyyy:MM:dd"; nothing for a
/// text that is none, which cameras without a clock write too.
[[nodiscard]] std::optional<QString> cameraDateText(const QString& text, const QLocale& locale);

} // namespace DateTexts
