#include "shards.h"

#include "archiveschema.h"
#include "databasetrouble.h"

#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <tuple>

#include <libpq-fe.h>

using namespace ArchiveShards;

namespace {

const QLatin1String hashKey("HASH (id_object)");

using LibpqOptions = std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption*)>;

/// Those that libpq knows; a foreign server has others too.
QSet<QString> libpqNames()
{
    const LibpqOptions known(PQconndefaults(), PQconninfoFree);
    QSet<QString> names;
    for (const PQconninfoOption* option = known.get(); option && option->keyword; ++option)
        names += QString::fromLatin1(option->keyword);
    return names;
}

QString quoted(QString value)
{
    return QLatin1Char('\'') +
           value.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'")) +
           QLatin1Char('\'');
}

/// How the first server reaches a shard. The mapping of the user himself counts before that of all.
/// @param forbidden whether it is the user who may not see it
QString readOptions(const QSqlDatabase& first, const QString& server, ConnectionOptions* options, bool* forbidden)
{
    bool mapped = false;
    const QString name = QString(server).replace(QLatin1Char('\''), QLatin1String("''"));
    QSqlQuery query(first);
    if (!query.exec(
            QStringLiteral("SELECT option_name, option_value FROM pg_foreign_server, pg_options_to_table(srvoptions) "
                           "WHERE srvname = '%1'")
                .arg(name)))
        return ArchiveSchema::errorText(query.lastError());
    const QSet<QString> known = libpqNames();
    while (query.next()) {
        if (known.contains(query.value(0).toString()))
            options->insert(query.value(0).toString(), query.value(1).toString());
    }
    if (!query.exec(QStringLiteral("SELECT option_name, option_value FROM (SELECT umoptions FROM pg_user_mappings "
                                   "WHERE srvname = '%1' AND (usename = current_user OR umuser = 0) AND umoptions IS "
                                   "NOT NULL ORDER BY umuser = 0 LIMIT 1) AS mapping, pg_options_to_table(umoptions)")
                        .arg(name)))
        return ArchiveSchema::errorText(query.lastError());
    while (query.next()) {
        mapped = true;
        if (known.contains(query.value(0).toString()))
            options->insert(query.value(0).toString(), query.value(1).toString());
    }
    if (query.lastError().type() != QSqlError::NoError)
        return ArchiveSchema::errorText(query.lastError());
    *forbidden = !mapped;
    return mapped
               ? QString()
               : QStringLiteral("only the owner of that foreign server, or a user with a mapping of his own, may see "
                                "how it is reached");
}

} // namespace

bool Shard::operator==(const Shard& other) const
{
    return std::tie(table, server, options, modulus, remainder) ==
           std::tie(other.table, other.server, other.options, other.modulus, other.remainder);
}

QString ArchiveShards::read(const QSqlDatabase& db, std::vector<Shard>* shards)
{
    QSqlQuery query(db);
    if (!query.exec(
            QStringLiteral(
                "SELECT format('%I.%I', n.nspname, c.relname), s.srvname, (SELECT string_agg(format('%I %L', "
                "option_name, option_value), ', ' ORDER BY option_name) FROM pg_options_to_table(t.ftoptions)), "
                "(regexp_match(pg_get_expr(c.relpartbound, c.oid), 'modulus (\\d+)'))[1]::integer AS modulus, "
                "(regexp_match(pg_get_expr(c.relpartbound, c.oid), 'remainder (\\d+)'))[1]::integer AS remainder "
                "FROM pg_inherits i JOIN pg_class c ON c.oid = i.inhrelid JOIN pg_namespace n ON n.oid = "
                "c.relnamespace LEFT JOIN pg_foreign_table t ON t.ftrelid = c.oid LEFT JOIN pg_foreign_server s ON "
                "s.oid = t.ftserver WHERE i.inhparent = to_regclass('archive.master_table') AND "
                "pg_get_partkeydef(i.inhparent) = '%1' ORDER BY remainder, modulus")
                .arg(hashKey)))
        return DatabaseTrouble::withAdvice(query.lastError());
    shards->clear();
    while (query.next())
        shards->push_back({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
                           query.value(3).toInt(), query.value(4).toInt()});
    return {};
}

QString ArchiveShards::checkComplete(const std::vector<Shard>& shards)
{
    int whole = 1; // each modulus is a factor of the next greater one
    for (const Shard& shard : shards) {
        whole = std::max(whole, shard.modulus);
        if (shard.server.isEmpty())
            return QStringLiteral("%1 lies on this server: reports can be stored where all partitions of "
                                  "archive.master_table by the hash of id_object are foreign tables")
                .arg(shard.table);
    }
    const int covered = std::accumulate(shards.begin(), shards.end(), 0,
                                        [&](int sum, const Shard& shard) { return sum + whole / shard.modulus; });
    return covered == whole ? QString()
                            : QStringLiteral("archive.master_table has no partition for %1 of %2 remainders of the "
                                             "hash of id_object: attach the one that is missing")
                                  .arg(whole - covered)
                                  .arg(whole);
}

QString ArchiveShards::check(const QSqlDatabase& db, const std::vector<Shard>& shards)
{
    const QString incomplete = checkComplete(shards);
    if (!incomplete.isEmpty())
        return incomplete;
    for (const Shard& shard : shards) {
        QSqlQuery query(db);
        if (!query.exec(
                QStringLiteral("SELECT 1 FROM %1 WHERE schemaname = 'archive' AND tablename = 'master_table' "
                               "AND indexdef ~ '^CREATE UNIQUE INDEX .*\\(id_object, time_unix, fingerprint\\)$'")
                    .arg(indexesTable(shard.table))))
            return DatabaseTrouble::withAdvice(query.lastError());
        if (!query.next())
            return QStringLiteral("archive.master_table on the shard %1 has no unique index (id_object, time_unix, "
                                  "fingerprint); without it reports could be there twice: make it there")
                .arg(shard.server);
    }
    return {};
}

QString ArchiveShards::holdsObject(const Shard& shard)
{
    return QStringLiteral("satisfies_hash_partition('archive.master_table'::regclass, %1, %2, id_object)")
        .arg(shard.modulus)
        .arg(shard.remainder);
}

QString ArchiveShards::indexesTable(const QString& table)
{
    return table.endsWith(QLatin1Char('"')) ? table.chopped(1) + QLatin1String("_indexes\"")
                                            : table + QLatin1String("_indexes");
}

QString ArchiveShards::parse(const QString& text, ConnectionOptions* options)
{
    char* message = nullptr;
    const LibpqOptions parsed(PQconninfoParse(text.toUtf8().constData(), &message), PQconninfoFree);
    const std::unique_ptr<char, void (*)(void*)> error(message, PQfreemem);
    if (!parsed)
        return error ? QString::fromUtf8(error.get()).simplified() : QStringLiteral("there is no memory left");
    options->clear();
    for (const PQconninfoOption* option = parsed.get(); option->keyword; ++option) {
        if (option->val)
            options->insert(QString::fromLatin1(option->keyword), QString::fromUtf8(option->val));
    }
    return {};
}

ShardConnection::ShardConnection(const ConnectionOptions& options)
{
    open(options);
}

ShardConnection::ShardConnection(const QSqlDatabase& first, const Shard& shard)
{
    ConnectionOptions options;
    m_error = readOptions(first, shard.server, &options, &m_forbidden);
    if (m_error.isEmpty())
        open(options);
    if (!m_error.isEmpty())
        m_error = QStringLiteral("%1: %2").arg(shard.server, m_error);
}

void ShardConnection::open(ConnectionOptions options)
{
    static std::atomic<int> opened = 0;
    m_name = QStringLiteral("shard %1").arg(++opened);
    m_db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_name);
    m_db.setHostName(options.take(QStringLiteral("host")));
    if (options.contains(QStringLiteral("port")))
        m_db.setPort(options.take(QStringLiteral("port")).toInt());
    m_db.setDatabaseName(options.take(QStringLiteral("dbname")));
    m_db.setUserName(options.take(QStringLiteral("user")));
    m_db.setPassword(options.take(QStringLiteral("password")));
    QStringList rest;
    for (auto option = options.cbegin(); option != options.cend(); ++option)
        rest += option.key() + QLatin1Char('=') + quoted(option.value());
    m_db.setConnectOptions(rest.join(QLatin1Char(';')));
    if (m_db.open())
        QSqlQuery(m_db).exec(QStringLiteral("SET client_min_messages = warning")); // notices would go to standard error
    else
        m_error = ArchiveSchema::errorText(m_db.lastError());
}

ShardConnection::~ShardConnection()
{
    m_db = QSqlDatabase();
    if (!m_name.isEmpty())
        QSqlDatabase::removeDatabase(m_name);
}
