#include "period.h"

#include <QCoreApplication>

namespace {

constexpr qint64 longestDays = 366;

QString translated(const char* text)
{
    return QCoreApplication::translate("Period", text);
}

/// The first moment of a day: where a clock is put forward at midnight, that is not 0:00.
QDateTime beginOf(const QDate& day, const QDateTime& now)
{
    return now.timeSpec() == Qt::UTC ? day.startOfDay(Qt::UTC) : day.startOfDay();
}

} // namespace

QString Period::title(Preset preset)
{
    switch (preset) {
    case Today: return translated(QT_TRANSLATE_NOOP("Period", "&Today"));
    case Yesterday: return translated(QT_TRANSLATE_NOOP("Period", "&Yesterday"));
    case LastHour: return translated(QT_TRANSLATE_NOOP("Period", "Last &hour"));
    case LastDay: return translated(QT_TRANSLATE_NOOP("Period", "Last &24 hours"));
    case ThisWeek: return translated(QT_TRANSLATE_NOOP("Period", "This &week"));
    default: return {};
    }
}

QPair<QDateTime, QDateTime> Period::of(Preset preset, const QDateTime& now, Qt::DayOfWeek firstDay)
{
    const QDateTime end = now.addSecs(60 - now.time().second());
    const QDate today = now.date();
    switch (preset) {
    case Yesterday: return {beginOf(today.addDays(-1), now), beginOf(today, now)};
    case LastHour: return {end.addSecs(-60 * 60), end};
    case LastDay: return {end.addSecs(-24 * 60 * 60), end};
    case ThisWeek: return {beginOf(today.addDays(-((today.dayOfWeek() - firstDay + 7) % 7)), now), end};
    default: return {beginOf(today, now), end};
    }
}

QString Period::complaint(const QDateTime& from, const QDateTime& to, const QDateTime& now)
{
    if (from >= to)
        return translated(QT_TRANSLATE_NOOP("Period", "The period ends before it begins"));
    if (from > now)
        return translated(QT_TRANSLATE_NOOP("Period", "The period has not begun yet"));
    if (from.date() < QDate(1970, 1, 2))
        return translated(QT_TRANSLATE_NOOP("Period", "There is nothing from before 1970"));
    if (from.daysTo(to) > longestDays)
        return translated(QT_TRANSLATE_NOOP("Period", "The period is longer than a year"));
    return {};
}
