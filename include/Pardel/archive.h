#pragma once

#include <Pardel/mobdata.h>
#include <Pardel/pardel_export.h>

#include <QList>
#include <QSqlError>

#include <functional>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/** @file
 * Readers of the monitoring archive. readHistory() and readLastStates() hand over many states, each with all sensors
 * asked for, and tell what went wrong. readLastData() and readPrevData() fill one report with the object's last known
 * state and with the state before a moment.
 *
 * The two of one report take the object from @p data's idObject (as an unsigned number) and the sensors to read from
 * @p data's sensors. If there are none, default sensors of the types in "Sensors" are appended first, in the order of
 * "Id"; without rows, or when that query fails, only the position is read. The archive has columns time_unix, sens_1
 * (latitude), sens_2 (longitude), sens_3 (speed), sens_4 (course), and sens_N and status_N for a sensor of type N. A
 * sensor whose columns are not there, as those of a negative type, makes the whole query fail.
 *
 * Of N sensors only the first half, rounded up, receives its value and status; the others stay as they were, as
 * the applications count on it. Values become floats, statuses keep their low 8 bits; what
 * is NULL or not numeric is 0.
 *
 * Nothing is logged; these two do not tell the cause of a failure. Without a row @p data is unchanged but for sensors
 * appended. docs/archive.md has the statements.
 */

/**
 * Fills @p data from the object's row of archive.lastdata.
 *
 * @return always true, also without a row: whether there was a row shows in timeUnix
 */
PARDEL_EXPORT bool readLastData(MobData& data, QSqlDatabase const& db);

/**
 * Fills @p data from the newest row of archive.master_table with time_unix before @p before and not before
 * @p before - @p depth, all in Unix seconds. The difference wraps at 32 bits, so that a depth larger than @p before
 * finds nothing.
 *
 * @return whether there was such a row
 */
PARDEL_EXPORT bool readPrevData(MobData& data, unsigned int before, unsigned int depth, QSqlDatabase const& db);

/** Receives a state, which is gone after the call; the reading goes on while it returns true. */
using StateReceiver = std::function<bool(MobData const&)>;

/** @name States of a period, and the last ones of all objects
 *
 *     QSqlError error = readHistory(object, from, to, {15, 65}, db, [&](const MobData& state) {
 *         track.append(state);
 *         return track.size() < mostPoints;
 *     });
 *
 * A report holds the row's object, time (a time after January 2038 as the same 32 bits) and position, 0 where that is
 * NULL, and of the sensors asked for those that the row has, in the order of @p types and each once, however often it
 * is asked for. A sensor that the row does not have (NULL) is not in the list: SensorExist() tells it from one that
 * reads 0. Neither is a type of which the archive has no columns sens_N and status_N, nor a negative one, nor 1 to 4,
 * which are the position: archives differ, and that is no error; readSensorTypes() tells which types this one keeps.
 * A status of which the value is NULL comes with "not a number", as SQLite cannot store that; a NULL status is 0.
 * Values become floats, statuses keep their low 8 bits, Sensor::number is -1; what is not numeric is 0.
 *
 * The rows come in pages of some thousands, so that a million of them takes no more memory than ten thousand; only the
 * rows of one time (in archive.lastdata, of one object) are always together in a page. Each page is a statement of its
 * own, finished before its states are handed over: @p take may use the connection for whatever it wants, transactions
 * too. States that are stored while it reads may be among those handed over or not; none comes twice.
 *
 * @param take receives the states; when it returns false the reading ends, without an error. An empty one ends it
 *        before the first.
 * @return the cause of a failure, after which no more states come (those before it are good); of type
 *         QSqlError::NoError otherwise, without any rows too. A connection that is not open gives
 *         QSqlError::ConnectionError, "The connection is not open" or what kept it from opening.
 * @{ */
/**
 * Hands over the object's states of archive.master_table with a time from @p from up to and with @p to, in Unix
 * seconds, in the order of their times; those of one time in any order. Nothing comes when @p from is after @p to.
 *
 * Rows without a time belong to a period only if it reaches there: a time of 0 if @p from is 0, one of -1, stored
 * unsigned, if @p to is 4294967295. With times stored as negative numbers they never do.
 */
PARDEL_EXPORT QSqlError readHistory(qint32 idObject, quint32 from, quint32 to, QList<qint16> const& types,
                                    QSqlDatabase const& db, StateReceiver const& take);

/**
 * Hands over the row of archive.lastdata of every object, in the order of their ids as unsigned numbers: -2 is
 * 4294967294 and comes last but one. Rows with an id that is no such number, or NULL, do not come.
 */
PARDEL_EXPORT QSqlError readLastStates(QList<qint16> const& types, QSqlDatabase const& db, StateReceiver const& take);
/** @} */

/**
 * Fills @p types with the sensor types that archive.master_table keeps, in ascending order: those with the columns
 * sens_N and status_N, N from 0 to 32767 but for 1 to 4. archive.lastdata has the same columns.
 *
 * @return the cause of a failure, as of the readers above, with @p types unchanged; without the table that is an error
 *         too
 */
PARDEL_EXPORT QSqlError readSensorTypes(QList<qint16>& types, QSqlDatabase const& db);
