#pragma once

#include "transaction.h"

#include <QByteArray>

#include <array>

/**
 * Rows in PostgreSQL's binary COPY format, and their way into a table: the fastest there is. Qt has no call for it, so
 * this talks to the connection that its driver holds.
 */
class CopyRows
{
public:
    using Print = std::array<unsigned char, 16>;

    /** Every row has this many columns, which are appended in their order after beginRow(). */
    explicit CopyRows(int columns);

    void beginRow();
    void append(qint16 value);
    void append(qint32 value);
    void append(qint64 value);
    void append(float value);
    void append(const Print& value);
    void appendNull();

    /**
     * Begins to send the rows, without waiting for the server; they may go then. Until finish() nothing else may use
     * the connection.
     */
    Transaction::Failure start(const QSqlDatabase& db, const QByteArray& table, const QByteArray& columns);

    /** Sends on what the connection takes without waiting. @return whether finish() will not have to wait */
    static bool proceed(const QSqlDatabase& db);
    /** Waits until the server has taken all rows, or none of them. */
    static Transaction::Failure finish(const QSqlDatabase& db);

private:
    template <typename Number>
    void appendNumber(Number value);

    QByteArray m_bytes;
    int m_size = 0; // of what has been written into it
    const int m_columns;
};
