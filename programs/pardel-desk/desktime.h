#pragma once

#include <QDateTime>
#include <QString>

/**
 * How the desk shows times, everywhere in the same way: in local time until setUtc says otherwise, and always with the
 * difference to UTC, as the hour that a clock shows twice in autumn is told apart only by that.
 */
namespace DeskTime {

void setUtc(bool utc);
Qt::TimeSpec base();

/** A moment in Unix seconds, in the desk's zone. */
QDateTime at(qint64 time);

/** As "2026-01-31 08:15:00 +01:00", in UTC "2026-01-31 07:15:00 UTC". */
QString text(qint64 time);

/** What text() has behind the time. */
QString zone(qint64 time);

/** As "2026-01-31 08:15 – 17:00 +01:00": what both ends have in common once, and seconds only if they are not 0. */
QString period(qint64 from, qint64 to);

} // namespace DeskTime
