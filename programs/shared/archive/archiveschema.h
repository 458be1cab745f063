#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
class QSqlError;
QT_END_NAMESPACE

/** The tables of the archive as pardel-import makes and fills them; docs/archive.md describes them. */
namespace ArchiveSchema {

bool isPostgres(const QSqlDatabase& db);

/** Whether a sensor of this type can be stored: 0 and 5 to 255. sens_1 to sens_4 are the position. */
bool hasColumns(int type);

/** The database's own words for what went wrong, in one line. */
QString errorText(const QSqlError& error);

/** "sens_N" and "status_N". */
QByteArray valueColumn(int type);
QByteArray statusColumn(int type);

/**
 * The columns of a state, as CREATE TABLE takes them: time_unix, the position, and value and status of every sensor
 * type. Of the types 1 to 4 there is a status too, so that a reader that asks for such a sensor finds the pair.
 */
QString stateColumns();

/** Where the archive of an SQLite database lies: beside its file, "-archive" before the name's last dot. */
QString archiveFile(const QString& databaseFile);

/** Makes the archive's own file the schema "archive" of an SQLite connection. @return what went wrong and what to do, or nothing */
QString attachArchive(QSqlDatabase& db);

/** The statements that make archive.master_table on a PostgreSQL server, for itself or as a shard. */
QStringList historyStatements();

/**
 * Whether reports can be stored in the archive's tables without being there twice; of shards, whether each can be
 * reached and has the index for that.
 *
 * @return what is missing, or nothing
 */
QString check(const QSqlDatabase& db);

/**
 * A statement that gives a row if writers tell of changes: archive.lastdata has the column `changed` and its index
 * lastdata_changed, which are made together. Archives of other makers and older ones may lack them; their reports are
 * stored all the same.
 *
 * `changed` is greater the later a row was written, so that who has read all up to some value finds the rest by the
 * index. NULL is a row that nobody has written since the column was made.
 * - PostgreSQL: the number of the transaction that wrote the row last. A counter, or the time, would not do: a
 *   transaction takes its value before it commits, and one with a greater value may commit first. Who had read that
 *   one would never look for the smaller. Of transactions PostgreSQL tells which were under way: all that a reader
 *   has not seen has at least the number of the oldest of those (pg_snapshot_xmin) in its last reading.
 * - SQLite, where writers follow each other: one more than the greatest there, or the time in milliseconds where that
 *   is greater, so that values do not come again when rows have been deleted.
 */
QString tellsChangesStatement(const QSqlDatabase& db);

/** The channel on which writers notify PostgreSQL's listeners, once in a transaction that changes last states. */
constexpr char changesChannel[] = "pardel";

/**
 * Makes the tables that are missing, empty, with their indexes. Tables of the same name that are there stay as they
 * are, but that archive.lastdata gets the column `changed` and its index. Of two at once, one waits for the other.
 *
 * @param made receives the names of the tables that have been made, and what else
 * @param lacking receives why `changed` or its index could not be made, as by a user who does not own the table; empty
 *                if they are there. The tables are made without them.
 * @param history the statements that make archive.master_table where it is missing, if not the usual ones
 * @return what went wrong, with nothing made, or nothing
 */
QString create(QSqlDatabase& db, QStringList* made = nullptr, QString* lacking = nullptr,
               const QStringList& history = {});

} // namespace ArchiveSchema
