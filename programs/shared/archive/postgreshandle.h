#pragma once

#include <QtGlobal>

#include <chrono>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

struct pg_conn;

/** What Qt's driver talks through, for calls that Qt lacks; null without an open connection to PostgreSQL. */
pg_conn* postgresHandle(const QSqlDatabase& db);

/**
 * Lets a connection fail whose other side has not answered the network for so long, as after a cut cable: by itself the
 * system waits a quarter of an hour for what was sent, and for ever where nothing was. A server that is only busy
 * answers the network. Does nothing on a local socket.
 */
void limitSilence(const QSqlDatabase& db, std::chrono::milliseconds most);
