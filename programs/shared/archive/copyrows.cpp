#include "copyrows.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>

#include <cstring>
#include <memory>

#include <libpq-fe.h>

namespace {

constexpr char uniqueViolation[] = "23505";

using Result = std::unique_ptr<PGresult, void (*)(PGresult*)>;

Result owned(PGresult* result)
{
    return {result, PQclear};
}

CopyResult failure(PGconn* connection)
{
    return {CopyResult::Failed, QString::fromUtf8(PQerrorMessage(connection)).simplified()};
}

} // namespace

CopyResult copyRows(const QSqlDatabase& db, const QByteArray& table, const QByteArray& columns, const QByteArray& rows)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || std::strcmp(handle.typeName(), "PGconn*") != 0)
        return {CopyResult::Failed, QStringLiteral("The connection is not one to PostgreSQL")};
    PGconn* const connection = *static_cast<PGconn* const*>(handle.constData());

    const QByteArray statement = "COPY " + table + " (" + columns + ") FROM STDIN";
    if (PQresultStatus(owned(PQexec(connection, statement.constData())).get()) != PGRES_COPY_IN)
        return failure(connection);
    if (PQputCopyData(connection, rows.constData(), rows.size()) != 1 || PQputCopyEnd(connection, nullptr) != 1)
        return failure(connection);
    CopyResult copied{CopyResult::Copied, QString()};
    for (Result result = owned(PQgetResult(connection)); result; result = owned(PQgetResult(connection))) {
        if (PQresultStatus(result.get()) == PGRES_COMMAND_OK)
            continue;
        copied = failure(connection);
        const char* const state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
        if (state && std::strcmp(state, uniqueViolation) == 0)
            copied.outcome = CopyResult::Repeated;
    }
    return copied;
}
