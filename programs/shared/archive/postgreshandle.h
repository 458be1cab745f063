#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

struct pg_conn;

/** What Qt's driver talks through, for calls that Qt lacks; null without an open connection to PostgreSQL. */
pg_conn* postgresHandle(const QSqlDatabase& db);
