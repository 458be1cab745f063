#include "shardrows.h"

#include "archiveschema.h"
#include "transaction.h"

#include <QSqlQuery>
#include <QVariant>

namespace {

const QLatin1String wrongDefinition("42P17");

QString foreignTable(std::size_t shard)
{
    return QStringLiteral("pg_temp.pardel_shard_%1").arg(shard + 1);
}

} // namespace

void ShardRows::begin(Transaction& transaction)
{
    std::vector<ArchiveShards::Shard> shards;
    if (transaction.failed())
        return;
    QString error = ArchiveShards::read(m_db, &shards);
    if (error.isEmpty() && !shards.empty())
        error = ArchiveShards::checkComplete(shards); // else rows of no shard would be lost
    if (!error.isEmpty())
        transaction.fail({error, wrongDefinition});
    if (!(shards == m_shards))
        m_ready = false;
    m_shards = std::move(shards);
}

void ShardRows::expect(Transaction& transaction, const std::bitset<ArchiveBatch::typeCount>& types,
                       const QByteArray& columns)
{
    m_columns = QString::fromLatin1(columns);
    if (m_ready && (types & ~m_types).none())
        return;
    m_types |= types;
    makeTables(transaction);
    m_ready = !transaction.failed();
}

void ShardRows::makeTables(Transaction& transaction)
{
    const auto isThere = [&transaction](const QString& name) {
        return transaction.hasRow(QStringLiteral("SELECT 1 WHERE to_regclass('%1') IS NOT NULL").arg(name));
    };
    if (!isThere(QLatin1String("pg_temp.") + QLatin1String(table)))
        transaction.run(
            QStringLiteral("CREATE TEMPORARY TABLE %1 (id_object bigint, fingerprint bytea, ahead smallint, "
                           "%2) ON COMMIT DELETE ROWS")
                .arg(QLatin1String(table), ArchiveSchema::stateColumns()));
    QString columns = QStringLiteral("id_object bigint, fingerprint bytea, time_unix bigint, sens_1 integer, sens_2 "
                                     "integer, sens_3 integer, sens_4 integer");
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (m_types[static_cast<std::size_t>(type)])
            columns += QStringLiteral(", %1 real, %2 smallint")
                           .arg(QString::fromLatin1(ArchiveSchema::valueColumn(type)),
                                QString::fromLatin1(ArchiveSchema::statusColumn(type)));
    }
    for (std::size_t i = 0; i < m_shards.size(); ++i) {
        if (isThere(foreignTable(i)))
            transaction.run(QLatin1String("DROP FOREIGN TABLE ") + foreignTable(i));
        transaction.run(QStringLiteral("CREATE FOREIGN TABLE %1 (%2) SERVER \"%3\" OPTIONS (%4)")
                            .arg(foreignTable(i), columns, m_shards[i].server, m_shards[i].options));
    }
}

qint64 ShardRows::insert(Transaction& transaction, std::size_t shard, bool ahead)
{
    QSqlQuery query(m_db);
    transaction.run(query, QStringLiteral("INSERT INTO %1 (%2) SELECT %2 FROM %3 WHERE ahead = %4 AND %5 "
                                          "ORDER BY id_object, time_unix, fingerprint ON CONFLICT DO NOTHING")
                               .arg(foreignTable(shard), m_columns, QLatin1String(table), QString::number(int(ahead)),
                                    ArchiveShards::holdsObject(m_shards[shard])));
    return transaction.failed() ? 0 : query.numRowsAffected();
}

ArchiveStore::Added ShardRows::spread(Transaction& transaction)
{
    ArchiveStore::Added added;
    const bool someAhead =
        transaction.hasRow(QStringLiteral("SELECT 1 FROM %1 WHERE ahead <> 0 LIMIT 1").arg(QLatin1String(table)));
    for (std::size_t i = 0; i < m_shards.size(); ++i) {
        if (someAhead)
            added.ahead += insert(transaction, i, true);
        added.rows += insert(transaction, i, false);
    }
    added.rows += added.ahead;
    return added;
}

void ShardRows::reset()
{
    m_ready = false;
}
