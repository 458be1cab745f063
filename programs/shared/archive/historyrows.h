#pragma once

#include "archivestore.h"

#include <QSqlDatabase>

#include <vector>

/**
 * The way of rows into archive.master_table of one PostgreSQL server, by COPY. It is refused where one of them is there
 * already: then it is taken back, the keys go by COPY into a temporary table and are looked up, and the rows that are
 * missing go by COPY. While repeated reports come, the look-up is first.
 *
 * Between send() and finish() nothing else may use the connection.
 */
class HistoryRows
{
public:
    explicit HistoryRows(const QSqlDatabase& db) : m_db(db) {}

    /** Begins to add the batch's rows that are chosen, one flag for each; does not wait for the end. */
    void send(Transaction& transaction, const ArchiveBatch& batch, std::vector<bool> chosen);
    /** Goes on, as far as it goes without waiting. @return whether finish() will not have to wait for COPY */
    bool proceed();
    /** Waits for the end. @return what has been added; the rest was there */
    ArchiveStore::Added finish(Transaction& transaction);
    /** Forgets what belongs to a connection that may be gone. */
    void reset() { m_ready = false; }

private:
    void makeReady(Transaction& transaction);
    void copyKeys(Transaction& transaction);
    void findRepeated(Transaction& transaction);
    void copyNew(Transaction& transaction);

    QSqlDatabase m_db;
    const ArchiveBatch* m_batch = nullptr;
    std::vector<bool> m_chosen;
    std::vector<bool> m_new;
    bool m_ready = false;   // the temporary table is there
    bool m_repeats = false; // rows of the last transaction were there already
    bool m_copying = false;
    bool m_keysCopied = false; // of this transaction
};
