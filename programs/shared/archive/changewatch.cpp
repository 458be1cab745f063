#include "changewatch.h"

#include "archiveschema.h"
#include "postgreshandle.h"

#include <QSocketNotifier>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <utility>

#include <libpq-fe.h>

namespace {

constexpr int fileInterval = 250;  // milliseconds
constexpr int copyInterval = 1000; // of a server that cannot be listened to

qint64 fileVersion(const QSqlDatabase& db)
{
    QSqlQuery query(QStringLiteral("PRAGMA archive.data_version"), db);
    return query.next() ? query.value(0).toLongLong() : -1; // the file is being written
}

} // namespace

ChangeWatch::ChangeWatch(QObject* parent) : QObject(parent), m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (ArchiveSchema::isPostgres(m_db))
            Q_EMIT changed();
        else
            askFile();
    });
}

ChangeWatch::~ChangeWatch() = default;

QString ChangeWatch::start(const QSqlDatabase& db)
{
    m_db = db;
    if (!ArchiveSchema::isPostgres(db)) {
        m_fileVersion = fileVersion(db);
        m_timer.start(fileInterval);
        return {};
    }
    PGconn* const connection = postgresHandle(db);
    // The last words of a server would go to standard error.
    PQsetNoticeProcessor(
        connection, [](void*, const char*) {}, nullptr);
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT pg_is_in_recovery()")) || !query.next())
        return ArchiveSchema::errorText(query.lastError());
    if (query.value(0).toBool()) {
        m_timer.start(copyInterval);
        return {};
    }
    if (!query.exec(QLatin1String("LISTEN ") + QLatin1String(ArchiveSchema::changesChannel)))
        return ArchiveSchema::errorText(query.lastError());
    m_socket = std::make_unique<QSocketNotifier>(PQsocket(connection), QSocketNotifier::Read);
    connect(m_socket.get(), &QSocketNotifier::activated, this, &ChangeWatch::readSocket);
    return {};
}

void ChangeWatch::stop()
{
    m_timer.stop();
    m_socket.reset();
    m_db = QSqlDatabase();
}

void ChangeWatch::askFile()
{
    const qint64 version = fileVersion(m_db);
    if (version >= 0 && version != std::exchange(m_fileVersion, version))
        Q_EMIT changed();
}

void ChangeWatch::readSocket()
{
    PGconn* const connection = postgresHandle(m_db);
    if (PQconsumeInput(connection) != 0 && PQstatus(connection) == CONNECTION_OK) {
        check();
        return;
    }
    const QString error = QString::fromUtf8(PQerrorMessage(connection)).section(QLatin1Char('\n'), 0, 0);
    m_socket->setEnabled(false);
    m_socket.release()->deleteLater(); // whose signal this is
    stop();
    Q_EMIT lost(error);
}

void ChangeWatch::check()
{
    if (!m_socket)
        return;
    bool any = false;
    while (PGnotify* const notification = PQnotifies(postgresHandle(m_db))) {
        any = true;
        PQfreemem(notification);
    }
    if (any)
        Q_EMIT changed();
}
