#pragma once

#include <QSqlDatabase>
#include <QString>

#include <functional>

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
    /** What went wrong, and its SQLSTATE on PostgreSQL, its result code on SQLite; both empty if nothing did. */
    struct Failure
    {
        QString text;
        QString code;

        explicit operator bool() const { return !text.isEmpty(); }
    };

    /** Begins; @p db is used until this goes. */
    explicit Transaction(const QSqlDatabase& db);
    ~Transaction();
    Q_DISABLE_COPY_MOVE(Transaction)

    const QSqlDatabase& database() const { return m_db; }

    /** Runs a statement. @return whether nothing has failed yet */
    bool run(const QString& statement);
    /** The same with a query that has been prepared on the same connection, or failed to be. */
    bool run(QSqlQuery& query);
    /** The same with a statement whose rows are read from @p query, once, forwards. */
    bool run(QSqlQuery& query, const QString& statement);
    /** Goes to the next row of a query that has been run; one that breaks off there, as when a server goes, is a failure. */
    bool next(QSqlQuery& query);
    /** Whether a statement gives a row; false after a failure. */
    bool hasRow(const QString& statement);
    /** Lets it fail for a reason that no statement above has met. @return false */
    bool fail(const Failure& failure);
    /** Sets a mark, to which undo() goes back. */
    void mark(const char* name);
    /** Undoes all since the mark, a failure too. @return that failure, if there was one */
    Failure undo(const char* name);
    /** Runs a part that may fail: then it is undone and the transaction goes on. @return why it failed, if it did */
    Failure attempt(const std::function<void()>& part);
    /** Makes it all happen, unless something has failed. @return whether it has happened */
    bool commit();

    bool failed() const { return static_cast<bool>(m_failure); }
    /** The first failure. */
    const Failure& failure() const { return m_failure; }
    /** The database's own words for it, in one line. */
    QString error() const { return m_failure.text; }
    /** Its SQLSTATE on PostgreSQL, its result code on SQLite; empty for a lost connection. */
    QString errorCode() const { return m_failure.code; }

private:
    bool goesOn();
    bool keep(const QSqlQuery& query);

    const QSqlDatabase m_db;
    Failure m_failure;
    bool m_open = false;
};
