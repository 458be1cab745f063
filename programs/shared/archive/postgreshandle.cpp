#include "postgreshandle.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>

#include <cstring>

pg_conn* postgresHandle(const QSqlDatabase& db)
{
    const QVariant handle = db.driver()->handle();
    const char* const type = handle.isValid() ? handle.typeName() : "";
    const bool known = std::strcmp(type, "PGconn*") == 0 || std::strcmp(type, "pg_conn*") == 0; // Qt 5, Qt 6
    return known ? *static_cast<pg_conn* const*>(handle.constData()) : nullptr;
}
