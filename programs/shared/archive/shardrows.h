#pragma once

#include "archivestore.h"
#include "shards.h"

#include <QByteArray>
#include <QSqlDatabase>

#include <bitset>
#include <vector>

/**
 * The way of reports to an archive's shards. COPY into archive.master_table would take each row there by itself, and
 * INSERT with all of its columns: so the rows go by COPY into a temporary table of the first server, and from there to
 * each shard through a temporary foreign table that has only the columns in use, many rows in a statement. What is
 * there already the shard passes over.
 *
 * The shards come one after the other, in the same order for all who store, and the rows of each in the order of the
 * batch: no two who store can wait for each other on different servers, where nobody would notice.
 *
 * All calls belong to one transaction that holds ArchivePartitions::storingLock().
 */
class ShardRows
{
public:
    static constexpr char table[] =
        "pardel_rows"; ///< Takes the rows; has the column ahead (smallint) beside those of a state.

    explicit ShardRows(const QSqlDatabase& db) : m_db(db) {}

    /** Looks which shards there are. */
    void begin(Transaction& transaction);
    /** Whether there are any; else nothing of the following is called. */
    bool areUsed() const { return !m_shards.empty(); }
    /** Makes the tables ready for rows of these columns, with values of these types of sensors. */
    void expect(Transaction& transaction, const std::bitset<ArchiveBatch::typeCount>& types, const QByteArray& columns);
    /** Sends the rows that the table has got to their shards. */
    ArchiveStore::Added spread(Transaction& transaction);
    /** Forgets what belongs to a connection that may be gone. */
    void reset();

private:
    void makeTables(Transaction& transaction);
    qint64 insert(Transaction& transaction, std::size_t shard, bool ahead);

    QSqlDatabase m_db;
    std::vector<ArchiveShards::Shard> m_shards;
    std::bitset<ArchiveBatch::typeCount> m_types; // that the foreign tables have
    QString m_columns;
    bool m_ready = false;
};
