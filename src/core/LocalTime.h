#pragma once

#include <QDate>
#include <QTime>
#include <QtGlobal>

/// Conversions between instants and the system's local time, fast enough for every image of a large
/// collection: the system's own look at the files of the time zone again and again. The rules of
/// whole days are remembered for a while, so that a change of the system's time zone is seen within
/// a minute. Any thread.
namespace PBUtilities {

/// The local calendar day of an instant in seconds since 1970. The instant lies within some ten
/// thousand years of it.
[[nodiscard]] QDate localDateOf(qint64 secondsSince1970);

/// The instant of a valid local date and time. A time that the spring change skips counts on from
/// before the change.
[[nodiscard]] qint64 secondsOfLocalTime(QDate date, QTime time);

} // namespace PBUtilities
