#include "archiveschema.h"

#include "databasetrouble.h"
#include "shards.h"
#include "transaction.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

namespace {

constexpr int lastType = 255;
constexpr int firstPositionType = 1;
constexpr int lastPositionType = 4;

struct Table
{
    QString schema; // empty for the database's own
    QString name;
    QStringList statements; // that make it
};

/// Finds what changed last. SQLite's indexes are named with their schema, PostgreSQL's lie where their tables do.
QString changesIndex(bool postgres)
{
    return (postgres ? QStringLiteral("CREATE INDEX lastdata_changed ON archive.lastdata (changed)")
                     : QStringLiteral("CREATE INDEX archive.lastdata_changed ON lastdata (changed)"));
}

QStringList masterStatements(bool postgres)
{
    const QString fingerprint = postgres ? QStringLiteral("bytea") : QStringLiteral("blob");
    QStringList master = {
        QStringLiteral("CREATE TABLE archive.master_table (id_object bigint NOT NULL, fingerprint %1 NOT NULL, %2)")
                .arg(fingerprint, ArchiveSchema::stateColumns()) +
            (postgres ? QStringLiteral(" PARTITION BY RANGE (time_unix)") : QString()),
        // Finds an object's newest state before a moment, and keeps a report from being stored twice.
        QStringLiteral(
            "CREATE UNIQUE INDEX %1master_table_states ON %2master_table (id_object, time_unix, fingerprint)")
            .arg(postgres ? QString() : QStringLiteral("archive."), postgres ? QStringLiteral("archive.") : QString()),
    };
    if (postgres)
        master += QStringLiteral("CREATE TABLE archive.master_table_rest PARTITION OF archive.master_table DEFAULT");
    return master;
}

QList<Table> tables(bool postgres, const QStringList& history)
{
    const QString archive = QStringLiteral("archive");
    return {
        {archive, QStringLiteral("master_table"), history.isEmpty() ? masterStatements(postgres) : history},
        {archive,
         QStringLiteral("lastdata"),
         {QStringLiteral("CREATE TABLE archive.lastdata (id_object bigint PRIMARY KEY, %1, changed bigint)")
                  .arg(ArchiveSchema::stateColumns()) +
              // Rows change all the time: with room on the same page a row stays near where it was.
              (postgres ? QStringLiteral(" WITH (fillfactor = 50)") : QString()),
          changesIndex(postgres)}},
        {QString(),
         QStringLiteral("Connections"),
         {QStringLiteral(
             "CREATE TABLE \"Connections\" (\"Id\" bigint PRIMARY KEY, \"Login\" text, \"Description\" text, "
             "\"Admin\" boolean)")}},
        {QString(),
         QStringLiteral("Commands"),
         {QStringLiteral("CREATE TABLE \"Commands\" (\"Id_object\" bigint, \"Name\" text, \"Description\" text, "
                         "PRIMARY KEY (\"Id_object\", \"Name\"))")}},
        {QString(),
         QStringLiteral("Sensors"),
         {QStringLiteral(
              "CREATE TABLE \"Sensors\" (\"Id\" bigint PRIMARY KEY, \"Id_objects\" bigint, \"Type\" integer)"),
          QStringLiteral("CREATE INDEX sensors_of_object ON \"Sensors\" (\"Id_objects\", \"Id\")")}},
    };
}

/// Gives a row if the schema (the database's own if empty) holds this table or index.
QString existsStatement(const QString& schema, const QString& name, bool postgres)
{
    if (postgres) {
        return QStringLiteral("SELECT 1 WHERE to_regclass('%1\"%2\"') IS NOT NULL")
            .arg(schema.isEmpty() ? QString() : schema + QLatin1Char('.'), name);
    }
    return QStringLiteral("SELECT 1 FROM %1.sqlite_master WHERE lower(name) = lower('%2')")
        .arg(schema.isEmpty() ? QStringLiteral("main") : schema, name);
}

/// Gives a row if archive.lastdata has the column.
QString changedColumnStatement(bool postgres)
{
    return postgres ? QStringLiteral("SELECT 1 FROM pg_attribute WHERE attrelid = 'archive.lastdata'::regclass AND "
                                     "attname = 'changed' AND NOT attisdropped")
                    : QStringLiteral("SELECT 1 FROM pragma_table_info('lastdata', 'archive') WHERE name = 'changed'");
}

/// What an archive.lastdata lacks that was made before it told of changes.
void addChanges(Transaction& transaction, bool postgres, QStringList* made)
{
    if (transaction.hasRow(ArchiveSchema::tellsChangesStatement(transaction.database())))
        return;
    if (postgres) // behind a backup, all others would wait too
        transaction.run(QStringLiteral("SET LOCAL lock_timeout = '5s'"));
    if (!transaction.hasRow(changedColumnStatement(postgres))) {
        transaction.run(QStringLiteral("ALTER TABLE archive.lastdata ADD COLUMN changed bigint"));
        *made += QStringLiteral("the column changed of archive.lastdata");
    }
    transaction.run(changesIndex(postgres));
    *made += QStringLiteral("the index archive.lastdata_changed");
}

} // namespace

bool ArchiveSchema::isPostgres(const QSqlDatabase& db)
{
    return db.driverName().startsWith(QLatin1String("QPSQL"));
}

bool ArchiveSchema::hasColumns(int type)
{
    return type >= 0 && type <= lastType && !(type >= firstPositionType && type <= lastPositionType);
}

QByteArray ArchiveSchema::valueColumn(int type)
{
    return "sens_" + QByteArray::number(type);
}

QByteArray ArchiveSchema::statusColumn(int type)
{
    return "status_" + QByteArray::number(type);
}

QString ArchiveSchema::stateColumns()
{
    QString columns = QStringLiteral("time_unix bigint NOT NULL, sens_1 integer, sens_2 integer, sens_3 integer, "
                                     "sens_4 integer");
    for (int type = 0; type <= lastType; ++type) {
        if (hasColumns(type))
            columns += QStringLiteral(", sens_%1 real").arg(type);
        columns += QStringLiteral(", status_%1 smallint").arg(type);
    }
    return columns;
}

QString ArchiveSchema::archiveFile(const QString& databaseFile)
{
    const QFileInfo file(databaseFile);
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    return file.path() + QLatin1Char('/') + file.completeBaseName() + QLatin1String("-archive") + suffix;
}

QString ArchiveSchema::attachArchive(QSqlDatabase& db)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("ATTACH DATABASE ? AS archive"));
    query.bindValue(0, archiveFile(db.databaseName()));
    return query.exec() ? QString() : DatabaseTrouble::withAdvice(query.lastError());
}

QString ArchiveSchema::errorText(const QSqlError& error)
{
    QString text = (error.databaseText().isEmpty() ? error.text() : error.databaseText()).simplified();
    if (text.endsWith(QLatin1String(" ()"))) // where Qt has no code to put there
        text.chop(3);
    return text;
}

QStringList ArchiveSchema::historyStatements()
{
    return masterStatements(true);
}

QString ArchiveSchema::check(const QSqlDatabase& db)
{
    const QString archive = QStringLiteral("archive");
    std::vector<ArchiveShards::Shard> shards;
    const QString error = isPostgres(db) ? ArchiveShards::read(db, &shards) : QString();
    if (!error.isEmpty())
        return error;
    for (const char* name : {"master_table", "lastdata", "master_table_states"}) {
        if (!shards.empty() && qstrcmp(name, "master_table_states") == 0)
            return ArchiveShards::check(db, shards);
        QSqlQuery query(db);
        if (!query.exec(existsStatement(archive, QLatin1String(name), isPostgres(db))))
            return DatabaseTrouble::withAdvice(query.lastError());
        if (!query.next())
            return QStringLiteral("there is no archive.%1; \"pardel-archive create\" makes the tables that are missing")
                .arg(QLatin1String(name));
    }
    return {};
}

QString ArchiveSchema::tellsChangesStatement(const QSqlDatabase& db)
{
    return existsStatement(QStringLiteral("archive"), QStringLiteral("lastdata_changed"), isPostgres(db));
}

QString ArchiveSchema::create(QSqlDatabase& db, QStringList* made, QString* lacking, const QStringList& history)
{
    const bool postgres = isPostgres(db);
    if (!postgres) { // both have an effect on a file that is new only
        QSqlQuery(db).exec(QStringLiteral("PRAGMA archive.page_size = 16384")); // rows are wide
        QSqlQuery(db).exec(
            QStringLiteral("PRAGMA archive.auto_vacuum = INCREMENTAL")); // space is given back bit by bit
    }
    QStringList names;
    Transaction transaction(db);
    if (postgres) { // another one would else make the same tables in the meantime
        transaction.run(QStringLiteral("SELECT pg_advisory_xact_lock(hashtext('pardel-import --create'))"));
        transaction.run(QStringLiteral("CREATE SCHEMA IF NOT EXISTS archive"));
    }
    const QList<Table> all = tables(postgres, history);
    for (const Table& table : all) {
        if (transaction.hasRow(existsStatement(table.schema, table.name, postgres)))
            continue;
        for (const QString& statement : table.statements)
            transaction.run(statement);
        names += table.schema.isEmpty() ? table.name : table.schema + QLatin1Char('.') + table.name;
    }
    QStringList added;
    const Transaction::Failure refused = transaction.attempt([&] { addChanges(transaction, postgres, &added); });
    if (!refused)
        names += added;
    if (transaction.commit()) {
        if (made)
            *made = names;
        if (lacking)
            *lacking = refused.text;
    }
    return transaction.error();
}
