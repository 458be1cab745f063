#include "postgres.h"

#include <QProcess>
#include <QSettings>

bool hasPostgres()
{
    return qEnvironmentVariableIsSet("PGHOST");
}

bool makePostgresDatabase(const QString& name, const QString& iniFile, const QString& group)
{
    QSettings settings(iniFile, QSettings::IniFormat);
    settings.beginGroup(group);
    settings.setValue(QStringLiteral("DBType"), QStringLiteral("postgres"));
    settings.setValue(QStringLiteral("BaseName"), name);
    settings.setValue(QStringLiteral("SqlHostName"), qEnvironmentVariable("PGHOST"));
    settings.setValue(QStringLiteral("SqlPort"), qEnvironmentVariable("PGPORT"));
    settings.endGroup();
    settings.sync();
    return QProcess::execute(QStringLiteral("createdb"), {name}) == 0;
}

void describeSqliteFile(const QString& path, const QString& iniFile, const QString& group)
{
    QSettings settings(iniFile, QSettings::IniFormat);
    settings.beginGroup(group);
    settings.setValue(QStringLiteral("DBType"), QStringLiteral("sqlite3"));
    settings.setValue(QStringLiteral("BaseName"), path);
}
