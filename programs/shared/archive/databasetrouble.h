#pragma once

#include <QString>

/**
 * What can be done about a failed transaction, by its error code: a SQLSTATE of PostgreSQL, a result code of SQLite, or
 * nothing where the connection is lost.
 */
namespace DatabaseTrouble {

/** Whether the same transaction may well succeed at once: others were in its way. */
bool passes(const QString& code);

/** What to do next, a clause for people; "run it again" only where that helps. */
QString advice(const QString& code);

} // namespace DatabaseTrouble
