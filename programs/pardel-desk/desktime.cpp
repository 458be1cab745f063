#include "desktime.h"

#include <QLatin1Char>

#include <cstdlib>

namespace {

Qt::TimeSpec shownSpec = Qt::LocalTime;

} // namespace

void DeskTime::setUtc(bool utc)
{
    shownSpec = utc ? Qt::UTC : Qt::LocalTime;
}

Qt::TimeSpec DeskTime::base()
{
    return shownSpec;
}

QDateTime DeskTime::at(qint64 time)
{
    return QDateTime::fromSecsSinceEpoch(time, shownSpec);
}

QString DeskTime::text(qint64 time)
{
    return at(time).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss ")) + zone(time);
}

QString DeskTime::period(qint64 from, qint64 to)
{
    const bool wholeMinutes = from % 60 == 0 && to % 60 == 0;
    const QString clock = wholeMinutes ? QStringLiteral("hh:mm") : QStringLiteral("hh:mm:ss");
    const QString day = QStringLiteral("yyyy-MM-dd ");
    const bool sameDay = at(from).date() == at(to).date();
    const QLatin1Char space(' ');
    QString text = at(from).toString(day + clock);
    if (zone(from) != zone(to))
        text += space + zone(from);
    return text + QStringLiteral(" – ") + at(to).toString(sameDay ? clock : day + clock) + space + zone(to);
}

QString DeskTime::zone(qint64 time)
{
    if (shownSpec == Qt::UTC)
        return QStringLiteral("UTC");
    const int minutes = at(time).offsetFromUtc() / 60;
    const QLatin1Char zero('0');
    return QStringLiteral("%1%2:%3")
        .arg(minutes < 0 ? QLatin1Char('-') : QLatin1Char('+'))
        .arg(std::abs(minutes) / 60, 2, 10, zero)
        .arg(std::abs(minutes) % 60, 2, 10, zero);
}
