#include "databasetrouble.h"

#include "archiveschema.h"

#include <QSqlError>

namespace {

constexpr int sqliteBusy = 5;
constexpr int sqliteLocked = 6;
constexpr int sqliteReadOnly = 8;
constexpr int sqliteInputOutput = 10;
constexpr int sqliteCorrupt = 11;
constexpr int sqliteFull = 13;
constexpr int sqliteCannotOpen = 14;
constexpr int sqliteNoDatabase = 26;
constexpr int sqlStateSize = 5;

const QString tables = QStringLiteral("the tables have to be as \"pardel-archive create\" makes them");

bool isPostgres(const QString& code)
{
    return code.size() == sqlStateSize;
}

QString sqliteAdvice(int code, const QString& again)
{
    switch (code) {
    case sqliteBusy:
    case sqliteLocked: return QStringLiteral("another program has the file in use; when it has ended, ") + again;
    case sqliteFull:
    case sqliteInputOutput: return QStringLiteral("make sure that the disk has room and can be written, then ") + again;
    case sqliteCannotOpen:
        return QStringLiteral("its folder has to be there, and this user needs the right to write in it");
    case sqliteReadOnly: return QStringLiteral("this user needs the right to write the archive's file and its folder");
    case sqliteCorrupt:
    case sqliteNoDatabase: return QStringLiteral("the file is damaged: put a copy of it from a backup in its place");
    default: return tables;
    }
}

} // namespace

bool DatabaseTrouble::passes(const QString& code)
{
    if (isPostgres(code))
        return code == QLatin1String("40P01") || code == QLatin1String("40001");
    const int result = code.toInt() & 0xff; // the rest of SQLite's number says more about it
    return result == sqliteBusy || result == sqliteLocked;
}

QString DatabaseTrouble::advice(const QString& code, Retry retry)
{
    const QString again = retry == Retry::ByItself ? QStringLiteral("it goes on") : QStringLiteral("run it again");
    if (!code.isEmpty() && !isPostgres(code))
        return sqliteAdvice(code.toInt() & 0xff, again);
    if (code.isEmpty() || code.startsWith(QLatin1String("08")) || code.startsWith(QLatin1String("57P")))
        return QStringLiteral("when the server answers again, ") + again;
    if (passes(code) || code == QLatin1String("55P03"))
        return QStringLiteral("others were in the way; ") + again;
    if (code.startsWith(QLatin1String("53")))
        return QStringLiteral("when the server has room again, ") + again;
    if (code == QLatin1String("25006"))
        return QStringLiteral(
            "this server is a copy that is only read: SqlHostName has to name the one that is written");
    if (code == QLatin1String("42501") || code == QLatin1String("2F003")) // the latter of a shard without a password
        return QStringLiteral(
            "the user of SqlLogin needs the rights USAGE on the schema archive, SELECT, INSERT, UPDATE "
            "and DELETE on archive.lastdata, SELECT and INSERT on archive.master_table, TEMPORARY on the "
            "database, and of shards USAGE on their foreign servers and a user mapping of his own");
    return tables;
}

QString DatabaseTrouble::withAdvice(const QSqlError& error, Retry retry)
{
    return QStringLiteral("%1 (%2)").arg(ArchiveSchema::errorText(error), advice(error.nativeErrorCode(), retry));
}
