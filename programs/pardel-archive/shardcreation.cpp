#include "shardcreation.h"

#include "archiveschema.h"
#include "shards.h"
#include "transaction.h"

#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <memory>

using ArchiveShards::ConnectionOptions;

namespace {

constexpr int firstWithParallelCommit = 150000;

QString literal(QString text)
{
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("''")) + QLatin1Char('\'');
}

/// "a 'x', b 'y'", as OPTIONS () takes them.
QString optionsText(const ConnectionOptions& options)
{
    QStringList texts;
    for (auto option = options.cbegin(); option != options.cend(); ++option)
        texts += option.key() + QLatin1Char(' ') + literal(option.value());
    return texts.join(QLatin1String(", "));
}

/// Takes out what belongs to a user mapping.
ConnectionOptions takeUser(ConnectionOptions* options)
{
    ConnectionOptions user;
    for (const char* name : {"user", "password", "sslpassword"}) {
        if (options->contains(QLatin1String(name)))
            user.insert(QLatin1String(name), options->take(QLatin1String(name)));
    }
    return user;
}

/// The first row's values; empty if there is none.
QStringList firstRow(const QSqlDatabase& db, const QString& statement, int columns)
{
    QSqlQuery query(statement, db);
    QStringList values;
    for (int i = 0; i < columns && (i > 0 || query.next()); ++i)
        values += query.value(i).toString();
    return values;
}

/// What no two databases that run have in common.
QString identity(const QSqlDatabase& db)
{
    return firstRow(db,
                    QStringLiteral("SELECT pg_postmaster_start_time()::text || ' ' || oid || ' ' || "
                                   "current_setting('port') FROM pg_database WHERE datname = current_database()"),
                    1)
        .value(0);
}

/// Completes what the user has given, so that the first server and programs that connect themselves mean the same.
QString readGiven(const QSqlDatabase& db, const QStringList& given, std::vector<ConnectionOptions>* all)
{
    const QStringList own = firstRow(db, QStringLiteral("SELECT current_database(), current_user"), 2);
    for (const QString& text : given) {
        ConnectionOptions options;
        const QString error = ArchiveShards::parse(text, &options); // not repeated below: it may hold a password
        if (!error.isEmpty())
            return QStringLiteral("--shard number %1: %2").arg(all->size() + 1).arg(error);
        if (!options.contains(QStringLiteral("host")) && !options.contains(QStringLiteral("hostaddr")))
            return QStringLiteral("--shard number %1 has no host=").arg(all->size() + 1);
        // A machine that is gone must not hold a storing program for a quarter of an hour.
        for (const auto& [name, value] : {std::pair("dbname", own.value(0)),
                                          {"user", own.value(1)},
                                          {"connect_timeout", QStringLiteral("10")},
                                          {"keepalives_idle", QStringLiteral("30")},
                                          {"keepalives_interval", QStringLiteral("10")},
                                          {"keepalives_count", QStringLiteral("3")},
                                          {"tcp_user_timeout", QStringLiteral("60000")}}) {
            if (!options.contains(QLatin1String(name)))
                options.insert(QLatin1String(name), value);
        }
        all->push_back(options);
    }
    return {};
}

/// "host:port/dbname", which makes two shards the same.
QString placeText(const ConnectionOptions& options)
{
    return QStringLiteral("%1:%2/%3")
        .arg(options.value(QStringLiteral("host"), options.value(QStringLiteral("hostaddr"))),
             options.value(QStringLiteral("port"), QStringLiteral("5432")), options.value(QStringLiteral("dbname")));
}

QStringList presentPlaces(const QSqlDatabase& db, const std::vector<ArchiveShards::Shard>& shards)
{
    QStringList places;
    for (const ArchiveShards::Shard& shard : shards) {
        ConnectionOptions options;
        QSqlQuery query(QStringLiteral("SELECT option_name, option_value FROM pg_foreign_server, "
                                       "pg_options_to_table(srvoptions) WHERE srvname = ") +
                            literal(shard.server),
                        db);
        while (query.next())
            options.insert(query.value(0).toString(), query.value(1).toString());
        places += placeText(options);
    }
    return places;
}

/// @param there whether archive.master_table is there and lies on these shards
QString checkPresent(const QSqlDatabase& db, const std::vector<ConnectionOptions>& given, bool* there)
{
    std::vector<ArchiveShards::Shard> shards;
    const QString error = ArchiveShards::read(db, &shards);
    if (!error.isEmpty())
        return error;
    *there = !shards.empty();
    const QStringList found =
        firstRow(db, QStringLiteral("SELECT 1 WHERE to_regclass('archive.master_table') IS NOT NULL"), 1);
    if (shards.empty())
        return found.isEmpty()
                   ? QString()
                   : QStringLiteral("archive.master_table is there already and lies on this server alone; the "
                                    "page \"The archive\" of the documentation says how to move it to shards");
    QStringList places;
    for (const ConnectionOptions& options : given)
        places += placeText(options);
    const QStringList present = presentPlaces(db, shards);
    return places == present
               ? QString()
               : QStringLiteral("archive.master_table lies on other shards, %1; the page \"The archive\" of "
                                "the documentation says how to add one")
                     .arg(present.join(QLatin1String(", ")));
}

/// The table on a shard, with a remark by which a second run knows it, and an empty view of it.
QString makeShard(QSqlDatabase& db, int remainder, int modulus)
{
    const QString remark = QStringLiteral("Reports of a shard: remainder %1 of %2").arg(remainder).arg(modulus);
    Transaction transaction(db);
    transaction.run(QStringLiteral("SELECT pg_advisory_xact_lock(hashtext('pardel-import --create'))"));
    transaction.run(QStringLiteral("CREATE SCHEMA IF NOT EXISTS archive"));
    if (!transaction.hasRow(QStringLiteral("SELECT 1 WHERE to_regclass('archive.master_table') IS NOT NULL"))) {
        const QStringList statements = ArchiveSchema::historyStatements();
        for (const QString& statement : statements)
            transaction.run(statement);
        transaction.run(QStringLiteral("COMMENT ON TABLE archive.master_table IS ") + literal(remark));
    } else if (!transaction.hasRow(
                   QStringLiteral("SELECT 1 WHERE obj_description('archive.master_table'::regclass) = ") +
                   literal(remark))) {
        return transaction.failed() ? transaction.error()
                                    : QStringLiteral("it has an archive.master_table that was not made for this shard");
    }
    transaction.run(QStringLiteral("CREATE OR REPLACE VIEW archive.master_table_none AS "
                                   "SELECT * FROM archive.master_table WHERE false"));
    transaction.commit();
    return transaction.error();
}

QStringList firstStatements(const QSqlDatabase& db, const std::vector<ConnectionOptions>& shards)
{
    const bool parallel =
        firstRow(db, QStringLiteral("SHOW server_version_num"), 1).value(0).toInt() >= firstWithParallelCommit;
    QStringList statements = {
        QStringLiteral("CREATE EXTENSION IF NOT EXISTS postgres_fdw"),
        QStringLiteral("CREATE TABLE archive.master_table (id_object bigint NOT NULL, fingerprint bytea NOT NULL, %1) "
                       "PARTITION BY HASH (id_object)")
            .arg(ArchiveSchema::stateColumns()),
    };
    for (std::size_t i = 0; i < shards.size(); ++i) {
        ConnectionOptions options = shards[i];
        const ConnectionOptions user = takeUser(&options);
        options.insert(QStringLiteral("fetch_size"), QStringLiteral("50"));
        options.insert(QStringLiteral("batch_size"), QStringLiteral("100"));
        if (parallel)
            options.insert(QStringLiteral("parallel_commit"), QStringLiteral("true"));
        const QString server = QStringLiteral("pardel_shard_%1").arg(i + 1);
        const QString table = QStringLiteral("archive.master_table_shard_%1").arg(i + 1);
        statements += QStringLiteral("CREATE SERVER %1 FOREIGN DATA WRAPPER postgres_fdw OPTIONS (%2)")
                          .arg(server, optionsText(options));
        statements +=
            QStringLiteral("CREATE USER MAPPING FOR PUBLIC SERVER %1 OPTIONS (%2)").arg(server, optionsText(user));
        // Where a foreign table is known to be empty, its rows cost the planner nothing, so that a sort there is never
        // dearer than one here: the order is left to the shard, which has an index for it, and few rows come.
        statements +=
            QStringLiteral("CREATE FOREIGN TABLE %1 PARTITION OF archive.master_table FOR VALUES WITH (MODULUS "
                           "%2, REMAINDER %3) SERVER %4 OPTIONS (schema_name 'archive', table_name "
                           "'master_table_none')")
                .arg(table)
                .arg(shards.size())
                .arg(i)
                .arg(server);
        statements += QStringLiteral("ANALYZE ") + table;
        statements += QStringLiteral("ALTER FOREIGN TABLE %1 OPTIONS (SET table_name 'master_table')").arg(table);
        const QString indexes = ArchiveShards::indexesTable(table);
        statements +=
            QStringLiteral("CREATE FOREIGN TABLE %1 (schemaname text, tablename text, indexdef text) SERVER %2 "
                           "OPTIONS (schema_name 'pg_catalog', table_name 'pg_indexes')")
                .arg(indexes, server);
        statements += QStringLiteral("GRANT SELECT ON %1 TO PUBLIC").arg(indexes);
    }
    return statements;
}

} // namespace

QString createWithShards(QSqlDatabase& db, const QStringList& shards, QStringList* made, QString* lacking)
{
    std::vector<ConnectionOptions> given;
    bool there = false;
    QString error = readGiven(db, shards, &given);
    if (error.isEmpty())
        error = checkPresent(db, given, &there);
    if (!error.isEmpty() || there)
        return error.isEmpty() ? ArchiveSchema::create(db, made, lacking) : error;
    QSet<QString> identities = {identity(db)};
    for (std::size_t i = 0; i < given.size(); ++i) {
        ShardConnection connection(given[i]);
        error = connection.error();
        const QString own = error.isEmpty() ? identity(connection.database()) : QString();
        if (error.isEmpty() && identities.contains(own))
            error =
                QStringLiteral("it is the database of the group or of another --shard; each has to be one of its own");
        identities += own;
        if (error.isEmpty())
            error = makeShard(connection.database(), static_cast<int>(i), static_cast<int>(given.size()));
        if (!error.isEmpty())
            return QStringLiteral("the shard %1: %2").arg(placeText(given[i]), error);
    }
    return ArchiveSchema::create(db, made, lacking, firstStatements(db, given));
}
