#include "queries_p.h"

QSqlError notOpen(const QSqlDatabase& db)
{
    const QSqlError last = db.lastError();
    return last.type() != QSqlError::NoError
               ? last
               : QSqlError(QString(), QStringLiteral("The connection is not open"), QSqlError::ConnectionError);
}
