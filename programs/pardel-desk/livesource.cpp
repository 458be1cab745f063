#include "livesource.h"

#include "archivefiller.h"

#include <QCoreApplication>
#include <QSettings>
#include <QSqlDatabase>

LiveSource chooseLiveSource(const QSettings& ini, const QSqlDatabase& archive, QString* complaint)
{
    const QString automatic = QStringLiteral("auto");
    const QString source = ini.value(QStringLiteral("Live/Source"), automatic).toString();
    if (source == QLatin1String("terminals"))
        return LiveSource::Terminals;
    if (source == QLatin1String("archive"))
        return LiveSource::Archive;
    if (source != automatic)
        *complaint = QCoreApplication::translate("LiveSource", "Live/Source=%1 is neither archive nor terminals nor "
                                                               "auto; auto is used")
                         .arg(source);
    return ArchiveFiller::isClaimed(archive) ? LiveSource::Archive : LiveSource::Terminals;
}
