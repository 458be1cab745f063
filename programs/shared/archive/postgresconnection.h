#pragma once

#include <QtGlobal>

#include <chrono>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

typedef struct pg_conn PGconn;

/** What libpq knows of an open connection to PostgreSQL; null if it is none. The QSqlDatabase stays its owner. */
PGconn* postgresConnection(const QSqlDatabase& db);

/**
 * Lets a connection fail whose other side has not answered the network for so long, as after a cut cable: by itself the
 * system waits a quarter of an hour for what was sent, and for ever where nothing was. A server that is only busy
 * answers the network. Does nothing on a local socket.
 */
void limitSilence(const QSqlDatabase& db, std::chrono::milliseconds most);
