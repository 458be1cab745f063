#include "receiversettings.h"

#include <Pardel/inifiles.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("ReceiverSettings", text);
}

const QStringList& keys()
{
    static const QStringList keys =
        QStringLiteral("AllowFrom BytesPerSecond CrcInit Group IdleSeconds Listen MaximumBuffer MaximumConnections "
                       "Metrics NoConvert Objects PerAddress Spool")
            .split(QLatin1Char(' '));
    return keys;
}

} // namespace

ReceiverSettings ReceiverSettings::read(const ReceiverOptions& options)
{
    ReceiverSettings settings;
    QSettings ini(options.iniFile, pardelIniFormat());
    if (!QFileInfo(options.iniFile).isReadable() || ini.status() != QSettings::NoError) {
        settings.error = tr("cannot read the settings file %1").arg(options.iniFile);
        return settings;
    }
    settings.terminals = TerminalSettings::readReceiver(ini);
    DecodeSettings& decode = settings.terminals.decode;

    const QDir folder = QFileInfo(options.iniFile).absoluteDir();
    ini.beginGroup(QStringLiteral("Receiver"));
    const auto choose = [&ini](const QString& option, const char* key, const QString& usual = {}) {
        const QString value = option.isEmpty() ? ini.value(QLatin1String(key)).toString() : option;
        return value.isEmpty() ? usual : value;
    };
    const QStringList present = ini.allKeys();
    for (const QString& key : present) {
        if (!keys().contains(key))
            settings.terminals.complaints +=
                tr("%1 is no key of [Receiver], which has %2").arg(key, keys().join(QStringLiteral(", ")));
    }
    SpoolStoreSettings& store = settings.reception.store;
    store.iniFile = options.iniFile;
    store.group = choose(options.group, "Group");
    // What the command line names begins at the current folder, as everywhere.
    settings.reception.spool = options.spool.isEmpty()
                                   ? folder.absoluteFilePath(choose({}, "Spool", QStringLiteral("pardel-spool")))
                                   : options.spool;
    const QString metrics = choose({}, "Metrics");
    if (!options.metrics.isEmpty())
        settings.metrics = options.metrics;
    else if (!metrics.isEmpty())
        settings.metrics = folder.absoluteFilePath(metrics);
    else
        settings.metrics = settings.reception.spool + QLatin1String("/metrics.prom");
    const QString objects = choose({}, "Objects", QStringLiteral("all"));
    ini.endGroup();
    ini.beginGroup(store.group);
    const bool hasGroup = !store.group.isEmpty() && !ini.allKeys().isEmpty();
    ini.endGroup();

    // A service is not to let in whom a misspelt line was to keep out.
    if (!settings.terminals.complaints.isEmpty())
        settings.error = tr("%1: %2").arg(options.iniFile,
                                          settings.terminals.complaints.first().section(QStringLiteral("; "), 0, 0));
    else if (store.group.isEmpty())
        settings.error = tr("the database is not named: --group, or the key Group of [Receiver] in %1, names the group "
                            "that describes it")
                             .arg(options.iniFile);
    else if (!hasGroup)
        settings.error = tr("%1 has no group %2").arg(options.iniFile, store.group);
    else if (objects != QLatin1String("all") && objects != QLatin1String("known"))
        settings.error = tr("Objects=%1 in [Receiver] of %2 is neither all nor known").arg(objects, options.iniFile);
    else if (!options.listen.isEmpty())
        settings.error = settings.terminals.setPlace(options.listen);
    store.knownOnly = objects == QLatin1String("known");
    if (!options.crcInit.isEmpty())
        decode.checksumFromZero = options.crcInit == QLatin1String("0");
    if (options.noConvert)
        decode.convert = false;
    store.decode = decode;
    return settings;
}
