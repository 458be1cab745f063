#include "archiveschema.h"
#include "archivestore.h"
#include "copyrows.h"
#include "historyrows.h"
#include "partitions.h"
#include "shardrows.h"
#include "statecolumns.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <map>

using Row = ArchiveBatch::Row;
using StateColumns::Types;

namespace {

constexpr int monthAgainMilliseconds = 10 * 60 * 1000;

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
    for (int i = 0; i < StateColumns::positionCount; ++i) {
        if (position)
            rows.append(position->position[static_cast<std::size_t>(i)]);
        else
            rows.appendNull();
    }
    StateColumns::appendSensors(rows, types, sensors.data(), sensors.data() + sensors.size());
}

class PostgresStore : public ArchiveStore
{
public:
    explicit PostgresStore(const QSqlDatabase& db) : m_db(db), m_history(db), m_shards(db) {}

    void prepare(const ArchiveBatch& batch) override;
    void send(Transaction& transaction, const ArchiveBatch& batch) override;
    void proceed() override;
    Added finish(Transaction& transaction) override;
    void write(Transaction& transaction, const std::vector<LastState>& states) override;
    bool isSpread() const override { return m_shards.areUsed(); }
    void reset() override;
    QString partitionError() const override;

private:
    struct Month
    {
        QDeadlineTimer again; // when to see again that the partition is there
        QString error;        // why it is not
    };

    void makeReady(Transaction& transaction);

    QSqlDatabase m_db;
    HistoryRows m_history;
    ShardRows m_shards;
    std::map<QDate, Month> m_months; // by their first day
    bool m_ready = false;            // the temporary table is there
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
            const QString error = m_shards.makeMonth(month);
            place->second.error = error;
            place->second.again =
                error.isEmpty() ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(monthAgainMilliseconds);
        }
    }
}

void PostgresStore::send(Transaction& transaction, const ArchiveBatch& batch)
{
    transaction.run(ArchivePartitions::storingLock());
    if (!m_ready)
        makeReady(transaction);
    m_shards.begin(transaction);
    if (m_shards.areUsed())
        m_shards.send(transaction, batch);
    else
        m_history.send(transaction, batch, std::vector<bool>(batch.size(), true));
}

void PostgresStore::proceed()
{
    if (m_shards.areUsed())
        m_shards.proceed();
    else
        m_history.proceed();
}

ArchiveStore::Added PostgresStore::finish(Transaction& transaction)
{
    return m_shards.areUsed() ? m_shards.finish(transaction) : m_history.finish(transaction);
}

void PostgresStore::makeReady(Transaction& transaction)
{
    if (transaction.hasRow(QStringLiteral("SELECT 1 WHERE to_regclass('pg_temp.pardel_states') IS NULL")))
        transaction.run(
            QStringLiteral("CREATE TEMPORARY TABLE pardel_states (id_object bigint, %1) ON COMMIT DELETE ROWS")
                .arg(ArchiveSchema::stateColumns()));
    m_ready = !transaction.failed();
}

void PostgresStore::write(Transaction& transaction, const std::vector<LastState>& states)
{
    Types types;
    for (const LastState& state : states) {
        for (const LastState::Item& item : state.items)
            types.set(static_cast<std::size_t>(item.type));
    }
    types.reset(LastState::positionType);
    CopyRows rows(StateColumns::firstCount + 2 * static_cast<int>(types.count()));
    for (const LastState& state : states)
        appendState(rows, types, state);
    const QByteArray columns = StateColumns::names(types);
    Transaction::Failure failure = rows.start(m_db, "pardel_states", columns);
    if (!failure)
        failure = CopyRows::finish(m_db);
    if (failure) {
        transaction.fail(failure);
        return;
    }
    QStringList changes;
    const QStringList others = QString::fromLatin1(columns).split(QStringLiteral(", ")).mid(1);
    for (const QString& column : others)
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
    m_history.reset();
    m_shards.reset();
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
