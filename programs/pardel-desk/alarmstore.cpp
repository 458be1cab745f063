#include "alarmstore.h"

#include "archiveschema.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>

namespace {

constexpr std::size_t mostWaiting = 20'000;
const QString chosen = QStringLiteral(" FROM \"DeskAlarms\" WHERE \"Time\" > ? OR \"Acknowledged\" = 0");

} // namespace

AlarmStore::AlarmStore(const QString& connection)
    : m_name(QStringLiteral("desk-alarms-") + QUuid::createUuid().toString()),
      m_db(QSqlDatabase::cloneDatabase(connection, m_name))
{
    if (ArchiveSchema::isPostgres(m_db))
        m_db.setConnectOptions(
            (m_db.connectOptions().split(QLatin1Char(';'), Qt::SkipEmptyParts) << QStringLiteral("connect_timeout=4"))
                .join(QLatin1Char(';')));
}

AlarmStore::~AlarmStore()
{
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

void AlarmStore::add(const DeskAlarm& alarm)
{
    enqueue({QStringLiteral("INSERT INTO \"DeskAlarms\" (\"Object\", \"Time\", \"Latitude\", \"Longitude\", \"Speed\") "
                            "SELECT CAST(? AS bigint), CAST(? AS bigint), CAST(? AS bigint), CAST(? AS bigint), "
                            "CAST(? AS bigint) WHERE NOT EXISTS (SELECT 1 FROM \"DeskAlarms\" WHERE \"Object\" = ? AND "
                            "\"Time\" <= ? AND (\"Ended\" = 0 OR \"Ended\" > ?)) ON CONFLICT DO NOTHING"),
             {alarm.object, alarm.time, alarm.latitude, alarm.longitude, alarm.speed, alarm.object, alarm.time,
              alarm.time}});
}

void AlarmStore::end(const DeskAlarm& alarm)
{
    enqueue({QStringLiteral("UPDATE \"DeskAlarms\" SET \"Ended\" = ? WHERE \"Object\" = ? AND \"Time\" < ? AND "
                            "\"Ended\" = 0"),
             {alarm.ended, alarm.object, alarm.ended}});
}

void AlarmStore::acknowledge(const DeskAlarm& alarm)
{
    enqueue({QStringLiteral("UPDATE \"DeskAlarms\" SET \"Acknowledged\" = ?, \"By\" = ?, \"Remark\" = ? WHERE "
                            "\"Object\" = ? AND \"Time\" = ? AND \"Acknowledged\" = 0"),
             {alarm.acknowledged, alarm.by, alarm.remark.isNull() ? QLatin1String("") : alarm.remark, alarm.object,
              alarm.time}});
}

void AlarmStore::enqueue(const Change& change)
{
    if (m_waiting.size() < mostWaiting)
        m_waiting.push_back(change);
    else
        ++m_lost;
}

std::optional<QVector<DeskAlarm>> AlarmStore::exchange(qint64 since)
{
    m_trouble.clear();
    if (!open() || !write())
        return {};
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT COUNT(*), SUM(\"Ended\"), SUM(\"Acknowledged\")") + chosen);
    query.addBindValue(since);
    if (!query.exec() || !query.next()) {
        fail(query.lastError());
        return {};
    }
    const QVariantList seen{query.value(0), query.value(1), query.value(2)};
    if (seen == m_seen)
        return {};
    query.prepare(QStringLiteral("SELECT \"Object\", \"Time\", \"Latitude\", \"Longitude\", \"Speed\", \"Ended\", "
                                 "\"Acknowledged\", \"By\", \"Remark\"") +
                  chosen + QStringLiteral(" ORDER BY \"Time\" DESC LIMIT %1").arg(AlarmList::mostRows));
    query.addBindValue(since);
    if (!query.exec()) {
        fail(query.lastError());
        return {};
    }
    QVector<DeskAlarm> alarms;
    while (query.next()) {
        const auto number = [&](int column) { return static_cast<qint32>(query.value(column).toLongLong()); };
        alarms.append({number(0), query.value(1).toLongLong(), number(2), number(3), number(4),
                       query.value(5).toLongLong(), query.value(6).toLongLong(), query.value(7).toString(),
                       query.value(8).toString(), true});
    }
    m_seen = seen;
    return alarms;
}

bool AlarmStore::open()
{
    if (m_db.isOpen() && m_ready)
        return true;
    if (!m_db.isOpen() && !m_db.open())
        return fail(m_db.lastError());
    QSqlQuery query(m_db);
    if (!ArchiveSchema::isPostgres(m_db))
        query.exec(QStringLiteral("PRAGMA busy_timeout = 50"));
    // Asked first: who may not make tables may still use one that is there.
    m_ready = query.exec(QStringLiteral("SELECT 1 FROM \"DeskAlarms\" LIMIT 1")) ||
              query.exec(QStringLiteral(
                  "CREATE TABLE IF NOT EXISTS \"DeskAlarms\" (\"Object\" bigint NOT NULL, \"Time\" bigint NOT NULL, "
                  "\"Latitude\" bigint NOT NULL DEFAULT 0, \"Longitude\" bigint NOT NULL DEFAULT 0, "
                  "\"Speed\" bigint NOT NULL DEFAULT 0, \"Ended\" bigint NOT NULL DEFAULT 0, "
                  "\"Acknowledged\" bigint NOT NULL DEFAULT 0, \"By\" text NOT NULL DEFAULT '', "
                  "\"Remark\" text NOT NULL DEFAULT '', PRIMARY KEY (\"Object\", \"Time\"))"));
    return m_ready || fail(query.lastError());
}

bool AlarmStore::write()
{
    if (m_waiting.empty())
        return true;
    if (!m_db.transaction())
        return fail(m_db.lastError());
    for (const Change& change : m_waiting) {
        QSqlQuery query(m_db);
        query.prepare(change.statement);
        for (const QVariant& value : change.values)
            query.addBindValue(value);
        if (!query.exec()) {
            const QSqlError error = query.lastError();
            query.finish();
            m_db.rollback();
            return fail(error);
        }
    }
    if (!m_db.commit()) {
        const QSqlError error = m_db.lastError();
        m_db.rollback();
        return fail(error);
    }
    m_waiting.clear();
    return true;
}

/// The connection is made anew next time, as nothing tells reliably whether it is still there.
bool AlarmStore::fail(const QSqlError& error)
{
    m_trouble = tr("Alarms are not shared with other desks: %1").arg(ArchiveSchema::errorText(error));
    if (m_lost > 0)
        m_trouble += QLatin1Char(' ') + tr("%1 changes were too many to be kept for later").arg(m_lost);
    m_db.close();
    m_ready = false;
    return false;
}
