#include "transaction.h"

#include "archiveschema.h"

#include <QSqlError>
#include <QSqlQuery>

#include <utility>

Transaction::Transaction(const QSqlDatabase& db) : m_db(db)
{
    m_open = run(ArchiveSchema::isPostgres(db) ? QStringLiteral("BEGIN") : QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (m_open && m_db.isOpen())
        QSqlQuery(m_db).exec(QStringLiteral("ROLLBACK"));
}

bool Transaction::run(const QString& statement)
{
    QSqlQuery query(m_db);
    return run(query, statement);
}

bool Transaction::run(QSqlQuery& query)
{
    if (!goesOn())
        return false;
    if (query.lastError().type() == QSqlError::NoError) // else it could not be prepared, and exec() would hide why
        query.exec();
    return keep(query);
}

bool Transaction::run(QSqlQuery& query, const QString& statement)
{
    if (!goesOn())
        return false;
    query.setForwardOnly(true);
    query.exec(statement);
    return keep(query);
}

bool Transaction::hasRow(const QString& statement)
{
    QSqlQuery query(m_db);
    return run(query, statement) && next(query);
}

bool Transaction::next(QSqlQuery& query)
{
    if (failed())
        return false;
    // Rows that are read forwards come while the server is still at work.
    return query.next() || (keep(query) && false);
}

bool Transaction::fail(const Failure& failure)
{
    if (!failed())
        m_failure = failure;
    if (!failed())
        m_failure.text = QStringLiteral("the database does not say what went wrong");
    return false;
}

void Transaction::mark(const char* name)
{
    run(QStringLiteral("SAVEPOINT ") + QLatin1String(name));
}

Transaction::Failure Transaction::undo(const char* name)
{
    const Failure undone = std::exchange(m_failure, Failure());
    if (!run(QStringLiteral("ROLLBACK TO SAVEPOINT ") + QLatin1String(name)) && undone)
        m_failure = undone; // the cause, where the connection is gone
    return undone;
}

Transaction::Failure Transaction::attempt(const std::function<void()>& part)
{
    if (failed())
        return m_failure;
    mark("attempt");
    part();
    if (failed())
        return undo("attempt");
    run(QStringLiteral("RELEASE SAVEPOINT attempt"));
    return m_failure;
}

bool Transaction::commit()
{
    if (!run(QStringLiteral("COMMIT")))
        return false;
    m_open = false;
    return true;
}

/// Without an open connection Qt would print a warning and not say why.
bool Transaction::goesOn()
{
    if (!failed() && !m_db.isOpen())
        fail({QStringLiteral("the connection to the database is lost"), QString()});
    return !failed();
}

bool Transaction::keep(const QSqlQuery& query)
{
    const QSqlError error = query.lastError();
    if (error.type() != QSqlError::NoError)
        fail({ArchiveSchema::errorText(error), error.nativeErrorCode()});
    return !failed();
}
