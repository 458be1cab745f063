#include <Pardel/lookups.h>

#include "queries_p.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

/// The first column of the query's first row, which @p execute runs; an invalid value and the cause without a row.
template <typename Execute>
QVariant firstValue(const QSqlDatabase& db, QSqlError* error, Execute execute)
{
    QSqlError cause;
    if (!db.isOpen()) {
        cause = notOpen(db);
    } else {
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (execute(query) && query.next())
            return query.value(0);
        cause = query.lastError();
    }
    if (error)
        *error = cause;
    return QVariant();
}

QVariant valueOfUser(const QString& statement, unsigned int id, const QSqlDatabase& db, QSqlError* error)
{
    return firstValue(db, error, [&](QSqlQuery& query) { return query.exec(statement.arg(id)); });
}

} // namespace

QString userNameByID(unsigned int id, QSqlDatabase db, QSqlError* error)
{
    return valueOfUser(QStringLiteral("SELECT \"Login\" FROM \"Connections\" WHERE \"Id\" = %1"), id, db, error)
        .toString();
}

QString userDescByID(unsigned int id, QSqlDatabase db, QSqlError* error)
{
    return valueOfUser(QStringLiteral("SELECT \"Description\" FROM \"Connections\" WHERE \"Id\" = %1"), id, db, error)
        .toString();
}

bool userIsAdminByID(unsigned int id, QSqlDatabase db, QSqlError* error)
{
    return valueOfUser(QStringLiteral("SELECT \"Admin\" FROM \"Connections\" WHERE \"Id\" = %1"), id, db, error)
        .toBool();
}

QString descCommandByName(unsigned int objectId, QByteArray name, QSqlDatabase db, QSqlError* error)
{
    const auto length = static_cast<int>(qstrnlen(name.constData(), static_cast<uint>(name.size())));
    const QString pattern = QString::fromUtf8(name.constData(), length);
    return firstValue(
               db, error,
               [&](QSqlQuery& query) {
                   // A failed prepare is not executed: PostgreSQL would replace its cause by another.
                   if (!query.prepare(QStringLiteral("SELECT \"Description\" FROM \"Commands\" where \"Id_object\" = ? "
                                                     "and \"Name\" like ? ")))
                       return false;
                   query.bindValue(0, objectId);
                   query.bindValue(1, pattern);
                   return query.exec();
               })
        .toString();
}
