#include "historyrows.h"

#include "copyrows.h"
#include "statecolumns.h"
#include "transaction.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

using Row = ArchiveBatch::Row;

namespace {

constexpr int mostRounds = 5; // in which others have just stored the same
const QLatin1String uniqueViolation("23505");
const QLatin1String typeMismatch("42804");
const char beforeCopy[] = "before_copy";

/// Gives a row with a sentence if archive.master_table has a column of another type than the rows that are sent, whose
/// bytes mean something else then.
const char otherType[] =
    "SELECT format('archive.master_table has a column %s of type %s', attname, format_type(atttypid, atttypmod)) "
    "FROM pg_attribute WHERE attrelid = 'archive.master_table'::regclass AND attnum > 0 AND NOT attisdropped "
    "AND atttypid <> CASE WHEN attname IN ('id_object', 'time_unix') THEN 'bigint'::regtype "
    "WHEN attname = 'fingerprint' THEN 'bytea'::regtype WHEN attname ~ '^sens_[1-4]$' THEN 'integer'::regtype "
    "WHEN attname ~ '^sens_[0-9]+$' THEN 'real'::regtype WHEN attname ~ '^status_[0-9]+$' THEN 'smallint'::regtype "
    "ELSE atttypid END LIMIT 1";

} // namespace

void HistoryRows::send(Transaction& transaction, const ArchiveBatch& batch, std::vector<bool> chosen)
{
    m_batch = &batch;
    m_chosen = std::move(chosen);
    m_new = m_chosen;
    m_keysCopied = false;
    if (!m_ready)
        makeReady(transaction);
    if (m_repeats)
        findRepeated(transaction);
    copyNew(transaction);
}

void HistoryRows::makeReady(Transaction& transaction)
{
    QSqlQuery query(m_db);
    if (transaction.run(query, QLatin1String(otherType)) && transaction.next(query))
        transaction.fail({query.value(0).toString(), typeMismatch});
    if (transaction.hasRow(QStringLiteral("SELECT 1 WHERE to_regclass('pg_temp.pardel_keys') IS NULL")))
        transaction.run(QStringLiteral("CREATE TEMPORARY TABLE pardel_keys (place integer, object bigint, time bigint, "
                                       "print bytea) ON COMMIT DELETE ROWS"));
    m_ready = !transaction.failed();
}

void HistoryRows::copyKeys(Transaction& transaction)
{
    if (m_keysCopied || transaction.failed())
        return;
    CopyRows keys(4);
    for (std::size_t i = 0; i < m_batch->size(); ++i) {
        if (!m_chosen[i])
            continue;
        const Row& row = m_batch->rows()[i];
        keys.beginRow();
        keys.append(static_cast<qint32>(i));
        keys.append(qint64(row.object));
        keys.append(row.storedTime());
        keys.append(row.print);
    }
    Transaction::Failure failure = keys.start(m_db, "pardel_keys", "place, object, time, print");
    if (!failure)
        failure = CopyRows::finish(m_db);
    if (failure)
        transaction.fail(failure);
    m_keysCopied = true;
}

void HistoryRows::findRepeated(Transaction& transaction)
{
    copyKeys(transaction);
    QSqlQuery query(m_db);
    // OFFSET keeps it one search of the index for each key; as a join it might become a pass over the whole table.
    transaction.run(
        query, QStringLiteral("SELECT place FROM pardel_keys AS key WHERE EXISTS (SELECT FROM archive.master_table "
                              "WHERE id_object = object AND time_unix = time AND fingerprint = print OFFSET 0)"));
    while (transaction.next(query))
        m_new[static_cast<std::size_t>(query.value(0).toInt())] = false;
}

void HistoryRows::copyNew(Transaction& transaction)
{
    if (transaction.failed() || std::find(m_new.begin(), m_new.end(), true) == m_new.end())
        return;
    const StateColumns::Types& types = m_batch->types();
    CopyRows rows(StateColumns::firstCount + 1 + 2 * static_cast<int>(types.count()));
    for (std::size_t i = 0; i < m_batch->size(); ++i) {
        if (!m_new[i])
            continue;
        const Row& row = m_batch->rows()[i];
        rows.beginRow();
        rows.append(qint64(row.object));
        rows.append(row.storedTime());
        for (const qint32 part : row.position)
            rows.append(part);
        StateColumns::appendSensors(rows, types, m_batch->begin(row), m_batch->end(row));
        rows.append(row.print);
    }
    transaction.mark(beforeCopy);
    if (transaction.failed())
        return;
    const Transaction::Failure failure =
        rows.start(m_db, "archive.master_table", StateColumns::names(types) + ", fingerprint");
    if (failure)
        transaction.fail(failure);
    m_copying = !failure;
}

bool HistoryRows::proceed()
{
    return !m_copying || CopyRows::proceed(m_db);
}

ArchiveStore::Added HistoryRows::finish(Transaction& transaction)
{
    for (int round = 1; m_copying; ++round) {
        m_copying = false;
        const bool givenUp = transaction.failed();
        const Transaction::Failure failure = CopyRows::finish(m_db);
        if (!failure)
            break;
        transaction.fail(failure);
        if (failure.code != uniqueViolation || round == mostRounds || givenUp)
            break;
        // Some of the rows are there already, perhaps since a moment ago.
        transaction.undo(beforeCopy);
        findRepeated(transaction);
        copyNew(transaction);
    }
    m_repeats = m_new != m_chosen;
    ArchiveStore::Added added;
    for (std::size_t i = 0; i < m_new.size() && !transaction.failed(); ++i) {
        added.rows += m_new[i] ? 1 : 0;
        added.ahead += m_new[i] && m_batch->rows()[i].ahead ? 1 : 0;
    }
    m_batch = nullptr;
    return added;
}
