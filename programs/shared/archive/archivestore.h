#pragma once

#include "archivebatch.h"

#include <QString>

#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

class Transaction;

/** What becomes of an object's row in archive.lastdata. Of what is not in it the row stays as it is. */
struct LastState
{
    struct Item
    {
        int type; ///< Of a sensor, or positionType.
        const ArchiveBatch::Row* from;
        const Sensor* sensor;
        bool beaten = false; ///< A newer report has it.
    };
    static constexpr int positionType = 1; ///< No sensor that is stored has it.

    quint32 object;
    quint32 time;
    std::vector<Item> items; ///< In the order of their types, each once.
};

/**
 * How one kind of database takes a batch. Every call belongs to a transaction and leaves in it what went wrong; the
 * batch stays as it is until the transaction has ended.
 */
class ArchiveStore
{
public:
    virtual ~ArchiveStore() = default;

    /** What has to be there before a transaction of these rows begins. */
    virtual void prepare(const ArchiveBatch& batch) = 0;
    /** Begins to add the rows to archive.master_table; does not wait for the end if it can help that. */
    virtual void send(Transaction& transaction, const ArchiveBatch& batch) = 0;
    /** Goes on with it, as far as it goes without waiting. */
    virtual void proceed() {}
    /** How many of a batch's rows were new, and of these, how many are ahead. */
    struct Added
    {
        qint64 rows = 0;
        qint64 ahead = 0;
    };
    /** Waits for the end. Rows that were there already have been passed over. */
    virtual Added finish(Transaction& transaction) = 0;
    /** Changes rows of archive.lastdata, all of which are there and locked. */
    virtual void write(Transaction& transaction, const std::vector<LastState>& states) = 0;
    /** Whether archive.master_table lies on other servers, where to look up one report after the other takes long. */
    virtual bool isSpread() const { return false; }
    /** Forgets what belongs to a connection that may be gone. */
    virtual void reset() = 0;
    /** Which month's partition could not be made and why, in one line; empty if all that are needed are there. */
    virtual QString partitionError() const { return {}; }
};

std::unique_ptr<ArchiveStore> makePostgresStore(const QSqlDatabase& db);
std::unique_ptr<ArchiveStore> makeSqliteStore(const QSqlDatabase& db);
