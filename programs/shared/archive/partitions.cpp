#include "partitions.h"

#include "archiveschema.h"
#include "transaction.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <limits>
#include <optional>
#include <tuple>

namespace {

// Terminals' clocks may say anything, and PostgreSQL's planning takes all partitions.
constexpr int partitionedYears = 10;
constexpr int partitionedDaysAhead = 1;

const QLatin1String lockTimeout("55P03");
const QLatin1String partitionKey("RANGE (time_unix)");

QString advisoryLock(const char* function)
{
    return QStringLiteral("SELECT %1(hashtext('archive.master_table'))").arg(QLatin1String(function));
}

/// "FOR VALUES FROM ('1767225600') TO (MAXVALUE)" or "DEFAULT"
ArchivePartitions::Partition partitionOf(const QString& table, const QString& bounds)
{
    static const QRegularExpression range(
        QStringLiteral(R"(FROM \('?(-?\d+|MINVALUE)'?\) TO \('?(-?\d+|MAXVALUE)'?\))"));
    const QRegularExpressionMatch match = range.match(bounds);
    ArchivePartitions::Partition partition;
    partition.table = table;
    partition.rest = !match.hasMatch();
    if (match.hasMatch()) {
        bool finite = false;
        partition.first = match.captured(1).toLongLong(&finite);
        if (!finite)
            partition.first = std::numeric_limits<qint64>::min();
        partition.next = match.captured(2).toLongLong(&finite);
        if (!finite)
            partition.next = std::numeric_limits<qint64>::max();
    }
    return partition;
}

/// A transaction beside which none with storingLock() runs: on a shard, none of those that store through @p first.
class Change
{
public:
    Change(const QSqlDatabase& db, const QSqlDatabase* first);
    Transaction& transaction() { return m_transaction; }

private:
    std::optional<Transaction> m_first; // goes last
    Transaction m_transaction;
};

Change::Change(const QSqlDatabase& db, const QSqlDatabase* first) : m_transaction(db)
{
    const QString lock = advisoryLock("pg_advisory_xact_lock");
    if (first) {
        m_first.emplace(*first);
        m_first->run(lock);
        if (m_first->failed())
            m_transaction.fail(m_first->failure());
    }
    m_transaction.run(lock);
    m_transaction.run(QStringLiteral("SET LOCAL lock_timeout = '5s'")); // behind a backup, all others would wait too
}

QString commit(Transaction& transaction)
{
    transaction.commit();
    return transaction.errorCode() == lockTimeout
               ? QStringLiteral(
                     "another program, perhaps a backup, has archive.master_table in use; try again when it has ended")
               : transaction.error();
}

QString failureOf(const QSqlQuery& query)
{
    return ArchiveSchema::errorText(query.lastError());
}

/// Whether a month can get this table. @return what went wrong, or nothing
QString canBeMade(const QSqlDatabase& db, const QString& table, bool* can)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT to_regclass('%1') IS NULL AND "
                                   "pg_get_partkeydef(to_regclass('archive.master_table')) IS NOT DISTINCT FROM '%2'")
                        .arg(table, partitionKey)) ||
        !query.next())
        return failureOf(query);
    *can = query.value(0).toBool();
    return {};
}

/// " TABLESPACE x" of archive.master_table, as partitions inherit it.
QString tablespace(const QSqlDatabase& db)
{
    QSqlQuery query(QStringLiteral("SELECT quote_ident(spcname) FROM pg_tablespace s JOIN pg_class c "
                                   "ON s.oid = c.reltablespace WHERE c.oid = 'archive.master_table'::regclass"),
                    db);
    return query.next() ? QLatin1String(" TABLESPACE ") + query.value(0).toString() : QString();
}

/// As those of archive.master_table. PostgreSQL would make them too, but with the rest locked.
QStringList indexStatements(const QSqlDatabase& db, const QString& table)
{
    QStringList statements;
    QSqlQuery query(QStringLiteral("SELECT regexp_replace(pg_get_indexdef(indexrelid), ' INDEX .*? USING ', "
                                   "' INDEX ON %1 USING ') FROM pg_index "
                                   "WHERE indrelid = to_regclass('archive.master_table')")
                        .arg(table),
                    db);
    while (query.next())
        statements += query.value(0).toString();
    return statements;
}

/// Copies and then deletes: with DELETE ... RETURNING, or into a table with its index, it takes five times as long.
void moveReports(Transaction& transaction, const QString& table, const QString& inMonth)
{
    // Of the range of no partition, so that all are in the rest; in archive.master_table's order of columns.
    const QString reports = QStringLiteral("FROM archive.master_table WHERE ") + inMonth;
    if (!transaction.hasRow(QStringLiteral("SELECT 1 %1 LIMIT 1").arg(reports)))
        return;
    transaction.run(QStringLiteral("INSERT INTO %1 SELECT * %2").arg(table, reports));
    transaction.run(QStringLiteral("DELETE ") + reports);
}

} // namespace

QDate ArchivePartitions::oldestDay(const QDate& today)
{
    return monthOf(today.addYears(-partitionedYears));
}

QDate ArchivePartitions::newestDay(const QDate& today)
{
    return monthOf(today.addDays(partitionedDaysAhead)).addMonths(1).addDays(-1);
}

bool ArchivePartitions::hasPartition(const QDate& day, const QDate& today)
{
    return day >= oldestDay(today) && day <= newestDay(today);
}

QDate ArchivePartitions::monthOf(const QDate& day)
{
    return QDate(day.year(), day.month(), 1);
}

qint64 ArchivePartitions::firstSecond(const QDate& day)
{
    return QDateTime(day, QTime(0, 0), Qt::UTC).toSecsSinceEpoch();
}

QString ArchivePartitions::monthTable(const QDate& month)
{
    return QStringLiteral("archive.master_table_") + month.toString(QStringLiteral("yyyy_MM"));
}

QString ArchivePartitions::storingLock()
{
    return advisoryLock("pg_advisory_xact_lock_shared");
}

QString ArchivePartitions::read(const QSqlDatabase& db, std::vector<Partition>* list)
{
    QSqlQuery query(db);
    if (!query.exec(
            QStringLiteral(
                "SELECT format('%I.%I', n.nspname, c.relname), pg_get_expr(c.relpartbound, c.oid), c.relkind = 'f' "
                "FROM pg_inherits i JOIN pg_class c ON c.oid = i.inhrelid JOIN pg_namespace n ON n.oid = "
                "c.relnamespace "
                "WHERE i.inhparent = to_regclass('archive.master_table') "
                "AND pg_get_partkeydef(i.inhparent) = '%1'")
                .arg(partitionKey)))
        return failureOf(query);
    std::vector<Partition> partitions;
    while (query.next()) {
        partitions.push_back(partitionOf(query.value(0).toString(), query.value(1).toString()));
        partitions.back().foreign = query.value(2).toBool();
    }
    std::sort(partitions.begin(), partitions.end(), [](const Partition& a, const Partition& b) {
        return std::tie(a.rest, a.first) < std::tie(b.rest, b.first);
    });
    list->swap(partitions);
    return {};
}

QString ArchivePartitions::makeMonth(QSqlDatabase& db, const QDate& firstDay, const QSqlDatabase* first)
{
    if (!ArchiveSchema::isPostgres(db))
        return {};
    const QString table = monthTable(firstDay);
    bool missing = false;
    QString error = canBeMade(db, table, &missing);
    if (!missing || !error.isEmpty())
        return error;

    Change change(db, first);
    Transaction& transaction = change.transaction();
    error = canBeMade(db, table, &missing); // another one may have made it just now
    std::vector<Partition> partitions;
    if (error.isEmpty())
        error = read(db, &partitions);
    const qint64 begin = firstSecond(firstDay);
    const qint64 next = firstSecond(firstDay.addMonths(1));
    const bool covered = std::any_of(partitions.begin(), partitions.end(), [&](const Partition& partition) {
        return !partition.rest && partition.first < next && partition.next > begin;
    });
    if (transaction.failed() || !error.isEmpty() || !missing || covered)
        return transaction.failed() ? transaction.error() : error;
    // Who stores without storingLock() would else wait for a moved report while this waits for him.
    if (!partitions.empty() && partitions.back().rest)
        transaction.run(QStringLiteral("LOCK TABLE %1 IN SHARE ROW EXCLUSIVE MODE").arg(partitions.back().table));
    // CREATE TABLE ... PARTITION OF would keep the readers and writers of all months out, and refuse a month of which
    // the rest holds a report. By the constraint PostgreSQL knows that it need not look through the moved ones again.
    const QString inMonth = QStringLiteral("time_unix >= %1 AND time_unix < %2").arg(begin).arg(next);
    transaction.run(
        QStringLiteral("CREATE TABLE %1 (LIKE archive.master_table INCLUDING DEFAULTS INCLUDING CONSTRAINTS "
                       "INCLUDING GENERATED INCLUDING STORAGE, CONSTRAINT in_month CHECK (%2))")
            .arg(table, inMonth) +
        tablespace(db));
    moveReports(transaction, table, inMonth);
    const QStringList statements = indexStatements(db, table);
    for (const QString& statement : statements)
        transaction.run(statement);
    transaction.run(QStringLiteral("ALTER TABLE archive.master_table ATTACH PARTITION %1 FOR VALUES FROM (%2) TO (%3)")
                        .arg(table)
                        .arg(begin)
                        .arg(next));
    transaction.run(QStringLiteral("ALTER TABLE %1 DROP CONSTRAINT in_month").arg(table));
    return commit(transaction);
}

QString ArchivePartitions::drop(QSqlDatabase& db, const QString& table, const QSqlDatabase* first)
{
    Change change(db, first);
    Transaction& transaction = change.transaction();
    std::vector<Partition> partitions;
    const QString error = read(db, &partitions);
    const bool there = std::any_of(partitions.begin(), partitions.end(),
                                   [&table](const Partition& partition) { return partition.table == table; });
    if (!transaction.failed() && !there)
        return error;
    transaction.run(QLatin1String("DROP TABLE ") + table);
    return commit(transaction);
}
