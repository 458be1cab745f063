#pragma once

#include <QDateTime>
#include <QPair>
#include <QString>

/** A period of time as people ask for it. */
namespace Period {

enum Preset
{
    Today, ///< From midnight to now.
    Yesterday,
    LastHour,
    LastDay,  ///< 24 hours.
    ThisWeek, ///< From the midnight of the locale's first day of the week to now.
    PresetCount
};

QString title(Preset preset);

/**
 * Begin and end in the zone of @p now, as one that knows whole minutes: an end of "now" is the end of this minute.
 *
 * @param firstDay the day with which weeks begin
 */
QPair<QDateTime, QDateTime> of(Preset preset, const QDateTime& now, Qt::DayOfWeek firstDay);

/** Why nothing can be asked of a period, for people; nothing if all is well. A year is the most that is read at once. */
QString complaint(const QDateTime& from, const QDateTime& to, const QDateTime& now);

} // namespace Period
