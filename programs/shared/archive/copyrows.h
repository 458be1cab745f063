#pragma once

#include <QByteArray>
#include <QString>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/** How a COPY into PostgreSQL ended. */
struct CopyResult
{
    enum Outcome
    {
        Copied,
        Repeated, ///< A row is there already; none was copied.
        Failed,
    };

    Outcome outcome;
    QString error;
};

/**
 * Sends rows in PostgreSQL's COPY text format (tabs between columns, a line feed behind each row) through the
 * connection of
 * @p db, the fastest way in. Qt has no call for it, so this talks to the connection that its driver holds.
 */
CopyResult copyRows(const QSqlDatabase& db, const QByteArray& table, const QByteArray& columns, const QByteArray& rows);
