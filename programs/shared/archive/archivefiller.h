#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/**
 * Shows that somebody stores what terminals send, for as long as he does, so that a desk takes its live data from the
 * archive instead of letting terminals in itself. Several may at once. Given back by the system when a program dies.
 *
 * On PostgreSQL it is a shared advisory lock of the connection; a connection that has been opened anew has to claim
 * again. On SQLite it is a lock on a file beside the archive, with "-live" behind its name, that stays there, empty:
 * the archive's own file must not be locked, as SQLite's locks on it would go with ours.
 */
class ArchiveFiller
{
public:
    ArchiveFiller() = default;
    /** Gives an SQLite claim back; PostgreSQL's goes with the connection. */
    ~ArchiveFiller();
    Q_DISABLE_COPY_MOVE(ArchiveFiller)

    /** Claims the archive that an open connection has, once however often it is called. @return what went wrong, or nothing */
    QString claim(const QSqlDatabase& db);

    /** Whether anybody does, on whatever connection. False too if that cannot be asked. */
    static bool isClaimed(const QSqlDatabase& db);

private:
    int m_file = -1;
};
