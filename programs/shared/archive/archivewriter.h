#pragma once

#include <Pardel/mobdata.h>

#include <QByteArray>
#include <QDate>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <array>
#include <map>
#include <set>
#include <vector>

/**
 * Stores reports in archive.master_table and, where they are newer, in archive.lastdata, thousands in a transaction.
 *
 * A report that is there already (same object, time and fingerprint) is not stored again. When a transaction fails, it
 * is rolled back, what was committed before stays, and nothing more is stored.
 */
class ArchiveWriter
{
public:
    explicit ArchiveWriter(const QSqlDatabase& db);

    /** Takes a report. Of sensors of one type the last counts; types without columns are left out. */
    void add(const MobData& report);
    /** Stores what has been taken and not stored yet. */
    void flush();

    qint64 stored() const { return m_stored; }
    qint64 repeated() const { return m_repeated; }
    bool failed() const { return m_failed; }
    QString error() const { return m_error; }

private:
    struct Row
    {
        qint64 object; // unsigned, as the archive's readers ask for it
        qint32 time;
        std::array<qint32, 4> position; // latitude, longitude, speed, course
        QByteArray fingerprint;
        std::vector<Sensor> sensors; // in the order of their types, each type once
    };
    using Rows = std::vector<Row>;

    static Row rowOf(const MobData& report);
    static std::set<qint16> typesOf(const Rows& rows);
    bool store();
    bool storeInPostgres(const Rows& newest);
    bool storeInSqlite(const Rows& newest);
    void makePartitions();
    bool copyIntoMasterTable(bool* copied);
    bool insertIntoPostgres(const QString& table, const Rows& rows, bool fingerprints, const QString& onConflict,
                            int* inserted);
    QString replaceOlder();
    bool insertIntoSqlite(const QString& table, const Row& row, bool fingerprint, int* inserted);
    bool execute(QSqlQuery& query, const QString& statement);
    bool execute(QSqlQuery& query);
    Rows newestOfObjects() const;

    QSqlDatabase m_db;
    const bool m_postgres;
    Rows m_rows;
    std::map<QByteArray, QSqlQuery> m_inserts; // SQLite: prepared, by table, types and statuses of the sensors
    std::set<QDate> m_months;                  // PostgreSQL: seen already, by their first day
    QString m_replaceOlder;                    // PostgreSQL: what to do with an object's older last state
    qint64 m_stored = 0;
    qint64 m_repeated = 0;
    bool m_failed = false;
    QString m_error;
};
