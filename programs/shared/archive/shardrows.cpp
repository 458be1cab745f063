#include "shardrows.h"

#include "numberlist.h"
#include "partitions.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <set>

namespace {

const QLatin1String wrongDefinition("42P17");
const QLatin1String noRight("42501");
constexpr int mostRemembered = 500'000; // objects, some 20 MiB

} // namespace

void ShardRows::begin(Transaction& transaction)
{
    std::vector<ArchiveShards::Shard> shards;
    if (transaction.failed())
        return;
    QString error = ArchiveShards::read(m_first, &shards);
    if (error.isEmpty() && !shards.empty())
        error = ArchiveShards::checkComplete(shards);
    if (!error.isEmpty())
        transaction.fail({error, wrongDefinition});
    const bool same = std::equal(shards.begin(), shards.end(), m_ways.begin(), m_ways.end(),
                                 [](const ArchiveShards::Shard& shard, const Way& way) { return shard == way.shard; });
    if (same)
        return;
    m_wayOf.clear();
    m_ways.clear();
    for (const ArchiveShards::Shard& shard : shards)
        m_ways.push_back({shard});
}

/// Asks the first server where the objects are at home that come for the first time.
void ShardRows::findWays(Transaction& transaction, const ArchiveBatch& batch)
{
    if (m_wayOf.size() > mostRemembered)
        m_wayOf.clear();
    std::set<quint32> unknown;
    for (const ArchiveBatch::Row& row : batch.rows()) {
        if (!m_wayOf.contains(row.object))
            unknown.insert(row.object);
    }
    if (unknown.empty())
        return;
    QString cases;
    for (std::size_t i = 0; i < m_ways.size(); ++i)
        cases += QStringLiteral(" WHEN %1 THEN %2").arg(ArchiveShards::holdsObject(m_ways[i].shard)).arg(i);
    QSqlQuery query(m_first);
    transaction.run(query, QStringLiteral("SELECT id_object, CASE%1 END FROM unnest('{%2}'::bigint[]) AS id_object")
                               .arg(cases, NumberList::text(unknown)));
    while (transaction.next(query))
        m_wayOf.insert(query.value(0).toUInt(), query.value(1).toInt());
}

void ShardRows::choose(Transaction& transaction, const ArchiveBatch& batch)
{
    findWays(transaction, batch);
    for (Way& way : m_ways)
        way.chosen.assign(batch.size(), false);
    for (std::size_t i = 0; i < batch.size() && !transaction.failed(); ++i)
        m_ways[static_cast<std::size_t>(m_wayOf.value(batch.rows()[i].object))].chosen[i] = true;
}

void ShardRows::send(Transaction& transaction, const ArchiveBatch& batch)
{
    if (!m_again)
        m_added = {};
    m_again = false;
    m_failure = {};
    m_batch = &batch;
    m_next = 0;
    choose(transaction, batch);
    if (!transaction.failed())
        sendNext();
}

bool ShardRows::connect(Way& way)
{
    if (!way.connection)
        way.connection = std::make_unique<ShardConnection>(m_first, way.shard);
    if (!way.connection->error().isEmpty()) {
        const QString code = way.connection->isForbidden() ? QString(noRight) : QString();
        m_failure = {way.connection->error(), code};
        way.connection.reset();
        return false;
    }
    if (!way.rows)
        way.rows = std::make_unique<HistoryRows>(way.connection->database());
    return true;
}

/// To the next shard that has rows.
void ShardRows::sendNext()
{
    for (m_atWork = nullptr; !m_atWork && !m_failure && m_next < m_ways.size(); ++m_next) {
        Way& way = m_ways[m_next];
        if (std::find(way.chosen.begin(), way.chosen.end(), true) == way.chosen.end() || !connect(way))
            continue;
        m_atWork = &way;
        way.transaction = std::make_unique<Transaction>(way.connection->database());
        way.rows->send(*way.transaction, *m_batch, way.chosen);
    }
}

/// Of the one that is at work.
void ShardRows::end(bool giveUp)
{
    Way& way = *m_atWork;
    m_atWork = nullptr;
    if (giveUp)
        way.transaction->fail({});
    const ArchiveStore::Added added = way.rows->finish(*way.transaction);
    if (way.transaction->commit()) {
        m_added.rows += added.rows;
        m_added.ahead += added.ahead;
    } else {
        m_failure = way.transaction->failure();
        m_failure.text = QStringLiteral("%1: %2").arg(way.shard.server, m_failure.text);
    }
    way.transaction.reset();
}

void ShardRows::proceed()
{
    while (m_atWork && m_atWork->rows->proceed()) {
        end(false);
        sendNext();
    }
}

ArchiveStore::Added ShardRows::finish(Transaction& transaction)
{
    while (m_atWork) {
        end(transaction.failed());
        if (!transaction.failed())
            sendNext();
    }
    if (m_failure)
        transaction.fail(m_failure);
    return m_added;
}

void ShardRows::reset()
{
    m_again = true;
    for (Way& way : m_ways) {
        way.rows.reset();
        way.connection.reset();
    }
}

QString ShardRows::makeMonth(const QDate& month)
{
    std::vector<ArchiveShards::Shard> shards;
    QString error = ArchiveShards::read(m_first, &shards);
    if (error.isEmpty() && shards.empty())
        return ArchivePartitions::makeMonth(m_first, month);
    for (const ArchiveShards::Shard& shard : shards) {
        const auto way = std::find_if(m_ways.begin(), m_ways.end(),
                                      [&shard](const Way& one) { return one.shard == shard && one.connection; });
        std::unique_ptr<ShardConnection> own;
        if (way == m_ways.end())
            own = std::make_unique<ShardConnection>(m_first, shard);
        ShardConnection& connection = own ? *own : *way->connection;
        const QString failed = connection.error().isEmpty()
                                   ? ArchivePartitions::makeMonth(connection.database(), month, &m_first)
                                   : connection.error();
        if (error.isEmpty() && !failed.isEmpty())
            error = failed;
    }
    return error;
}
