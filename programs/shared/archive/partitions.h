#pragma once

#include <QDate>
#include <QString>

#include <vector>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/**
 * The partitions of archive.master_table on PostgreSQL: one a month, archive.master_table_yyyy_MM, and the default
 * partition ("the rest", archive.master_table_rest) for all other times. Months are those of UTC.
 *
 * Who adds or takes partitions holds an advisory lock for itself; who stores reports shares it (storingLock), so that
 * neither meets the other in the middle.
 */
namespace ArchivePartitions {

struct Partition
{
    QString table;        ///< As SQL takes it, with its schema.
    bool foreign = false; ///< It lies on another server.
    bool rest = false;    ///< The default partition; it has no range.
    qint64 first = 0; ///< Unix seconds: the first of its range and the first after it. Ranges without an end reach as
    qint64 next = 0;  ///< far as the type does.
};

/**
 * The first and the last day with a partition: the months of ten years ago to that of tomorrow, as a clock may be a
 * little fast. @p today is a day in UTC, as all days here.
 */
QDate oldestDay(const QDate& today);
QDate newestDay(const QDate& today);

/** Whether this is one of them or between them. */
bool hasPartition(const QDate& day, const QDate& today);

/** The first day of a day's month. */
QDate monthOf(const QDate& day);

/** Unix seconds of a day's beginning. */
qint64 firstSecond(const QDate& day);

/** archive.master_table_yyyy_MM */
QString monthTable(const QDate& month);

/**
 * A statement for the beginning of a transaction that stores reports, on PostgreSQL. No partition comes or goes until
 * that ends; a report on its way to the rest would else be refused when its month gets a partition in that moment.
 */
QString storingLock();

/**
 * All partitions in the order of their ranges, the rest at the end.
 *
 * @param list stays as it is when something goes wrong, and becomes empty where archive.master_table is not partitioned
 *             by ranges of time_unix
 * @return what went wrong, or nothing
 */
QString read(const QSqlDatabase& db, std::vector<Partition>* list);

/**
 * Makes the partition of the month that begins with @p firstDay, unless it is there, and moves what the rest holds of
 * that month into it; all of it happens or nothing. One look-up where the month is there already; else one pass over
 * the rest. Two processes may do it at once. Readers wait for the last part only, in which the month is attached.
 *
 * Does nothing on SQLite, where another table or partition has the month's name or a part of its range, and where
 * archive.master_table is not partitioned by ranges of time_unix.
 *
 * @param db has no transaction open
 * @param first where @p db is a shard: the first server, through which reports come to it; has no transaction open
 * @return what went wrong, or nothing; reports can be stored in either case
 */
QString makeMonth(QSqlDatabase& db, const QDate& firstDay, const QSqlDatabase* first = nullptr);

/**
 * Drops a partition with all that it holds, unless it is none any more.
 *
 * @param db has no transaction open
 * @param first as above
 * @return what went wrong, with nothing dropped, or nothing
 */
QString drop(QSqlDatabase& db, const QString& table, const QSqlDatabase* first = nullptr);

} // namespace ArchivePartitions
