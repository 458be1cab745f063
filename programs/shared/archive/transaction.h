#pragma once

#include <QSqlDatabase>
#include <QString>

QT_BEGIN_NAMESPACE
class QSqlQuery;
QT_END_NAMESPACE

/**
 * A transaction that is rolled back when it goes, unless it has been committed. Statements are run until one fails; the
 * first failure is kept, and what follows it does nothing.
 *
 * On SQLite it takes the lock of writers at once, so that it waits for another writer at its beginning and not in its
 * middle, where SQLite could only give up.
 */
class Transaction
{
public:
    /** Begins; @p db is used until this goes. */
    explicit Transaction(const QSqlDatabase& db);
    ~Transaction();
    Q_DISABLE_COPY_MOVE(Transaction)

    /** Runs a statement. @return whether nothing has failed yet */
    bool run(const QString& statement);
    /** The same with a query that has been prepared on the same connection, or failed to be. */
    bool run(QSqlQuery& query);
    /** Whether a statement gives a row; false after a failure. */
    bool hasRow(const QString& statement);
    /** Makes it all happen, unless something has failed. @return whether it has happened */
    bool commit();

    bool failed() const { return !m_error.isEmpty(); }
    /** The database's own words for the first failure, in one line. */
    QString error() const { return m_error; }
    /** Its SQLSTATE on PostgreSQL, its result code on SQLite; empty for a lost connection. */
    QString errorCode() const { return m_errorCode; }

private:
    bool keep(const QSqlQuery& query);

    const QSqlDatabase m_db;
    QString m_error;
    QString m_errorCode;
    bool m_open = false;
};
