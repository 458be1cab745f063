#include "postgreshandle.h"

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QVariant>

#include <algorithm>
#include <cstring>

#include <libpq-fe.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

pg_conn* postgresHandle(const QSqlDatabase& db)
{
    const QVariant handle = db.driver()->handle();
    const char* const type = handle.isValid() ? handle.typeName() : "";
    const bool known = std::strcmp(type, "PGconn*") == 0 || std::strcmp(type, "pg_conn*") == 0; // Qt 5, Qt 6
    return known ? *static_cast<pg_conn* const*>(handle.constData()) : nullptr;
}

void limitSilence(const QSqlDatabase& db, std::chrono::milliseconds most)
{
    PGconn* const connection = postgresHandle(db);
    if (!connection)
        return;
    const int socket = PQsocket(connection);
    const int seconds = std::max(static_cast<int>(most.count() / 2000), 1);
    const auto set = [socket](int level, int option, int value) {
        ::setsockopt(socket, level, option, &value, sizeof value); // fails on a local socket
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, seconds);
    set(IPPROTO_TCP, TCP_KEEPINTVL, std::max(seconds / 2, 1));
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, static_cast<int>(most.count()));
}
