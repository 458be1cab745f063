#include "transaction.h"

#include "archiveschema.h"

#include <QSqlError>
#include <QSqlQuery>

Transaction::Transaction(const QSqlDatabase& db) : m_db(db)
{
    m_open = run(ArchiveSchema::isPostgres(db) ? QStringLiteral("BEGIN") : QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (m_open)
        QSqlQuery(m_db).exec(QStringLiteral("ROLLBACK"));
}

bool Transaction::run(const QString& statement)
{
    if (failed())
        return false;
    QSqlQuery query(m_db);
    query.exec(statement);
    return keep(query);
}

bool Transaction::run(QSqlQuery& query)
{
    if (failed())
        return false;
    if (query.lastError().type() == QSqlError::NoError) // else it could not be prepared, and exec() would hide why
        query.exec();
    return keep(query);
}

bool Transaction::hasRow(const QString& statement)
{
    if (failed())
        return false;
    QSqlQuery query(m_db);
    query.exec(statement);
    return keep(query) && query.next();
}

bool Transaction::commit()
{
    if (!run(QStringLiteral("COMMIT")))
        return false;
    m_open = false;
    return true;
}

bool Transaction::keep(const QSqlQuery& query)
{
    const QSqlError error = query.lastError();
    if (error.type() != QSqlError::NoError) {
        m_error = ArchiveSchema::errorText(error);
        m_errorCode = error.nativeErrorCode();
    }
    return !failed();
}
