#pragma once

#include "archivebatch.h"
#include "archivestore.h"
#include "databasetrouble.h"
#include "laststates.h"
#include "sensorstable.h"
#include "transaction.h"

#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QString>

#include <chrono>
#include <memory>

/** What a writer goes by. */
struct ArchiveWriterSettings
{
    /** Reports of a time further in the future than this are kept in the history, but become nobody's last state. */
    std::chrono::seconds ahead = std::chrono::hours(24);
};

/**
 * Stores reports in archive.master_table, in archive.lastdata what is known last of each object (LastStates has the
 * rule), and in "Sensors" the sensors of objects that have none there; up to 50,000 reports in a transaction.
 *
 * @code
 * ArchiveWriter writer(archive.database());
 * while (more() && !writer.failed())
 *     writer.add(nextReport());
 * writer.flush();
 * @endcode
 *
 * A report that is there already (same object, time and fingerprint) is not stored again, but counts for its object's
 * last state, so that a lost or spoilt one is mended when its reports come again. Others may store at the same
 * time, the same reports too: a transaction that is refused for their sake is tried again a few times. What was
 * committed stays when a later transaction fails, and is all that the counters tell.
 *
 * After a failure nothing is lost: what has been taken is kept, and flush() tries it again, perhaps after the
 * connection has been opened anew. A writer that goes without flush() does not store what it still holds.
 *
 * Where archive.lastdata has the column for it (ArchiveSchema::tellsChangesStatement), a transaction that changes last
 * states marks them, and on PostgreSQL notifies who listens (ArchiveSchema::changesChannel) when it commits. Notifying
 * transactions commit one after the other there: many writers should bring few large ones rather than many small ones.
 *
 * Between add() and flush() nobody else may use the connection: the database may be at work on a batch meanwhile.
 */
class ArchiveWriter
{
public:
    explicit ArchiveWriter(const QSqlDatabase& db, const ArchiveWriterSettings& settings = {});
    ~ArchiveWriter();
    Q_DISABLE_COPY_MOVE(ArchiveWriter)

    /**
     * Takes a report; none while failed(). Of sensors of one type the last counts; types without columns are left out.
     */
    void add(const MobData& report);
    /** Stores what has been taken and not stored yet. */
    void flush();

    /** Reports that are in the archive now and were not before. */
    qint64 stored() const { return m_stored; }
    /** Reports that were there already, or had been taken before. */
    qint64 repeated() const { return m_repeated; }
    /** Of those stored, the ones of a time too far in the future. */
    qint64 ahead() const { return m_ahead; }

    /** Whether the last transaction failed. */
    bool failed() const { return static_cast<bool>(m_failure); }
    /** The database's own words for why, in one line. */
    QString error() const { return m_failure.text; }
    /** What to do about it, a clause for people. */
    QString advice(DatabaseTrouble::Retry retry = DatabaseTrouble::Retry::ByHand) const;
    /** The database's words for why sensors could not be entered in "Sensors"; empty if they could. */
    QString sensorsError() const { return m_sensors.error(); }
    /** Which month has no partition and the database's words for why: its reports are stored, in the rest. */
    QString partitionError() const { return m_store->partitionError(); }

    /** How long ago the oldest report was taken that is not stored yet; 0 without one. */
    qint64 waitingMilliseconds() const;

private:
    /// Reports, and how many and how long they have been waiting.
    struct Queue
    {
        ArchiveBatch batch;
        qint64 taken = 0;
        QElapsedTimer oldest;
    };

    void swapQueues();
    void begin();
    bool end();
    void store();
    qint64 horizon() const;

    QSqlDatabase m_db;
    const ArchiveWriterSettings m_settings;
    std::unique_ptr<ArchiveStore> m_store;
    LastStates m_lastStates;
    SensorsTable m_sensors;
    Queue m_coming;                             // what add() has taken
    Queue m_going;                              // what is on its way into the database, or has failed to get there
    std::unique_ptr<Transaction> m_transaction; // of m_going, while the database is at work on it
    qint64 m_stored = 0;
    qint64 m_repeated = 0;
    qint64 m_ahead = 0;
    Transaction::Failure m_failure;
};
