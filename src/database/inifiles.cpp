#include <Pardel/inifiles.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>

QString getIniNameDefault(bool isTemplate)
{
    const QFileInfo executable(QCoreApplication::applicationFilePath());
    const QString pattern = isTemplate ? QStringLiteral("%1/%2.ini_def") : QStringLiteral("%1/%2.ini");
    return pattern.arg(executable.absoluteDir().absolutePath(), executable.baseName());
}

void rebuildSettingsByTemplate(QSettings& settings, QSettings& tmpl)
{
    const QStringList groups = tmpl.childGroups();
    for (const QString& group : groups) {
        tmpl.beginGroup(group);
        settings.beginGroup(group);
        const QStringList keys = tmpl.childKeys();
        for (const QString& key : keys) {
            if (!settings.contains(key))
                settings.setValue(key, tmpl.value(key));
        }
        settings.endGroup();
        tmpl.endGroup();
    }
    settings.sync();
}
