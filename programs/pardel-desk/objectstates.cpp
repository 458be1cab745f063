#include "objectstates.h"

#include "desktime.h"
#include "track.h"

#include <QDateTime>
#include <QSettings>

#include <algorithm>

ObjectStates::Thresholds ObjectStates::Thresholds::read(const QSettings& ini)
{
    const auto seconds = [&](const char* key, qint64 standard) {
        bool isNumber = false;
        const qint64 value = ini.value(QStringLiteral("Live/") + QLatin1String(key), standard).toLongLong(&isNumber);
        return isNumber ? std::max<qint64>(value, 1) : standard;
    };
    const Thresholds standard;
    const qint64 silent = seconds("SilentSeconds", standard.silent);
    return {silent, std::max(silent, seconds("FaintSeconds", std::max(silent, standard.faint)))};
}

ObjectStates::ObjectStates(const Thresholds& thresholds, QObject* parent)
    : QObject(parent), m_thresholds(thresholds), m_now(QDateTime::currentSecsSinceEpoch())
{
    m_clock.setInterval(1000);
    connect(&m_clock, &QTimer::timeout, this, [this] { setNow(QDateTime::currentSecsSinceEpoch()); });
    m_clock.start();
}

void ObjectStates::hear(qint32 id, qint32 time)
{
    if (!isCredible(time))
        return;
    qint64& heard = m_heard[id];
    heard = std::max(heard, std::min<qint64>(time, m_now));
}

void ObjectStates::setAlarm(qint32 id, bool alarm)
{
    if (alarm)
        m_alarms.insert(id);
    else
        m_alarms.remove(id);
    Q_EMIT changed();
}

void ObjectStates::setNow(qint64 now)
{
    m_now = now;
    Q_EMIT changed();
    Q_EMIT secondPassed();
}

Presence ObjectStates::presence(qint32 id) const
{
    const auto heard = m_heard.constFind(id);
    if (heard == m_heard.cend())
        return Presence::NeverHeard;
    return m_now - *heard > m_thresholds.silent ? Presence::Silent : Presence::Online;
}

qint64 ObjectStates::age(qint32 id) const
{
    const auto heard = m_heard.constFind(id);
    return heard == m_heard.cend() ? -1 : std::max<qint64>(m_now - *heard, 0);
}

QString ObjectStates::word(qint32 id) const
{
    switch (presence(id)) {
    case Presence::Online: return tr("online");
    case Presence::Silent: return tr("silent");
    case Presence::NeverHeard: break;
    }
    return tr("never heard");
}

QString ObjectStates::text(qint32 id) const
{
    if (presence(id) != Presence::Silent)
        return word(id);
    const QDateTime since = DeskTime::at(m_heard.value(id));
    const bool today = since.date() == DeskTime::at(m_now).date();
    return tr("silent since %1")
        .arg(since.toString(today ? QStringLiteral("hh:mm ") : QStringLiteral("yyyy-MM-dd hh:mm ")) +
             DeskTime::zone(m_heard.value(id)));
}

QString ObjectStates::shortText(qint32 id) const
{
    const QString state = presence(id) == Presence::Silent ? tr("silent %1").arg(ageText(age(id))) : text(id);
    return hasAlarm(id) ? tr("new alarm, %1").arg(state) : state;
}

double ObjectStates::opacity(qint64 time) const
{
    constexpr double least = 0.25;
    const qint64 age = m_now - time;
    if (age <= m_thresholds.silent)
        return 1;
    if (age >= m_thresholds.faint)
        return least;
    return 1 - (1 - least) * static_cast<double>(age - m_thresholds.silent) /
                   static_cast<double>(m_thresholds.faint - m_thresholds.silent);
}

int ObjectStates::onlineCount() const
{
    return static_cast<int>(std::count_if(m_heard.cbegin(), m_heard.cend(),
                                          [this](qint64 heard) { return m_now - heard <= m_thresholds.silent; }));
}

QString ObjectStates::ageText(qint64 seconds)
{
    if (seconds < 0)
        return {};
    if (seconds < 60)
        return tr("%1 s").arg(seconds);
    if (seconds < 60 * 60)
        return tr("%1 min").arg(seconds / 60);
    if (seconds < 48 * 60 * 60)
        return tr("%1 h").arg(seconds / (60 * 60));
    return tr("%1 d").arg(seconds / (24 * 60 * 60));
}
