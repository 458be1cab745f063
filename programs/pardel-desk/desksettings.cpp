#include "desksettings.h"

#include <Pardel/inifiles.h>
#include <Pardel/tlog.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

QString templateFile()
{
    const QString beside = getIniNameDefault(true);
    const QString installed = QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/" PARDEL_DESK_SHARE))
                                  .absoluteFilePath(QFileInfo(beside).fileName());
    return QFile::exists(beside) ? beside : QDir::cleanPath(installed);
}

bool isWritable(const QString& folder)
{
    return QDir().mkpath(folder) && QFileInfo(folder).isWritable();
}

} // namespace

DeskSettings::DeskSettings(const QString& folder) : m_folder(folder)
{
    const QString ofExecutable = QCoreApplication::applicationDirPath();
    if (m_folder.isEmpty() && QFile::exists(getIniNameDefault(true)) && QFileInfo(ofExecutable).isWritable())
        m_folder = ofExecutable;
    const bool isOwn = !m_folder.isEmpty();
    const auto choose = [this, isOwn](QStandardPaths::StandardLocation location) {
        return isOwn ? QFileInfo(m_folder).absoluteFilePath() : QStandardPaths::writableLocation(location);
    };
    const QString configuration = choose(QStandardPaths::AppConfigLocation);
    m_cacheFolder = choose(QStandardPaths::CacheLocation);
    m_folder = choose(QStandardPaths::AppDataLocation);

    const QString file = configuration + QLatin1Char('/') + QFileInfo(getIniNameDefault(false)).fileName();
    for (const QString& needed : {configuration, m_folder}) {
        if (m_notWritable.isEmpty() && !isWritable(needed))
            m_notWritable = needed;
    }
    const bool isNew = !QFile::exists(file);
    m_ini = std::make_unique<QSettings>(file, pardelIniFormat());
    if (m_ini->status() != QSettings::NoError) {
        m_notReadable = file;
        return;
    }
    QSettings changes(templateFile(), pardelIniFormat());
    rebuildSettingsByTemplate(*m_ini, changes);
    if (m_notWritable.isEmpty() && m_ini->status() != QSettings::NoError)
        m_notWritable = file;
    if (isNew && !isOwn) // there may be a database's password in it one day
        QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
}

DeskSettings::~DeskSettings() = default;

QString DeskSettings::logFolder() const
{
    const QString name = QStringLiteral("Desk");
    return m_folder == QCoreApplication::applicationDirPath() ? TLog::getDirPathDefault(name)
                                                              : m_folder + QStringLiteral("/Logs/Log_") + name;
}

QString DeskSettings::error() const
{
    if (m_notWritable.isEmpty() && !m_notReadable.isEmpty())
        return QCoreApplication::translate("DeskSettings",
                                           "%1 cannot be read and was left as it is; it has to be a file that you may "
                                           "read, and %2, for temporary files, a folder with room.")
            .arg(m_notReadable, QDir::tempPath());
    if (m_notWritable.isEmpty())
        return {};
    return QCoreApplication::translate("DeskSettings",
                                       "%1 cannot be written to; --data FOLDER keeps settings, database and logs "
                                       "in another folder.")
        .arg(m_notWritable);
}
