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
 * Makes the tables that are missing, empty, with their indexes. Tables of the same name that are there stay as they
 * are. Of two at once, one waits for the other.
 *
 * @param made receives the names of the tables that have been made
 * @param history the statements that make archive.master_table where it is missing, if not the usual ones
 * @return what went wrong, with nothing made, or nothing
 */
QString create(QSqlDatabase& db, QStringList* made = nullptr, const QStringList& history = {});

} // namespace ArchiveSchema
