#pragma once

#include <Pardel/mobdata.h>
#include <Pardel/pardel_export.h>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/** @file
 * Readers of the monitoring archive: an object's last known state and the state before a moment.
 *
 * Both take the object from @p data's idObject (as an unsigned number) and the sensors to read from @p data's sensors.
 * If there are none, default sensors of the types in "Sensors" are appended first, in the order of "Id"; without rows,
 * or when that query fails, only the position is read. The archive has columns time_unix, sens_1 (latitude), sens_2
 * (longitude), sens_3 (speed), sens_4 (course), and sens_N and status_N for a sensor of type N. A sensor whose columns
 * are not there, as those of a negative type, makes the whole query fail.
 *
 * Of N sensors only the first half, rounded up, receives its value and status; the others stay as they were. That is
 * how the archive has always been read, and kept on purpose. Values become floats, statuses keep their low 8 bits; what
 * is NULL or not numeric is 0.
 *
 * Nothing is logged; the cause of a failure is not told. Without a row @p data is unchanged but for sensors appended.
 * docs/archive.md has the statements.
 */

/**
 * Fills @p data from the object's row of archive.lastdata.
 *
 * @return always true, on purpose: whether there was a row shows in timeUnix
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
