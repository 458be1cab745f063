#pragma once

#include "archivebatch.h"
#include "copyrows.h"

/** The columns of a state as COPY takes them into a table of PostgreSQL. */
namespace StateColumns {

constexpr int positionCount = 4;
constexpr int firstCount = 2 + positionCount; ///< Those before the sensors: id_object, time_unix, the position.

using Types = std::bitset<ArchiveBatch::typeCount>;

/** The names, with those of value and status of sensors of these types. */
QByteArray names(const Types& types);

/** For every type a value and a status: those of the sensors, which are in the order of their types, or null. */
void appendSensors(CopyRows& rows, const Types& types, const Sensor* next, const Sensor* end);

} // namespace StateColumns
