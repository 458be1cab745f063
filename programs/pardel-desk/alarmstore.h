#pragma once

#include "alarmlist.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QVariant>
#include <QVector>

#include <deque>
#include <optional>

/**
 * The table "DeskAlarms" of the archive, by which desks see each other's alarms: "Object" and "Time", which are its
 * key, "Latitude", "Longitude", "Speed", "Ended", "Acknowledged", "By", "Remark".
 *
 * It has a connection of its own, which waits only briefly for other writers. What cannot be written waits here, in its
 * order, for the next exchange().
 */
class AlarmStore
{
    Q_DECLARE_TR_FUNCTIONS(AlarmStore)

public:
    /** Of the database of another connection, of any thread. */
    explicit AlarmStore(const QString& connection);
    ~AlarmStore();
    Q_DISABLE_COPY_MOVE(AlarmStore)

    /** Unless the object has one that was on then already, as another desk may have stored it. */
    void add(const DeskAlarm& alarm);
    void end(const DeskAlarm& alarm);
    /** The first one to do so is kept. */
    void acknowledge(const DeskAlarm& alarm);

    /**
     * Makes the table if it is missing, writes what waits, and reads what has changed since the last reading.
     *
     * @param since Unix seconds: older alarms are read only as long as they are new; the newest mostRows of all
     * @return all alarms; nothing if nothing has changed or trouble() is not empty
     */
    std::optional<QVector<DeskAlarm>> exchange(qint64 since);

    /** Changes that are not written yet. */
    int waiting() const { return static_cast<int>(m_waiting.size()); }
    /** The next exchange reads all. */
    void forget() { m_seen.clear(); }

    /** Why the last exchange did not succeed, for people; or nothing. */
    QString trouble() const { return m_trouble; }

private:
    struct Change
    {
        QString statement;
        QVariantList values;
    };

    void enqueue(const Change& change);
    bool open();
    bool write();
    bool fail(const QSqlError& error);

    const QString m_name;
    QSqlDatabase m_db;
    std::deque<Change> m_waiting;
    qint64 m_lost = 0;
    QVariantList m_seen; // what tells whether anything has changed
    bool m_ready = false;
    QString m_trouble;
};
