#include "archiveconnection.h"

#include "archiveschema.h"
#include "databasetrouble.h"

#include <Pardel/connection.h>
#include <Pardel/inifiles.h>

#include <QFileInfo>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>

ArchiveConnection::ArchiveConnection(const QString& iniFile, const QString& group, const QString& baseName)
{
    open(iniFile, group, baseName);
}

ArchiveConnection::~ArchiveConnection()
{
    m_db = QSqlDatabase();
    if (!m_name.isEmpty())
        QSqlDatabase::removeDatabase(m_name);
}

void ArchiveConnection::open(const QString& iniFile, const QString& group, const QString& baseName)
{
    QSettings settings(iniFile, pardelIniFormat());
    if (!QFileInfo(iniFile).isReadable() || settings.status() != QSettings::NoError) {
        m_error = QStringLiteral("cannot read the settings file %1").arg(iniFile);
        return;
    }
    settings.beginGroup(group);
    const bool hasGroup = !settings.allKeys().isEmpty();
    settings.endGroup();
    if (!hasGroup) {
        m_error = QStringLiteral("%1 has no group %2").arg(iniFile, group);
        return;
    }
    const QSqlError error = openDataBaseBySettings(m_name, settings, group, baseName);
    m_db = QSqlDatabase::database(m_name, false);
    if (!m_db.isValid()) {
        m_error = QStringLiteral("the DBType of group %1 in %2 is neither postgres nor sqlite3: set it to one of these")
                      .arg(group, iniFile);
    } else if (error.type() != QSqlError::NoError && ArchiveSchema::isPostgres(m_db)) {
        m_error =
            QStringLiteral("cannot open the database of group %1 in %2: %3 (SqlHostName, SqlPort, BaseName, SqlLogin "
                           "and SqlPassword there have to be the server's)")
                .arg(group, iniFile, ArchiveSchema::errorText(error));
    } else if (error.type() != QSqlError::NoError) {
        m_error = QStringLiteral("cannot open the database of group %1 in %2, %3: %4")
                      .arg(group, iniFile, m_db.databaseName(), DatabaseTrouble::withAdvice(error));
    } else if (ArchiveSchema::isPostgres(m_db)) {
        QSqlQuery(m_db).exec(QStringLiteral("SET client_min_messages = warning")); // notices would go to standard error
    } else {
        m_file = ArchiveSchema::archiveFile(m_db.databaseName());
        const QString refused = ArchiveSchema::attachArchive(m_db);
        if (!refused.isEmpty())
            m_error = QStringLiteral("cannot attach the archive %1: %2").arg(m_file, refused);
    }
}
