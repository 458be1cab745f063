#include "queries_p.h"

QSqlError notOpen(const QSqlDatabase& db)
{
    const QSqlError last = db.lastError();
    // Of what went wrong while it was open, nothing says why it is not.
    return last.type() == QSqlError::ConnectionError
               ? last
               : QSqlError(QString(), QStringLiteral("The connection is not open"), QSqlError::ConnectionError);
}
