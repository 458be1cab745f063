#pragma once

#include "archivestore.h"
#include "historyrows.h"
#include "shards.h"
#include "transaction.h"

#include <QDate>
#include <QHash>
#include <QSqlDatabase>

#include <memory>
#include <vector>

/**
 * The way of rows to an archive's shards. Through the first server's foreign tables COPY would take every row by
 * itself, and INSERT costs three times what COPY does: so each shard gets its rows by COPY over a connection of its
 * own, in a transaction of its own.
 *
 * The shards come one after the other, each is committed before the next begins, and all of them before what the first
 * server keeps of the batch. So no two who store can wait for each other on different servers, where nobody would
 * notice. A failure in between leaves some rows stored: those who come again with the same batch find them there, and
 * they count as added all the same.
 */
class ShardRows
{
public:
    explicit ShardRows(const QSqlDatabase& first) : m_first(first) {}

    /** Looks which shards there are, in a transaction on the first server that holds ArchivePartitions::storingLock(). */
    void begin(Transaction& transaction);
    /** Whether there are any; else nothing of the following is called in this transaction. */
    bool areUsed() const { return !m_ways.empty(); }
    /** Begins with the first shard; does not wait for the end. */
    void send(Transaction& transaction, const ArchiveBatch& batch);
    /** Goes on, as far as it goes with hardly a wait. */
    void proceed();
    /** Waits for the end of the last one; after a failure of the transaction, gives up. */
    ArchiveStore::Added finish(Transaction& transaction);
    /** The transaction of the first server has failed: the same batch may come again. */
    void reset();

    /**
     * Makes a month's partition on every shard, or where there are none, on the first server: which shards get reports
     * of it is not worth finding out.
     *
     * @return what went wrong, or nothing
     */
    QString makeMonth(const QDate& month);

private:
    struct Way
    {
        ArchiveShards::Shard shard;
        std::unique_ptr<ShardConnection> connection = nullptr;
        std::unique_ptr<HistoryRows> rows = nullptr;
        std::unique_ptr<Transaction> transaction = nullptr;
        std::vector<bool> chosen = {};
    };

    bool connect(Way& way);
    void choose(Transaction& transaction, const ArchiveBatch& batch);
    void findWays(Transaction& transaction, const ArchiveBatch& batch);
    void sendNext();
    void end(bool giveUp);

    QSqlDatabase m_first;
    std::vector<Way> m_ways;
    QHash<quint32, int> m_wayOf; // objects
    const ArchiveBatch* m_batch = nullptr;
    std::size_t m_next = 0; // the way after that which is at work
    Way* m_atWork = nullptr;
    ArchiveStore::Added m_added; // of this batch, by transactions that have failed later too
    bool m_again = false;        // the batch may have come before
    Transaction::Failure m_failure;
};
