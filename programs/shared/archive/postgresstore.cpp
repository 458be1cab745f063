#include "archiveschema.h"
#include "archivestore.h"
#include "copyrows.h"
#include "partitions.h"
#include "shardrows.h"
#include "shards.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <map>

using Row = ArchiveBatch::Row;
using Types = std::bitset<ArchiveBatch::typeCount>;

namespace {

constexpr int positionColumns = 4;
constexpr int firstColumns = 2 + positionColumns;
constexpr int mostRounds = 5; // in which others have just stored the same
constexpr int monthAgainMilliseconds = 10 * 60 * 1000;
const QLatin1String uniqueViolation("23505");
const QLatin1String typeMismatch("42804");
const char beforeCopy[] = "before_copy";

QByteArray columnsOf(const Types& types)
{
    QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4";
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (types[static_cast<std::size_t>(type)])
            columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
    }
    return columns;
}

/// For every type a value and a status: those of the sensors, which are in the order of their types, or null.
void appendSensors(CopyRows& rows, const Types& types, const Sensor* next, const Sensor* end)
{
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (!types[static_cast<std::size_t>(type)])
            continue;
        if (next != end && next->type == type) {
            rows.append(next->value);
            rows.append(static_cast<qint16>(next->status));
            ++next;
        } else {
            rows.appendNull();
            rows.appendNull();
        }
    }
}

void appendState(CopyRows& rows, const Types& types, const LastState& state)
{
    const Row* position = nullptr;
    std::vector<Sensor> sensors;
    for (const LastState::Item& item : state.items) {
        if (item.sensor)
            sensors.push_back(*item.sensor);
        else
            position = item.from;
    }
    rows.beginRow();
    rows.append(qint64(state.object));
    rows.append(qint64(state.time));
    for (int i = 0; i < positionColumns; ++i) {
        if (position)
            rows.append(position->position[static_cast<std::size_t>(i)]);
        else
            rows.appendNull();
    }
    appendSensors(rows, types, sensors.data(), sensors.data() + sensors.size());
}

/// Temporary tables, one for the keys of reports that may be there already, one for last states.
QStringList temporaryTables()
{
    return {
        QStringLiteral("CREATE TEMPORARY TABLE pardel_keys (place integer, object bigint, time bigint, "
                       "print bytea) ON COMMIT DELETE ROWS"),
        QStringLiteral("CREATE TEMPORARY TABLE pardel_states (id_object bigint, %1) ON COMMIT DELETE ROWS")
            .arg(ArchiveSchema::stateColumns()),
    };
}

/// Gives a row with a sentence if archive.master_table has a column of another type than the rows that are sent, whose
/// bytes mean something else then.
const char otherType[] =
    "SELECT format('archive.master_table has a column %s of type %s', attname, format_type(atttypid, atttypmod)) "
    "FROM pg_attribute WHERE attrelid = 'archive.master_table'::regclass AND attnum > 0 AND NOT attisdropped "
    "AND atttypid <> CASE WHEN attname IN ('id_object', 'time_unix') THEN 'bigint'::regtype "
    "WHEN attname = 'fingerprint' THEN 'bytea'::regtype WHEN attname ~ '^sens_[1-4]$' THEN 'integer'::regtype "
    "WHEN attname ~ '^sens_[0-9]+$' THEN 'real'::regtype WHEN attname ~ '^status_[0-9]+$' THEN 'smallint'::regtype "
    "ELSE atttypid END LIMIT 1";

class PostgresStore : public ArchiveStore
{
public:
    explicit PostgresStore(const QSqlDatabase& db) : m_db(db), m_shardRows(db) {}

    void prepare(const ArchiveBatch& batch) override;
    void send(Transaction& transaction, const ArchiveBatch& batch) override;
    void proceed() override;
    Added finish(Transaction& transaction) override;
    void write(Transaction& transaction, const std::vector<LastState>& states) override;
    bool isSpread() const override { return m_shardRows.areUsed(); }
    void reset() override;
    QString partitionError() const override;

private:
    struct Month
    {
        QDeadlineTimer again; // when to see again that the partition is there
        QString error;        // why it is not
    };

    QString makeMonth(const QDate& month);
    void makeReady(Transaction& transaction);
    void copyKeys(Transaction& transaction);
    void findRepeated(Transaction& transaction);
    void copyNew(Transaction& transaction);
    Added countNew() const;

    QSqlDatabase m_db;
    ShardRows m_shardRows;
    std::vector<std::unique_ptr<ShardConnection>> m_connections; // while months are made
    std::map<QDate, Month> m_months;                             // by their first day
    const ArchiveBatch* m_batch = nullptr;
    std::vector<bool> m_new;
    bool m_ready = false;   // the temporary tables are there
    bool m_repeats = false; // rows of the last transaction were there already
    bool m_copying = false;
    bool m_keysCopied = false; // of this transaction
};

/// A partition for each month that is not too old: clocks may be wrong, and each partition slows planning. Without it
/// the month's reports lie in the rest.
void PostgresStore::prepare(const ArchiveBatch& batch)
{
    if (!m_db.isOpen())
        return;
    const QDate today = QDateTime::currentDateTimeUtc().date();
    QDate known; // the month of the row before
    for (const Row& row : batch.rows()) {
        if (!row.hasTime() || row.ahead)
            continue;
        const QDate day = QDateTime::fromSecsSinceEpoch(row.time, Qt::UTC).date();
        const QDate month = ArchivePartitions::monthOf(day);
        if (month == known || day < ArchivePartitions::oldestDay(today))
            continue;
        known = month;
        const auto [place, isNew] = m_months.try_emplace(month, Month{QDeadlineTimer::Forever, QString()});
        if (isNew || place->second.again.hasExpired()) {
            const QString error = makeMonth(month);
            place->second.error = error;
            place->second.again =
                error.isEmpty() ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(monthAgainMilliseconds);
        }
    }
    m_connections.clear();
}

/// On every shard, where there are any: which of them get reports of the month is not worth finding out.
QString PostgresStore::makeMonth(const QDate& month)
{
    std::vector<ArchiveShards::Shard> shards;
    QString error = ArchiveShards::read(m_db, &shards);
    if (!error.isEmpty() || shards.empty())
        return error.isEmpty() ? ArchivePartitions::makeMonth(m_db, month) : error;
    if (m_connections.size() != shards.size()) {
        m_connections.clear();
        for (const ArchiveShards::Shard& shard : shards)
            m_connections.push_back(std::make_unique<ShardConnection>(m_db, shard));
    }
    for (const std::unique_ptr<ShardConnection>& connection : m_connections) {
        const QString failed = connection->error().isEmpty()
                                   ? ArchivePartitions::makeMonth(connection->database(), month, &m_db)
                                   : connection->error();
        if (error.isEmpty())
            error = failed;
    }
    return error;
}

void PostgresStore::makeReady(Transaction& transaction)
{
    QSqlQuery query(m_db);
    if (transaction.run(query, QLatin1String(otherType)) && query.next())
        transaction.fail({query.value(0).toString(), typeMismatch});
    if (transaction.hasRow(QStringLiteral("SELECT 1 WHERE to_regclass('pg_temp.pardel_states') IS NULL"))) {
        for (const QString& statement : temporaryTables())
            transaction.run(statement);
    }
    m_ready = !transaction.failed();
}

void PostgresStore::send(Transaction& transaction, const ArchiveBatch& batch)
{
    m_batch = &batch;
    m_new.assign(batch.size(), true);
    m_keysCopied = false;
    transaction.run(ArchivePartitions::storingLock());
    if (!m_ready)
        makeReady(transaction);
    m_shardRows.begin(transaction);
    if (m_repeats && !m_shardRows.areUsed())
        findRepeated(transaction);
    copyNew(transaction);
}

void PostgresStore::copyKeys(Transaction& transaction)
{
    if (m_keysCopied || transaction.failed())
        return;
    CopyRows keys(4);
    qint32 place = 0;
    for (const Row& row : m_batch->rows()) {
        keys.beginRow();
        keys.append(place++);
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

void PostgresStore::findRepeated(Transaction& transaction)
{
    copyKeys(transaction);
    QSqlQuery query(m_db);
    // OFFSET keeps it one search of the index for each key; as a join it might become a pass over the whole table.
    transaction.run(
        query, QStringLiteral("SELECT place FROM pardel_keys AS key WHERE EXISTS (SELECT FROM archive.master_table "
                              "WHERE id_object = object AND time_unix = time AND fingerprint = print OFFSET 0)"));
    while (!transaction.failed() && query.next())
        m_new[static_cast<std::size_t>(query.value(0).toInt())] = false;
}

void PostgresStore::copyNew(Transaction& transaction)
{
    if (transaction.failed() || std::find(m_new.begin(), m_new.end(), true) == m_new.end())
        return;
    const Types& types = m_batch->types();
    const bool toShards = m_shardRows.areUsed();
    CopyRows rows(firstColumns + (toShards ? 2 : 1) + 2 * static_cast<int>(types.count()));
    for (std::size_t i = 0; i < m_batch->size(); ++i) {
        if (!m_new[i])
            continue;
        const Row& row = m_batch->rows()[i];
        rows.beginRow();
        rows.append(qint64(row.object));
        rows.append(row.storedTime());
        for (const qint32 part : row.position)
            rows.append(part);
        appendSensors(rows, types, m_batch->begin(row), m_batch->end(row));
        rows.append(row.print);
        if (toShards)
            rows.append(static_cast<qint16>(row.ahead));
    }
    const QByteArray columns = columnsOf(types) + ", fingerprint";
    if (toShards)
        m_shardRows.expect(transaction, types, columns);
    else
        transaction.mark(beforeCopy);
    if (transaction.failed())
        return;
    const Transaction::Failure failure = toShards ? rows.start(m_db, ShardRows::table, columns + ", ahead")
                                                  : rows.start(m_db, "archive.master_table", columns);
    if (failure)
        transaction.fail(failure);
    m_copying = !failure;
}

void PostgresStore::proceed()
{
    if (m_copying)
        CopyRows::proceed(m_db);
}

ArchiveStore::Added PostgresStore::finish(Transaction& transaction)
{
    for (int round = 1; m_copying; ++round) {
        m_copying = false;
        const Transaction::Failure failure = CopyRows::finish(m_db);
        if (!failure)
            break;
        transaction.fail(failure);
        if (failure.code != uniqueViolation || round == mostRounds || m_shardRows.areUsed())
            break;
        // Some of the rows are there already, perhaps since a moment ago.
        transaction.undo(beforeCopy);
        findRepeated(transaction);
        copyNew(transaction);
    }
    m_repeats = std::find(m_new.begin(), m_new.end(), false) != m_new.end();
    Added added;
    if (!transaction.failed() && m_shardRows.areUsed())
        added = m_shardRows.spread(transaction);
    else if (!transaction.failed())
        added = countNew();
    m_batch = nullptr;
    return added;
}

ArchiveStore::Added PostgresStore::countNew() const
{
    Added added;
    for (std::size_t i = 0; i < m_new.size(); ++i) {
        added.rows += m_new[i] ? 1 : 0;
        added.ahead += m_new[i] && m_batch->rows()[i].ahead ? 1 : 0;
    }
    return added;
}

void PostgresStore::write(Transaction& transaction, const std::vector<LastState>& states)
{
    Types types;
    for (const LastState& state : states) {
        for (const LastState::Item& item : state.items)
            types.set(static_cast<std::size_t>(item.type));
    }
    types.reset(LastState::positionType);
    CopyRows rows(firstColumns + 2 * static_cast<int>(types.count()));
    for (const LastState& state : states)
        appendState(rows, types, state);
    const QByteArray columns = columnsOf(types);
    Transaction::Failure failure = rows.start(m_db, "pardel_states", columns);
    if (!failure)
        failure = CopyRows::finish(m_db);
    if (failure) {
        transaction.fail(failure);
        return;
    }
    QStringList changes;
    for (const QString& column : QString::fromLatin1(columns).split(QStringLiteral(", ")).mid(1))
        changes += QStringLiteral("%1 = coalesce(new.%1, last.%1)").arg(column);
    // Asked each time, as the column may come while this is at work.
    const bool tellsChanges = transaction.hasRow(ArchiveSchema::tellsChangesStatement(m_db));
    if (tellsChanges)
        changes += QStringLiteral("changed = pg_current_xact_id()::text::bigint");
    transaction.run(QStringLiteral("UPDATE archive.lastdata AS last SET %1 FROM pardel_states AS new "
                                   "WHERE last.id_object = new.id_object")
                        .arg(changes.join(QStringLiteral(", "))));
    if (tellsChanges)
        transaction.run(QLatin1String("NOTIFY ") + QLatin1String(ArchiveSchema::changesChannel));
}

void PostgresStore::reset()
{
    m_ready = false;
    m_shardRows.reset();
}

QString PostgresStore::partitionError() const
{
    const auto month =
        std::find_if(m_months.begin(), m_months.end(), [](const auto& one) { return !one.second.error.isEmpty(); });
    return month == m_months.end()
               ? QString()
               : ArchivePartitions::monthTable(month->first) + QLatin1String(": ") + month->second.error;
}

} // namespace

std::unique_ptr<ArchiveStore> makePostgresStore(const QSqlDatabase& db)
{
    return std::make_unique<PostgresStore>(db);
}
