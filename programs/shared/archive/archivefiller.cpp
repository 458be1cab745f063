#include "archivefiller.h"

#include "archiveschema.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// A row for each session that holds the lock. pg_locks shows a lock of one number as its two halves.
const char holders[] =
    "SELECT 1 FROM pg_locks JOIN pg_database ON pg_database.oid = database AND datname = current_database() "
    "WHERE locktype = 'advisory' AND objsubid = 1 AND granted "
    "AND classid::bigint << 32 | objid::bigint = hashtext('pardel live')::bigint";

QString fileOf(const QSqlDatabase& db)
{
    return ArchiveSchema::archiveFile(db.databaseName()) + QLatin1String("-live");
}

/// The whole file, however long.
struct flock lockOf(short type)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

} // namespace

ArchiveFiller::~ArchiveFiller()
{
    if (m_file >= 0)
        ::close(m_file);
}

QString ArchiveFiller::claim(const QSqlDatabase& db)
{
    if (ArchiveSchema::isPostgres(db)) {
        QSqlQuery query(db);
        const QString statement = QStringLiteral("SELECT pg_try_advisory_lock_shared(hashtext('pardel live')) "
                                                 "WHERE NOT EXISTS (%1 AND pid = pg_backend_pid())")
                                      .arg(QLatin1String(holders));
        return query.exec(statement) ? QString() : ArchiveSchema::errorText(query.lastError());
    }
    if (m_file >= 0)
        return {};
    const QString name = fileOf(db);
    const int file = ::open(QFile::encodeName(name).constData(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666);
    struct flock lock = lockOf(F_RDLCK);
    if (file >= 0 && ::fcntl(file, F_OFD_SETLK, &lock) == 0) {
        m_file = file;
        return {};
    }
    const QString error = QStringLiteral("cannot lock %1: %2").arg(name, qt_error_string(errno));
    if (file >= 0)
        ::close(file);
    return error;
}

bool ArchiveFiller::isClaimed(const QSqlDatabase& db)
{
    if (ArchiveSchema::isPostgres(db)) {
        QSqlQuery query(db);
        return query.exec(QLatin1String(holders)) && query.next();
    }
    const int file = ::open(QFile::encodeName(fileOf(db)).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    struct flock lock = lockOf(F_WRLCK); // would anybody's lock keep us from writing?
    const bool claimed = ::fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    ::close(file);
    return claimed;
}
