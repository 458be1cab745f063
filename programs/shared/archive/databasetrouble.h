#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QSqlError;
QT_END_NAMESPACE

/**
 * What can be done about a failed transaction, by its error code: a SQLSTATE of PostgreSQL, a result code of SQLite, or
 * nothing where the connection is lost.
 */
namespace DatabaseTrouble {

/** Whether the same transaction may well succeed at once: others were in its way. */
bool passes(const QString& code);

/** Who tries again what has failed. */
enum class Retry
{
    ByHand,
    ByItself, ///< The program, over and over.
};

/** What to do next, a clause for people; "run it again" (or "it goes on") only where that helps. */
QString advice(const QString& code, Retry retry = Retry::ByHand);

/** The database's own words, in one line, and in brackets what to do next. */
QString withAdvice(const QSqlError& error, Retry retry = Retry::ByHand);

} // namespace DatabaseTrouble
