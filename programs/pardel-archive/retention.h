#pragma once

#include "archivecontents.h"

#include <QDate>
#include <QString>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/** What becomes of a partition when the months before @p oldestKept go. */
struct Fate
{
    bool goes = false;
    QString whyStays; ///< Where older reports in it stay all the same; empty where it has none.
};

Fate fateOf(const Part& part, const QDate& oldestKept);

/**
 * Deletes a month's reports: on PostgreSQL in one transaction, on SQLite 20,000 in a transaction with a pause behind
 * each, so that an import beside it need not wait for long.
 *
 * @param deleted receives how many there were
 * @return what went wrong, or nothing; what has been deleted is gone
 */
QString deleteMonth(const QSqlDatabase& db, const QString& table, const Span& month, qint64* deleted);

/**
 * Gives what is free in the file of an SQLite archive back to the file system: in small steps,
 * or where the file was not made for that, by writing it anew if a twentieth of it is free. The latter needs as much
 * space again for a moment, and makes the file one that gives back in steps.
 *
 * @return what went wrong, with the rest free in the file, or nothing
 */
QString giveSpaceBack(const QSqlDatabase& db, const QString& file);
