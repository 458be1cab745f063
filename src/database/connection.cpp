#include <Pardel/connection.h>
#include <Pardel/inifiles.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QSettings>
#include <QSqlDatabase>

#include <memory>

namespace {

/// The keys of the group, all of them read whatever the kind of database.
struct ConnectionKeys
{
    ConnectionKeys(QSettings& settings, QString givenName) : baseName(std::move(givenName))
    {
        if (baseName.isEmpty())
            baseName = settings.value(QStringLiteral("BaseName"), QStringLiteral("Telvar")).toString();
        hostName = settings.value(QStringLiteral("SqlHostName"), QStringLiteral("localhost")).toString();
        login = settings.value(QStringLiteral("SqlLogin"), QStringLiteral("postgres")).toString();
        password = settings.value(QStringLiteral("SqlPassword"), QString()).toString();
        port = settings.value(QStringLiteral("SqlPort"), QStringLiteral("-1")).toInt();
        type = settings.value(QStringLiteral("DBType"), QStringLiteral("postgres")).toString();
    }

    QString baseName;
    QString hostName;
    QString login;
    QString password;
    int port;
    QString type;
};

ConnectionKeys readKeys(QSettings& settings, const QString& group, const QString& baseName)
{
    settings.beginGroup(group);
    const QString otherFile = settings.value(QStringLiteral("BaseIni"), QString()).toString();
    if (!QFileInfo(otherFile).isFile()) {
        ConnectionKeys keys(settings, baseName);
        settings.endGroup();
        return keys;
    }
    settings.endGroup();
    QSettings other(otherFile, pardelIniFormat());
    other.beginGroup(group);
    return ConnectionKeys(other, baseName);
}

} // namespace

QSqlError openDataBaseBySettings(QString& connectionName, QSettings& settings, QString const& group, QString baseName)
{
    const ConnectionKeys keys = readKeys(settings, group, baseName);
    if (connectionName.isEmpty())
        connectionName = keys.baseName;

    QSqlDatabase connection;
    if (keys.type == QLatin1String("postgres")) {
        connection = QSqlDatabase::addDatabase(QStringLiteral("QPSQL7"), connectionName);
        connection.setDatabaseName(keys.baseName);
        connection.setHostName(keys.hostName);
        connection.setUserName(keys.login);
        connection.setPassword(keys.password);
        connection.setPort(keys.port);
    } else if (keys.type == QLatin1String("sqlite3")) {
        connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
        connection.setDatabaseName(keys.baseName.startsWith(QLatin1Char('/'))
                                       ? keys.baseName
                                       : QCoreApplication::applicationDirPath() + QLatin1Char('/') + keys.baseName);
    }
    // Of another kind it has no driver, and says so here.
    connection.open();
    return connection.lastError();
}
