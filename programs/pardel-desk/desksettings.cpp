#include "desksettings.h"

#include <Pardel/inifiles.h>
#include <Pardel/tlog.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

DeskSettings::DeskSettings(const QString& folder) : m_folder(folder)
{
    if (m_folder.isEmpty() && QFileInfo(QCoreApplication::applicationDirPath()).isWritable())
        m_folder = QCoreApplication::applicationDirPath();
    if (m_folder.isEmpty())
        m_folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!QDir().mkpath(m_folder))
        m_error = QCoreApplication::translate("DeskSettings", "The folder %1 cannot be made.").arg(m_folder);
    m_folder = QFileInfo(m_folder).absoluteFilePath();

    const QString name = QFileInfo(getIniNameDefault(false)).fileName();
    m_ini = std::make_unique<QSettings>(m_folder + QLatin1Char('/') + name, pardelIniFormat());
    QSettings changes(getIniNameDefault(true), pardelIniFormat());
    rebuildSettingsByTemplate(*m_ini, changes);
    if (m_error.isEmpty() && m_ini->status() != QSettings::NoError)
        m_error = QCoreApplication::translate("DeskSettings", "The file %1 cannot be written.").arg(m_ini->fileName());
}

DeskSettings::~DeskSettings() = default;

QString DeskSettings::logFolder() const
{
    const QString name = QStringLiteral("Desk");
    return m_folder == QCoreApplication::applicationDirPath() ? TLog::getDirPathDefault(name)
                                                              : m_folder + QStringLiteral("/Logs/Log_") + name;
}
