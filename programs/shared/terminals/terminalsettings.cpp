#include "terminalsettings.h"

#include <QCoreApplication>
#include <QSettings>

namespace {

QString plain(double number)
{
    return QString::number(number, 'g', 10);
}

/// The number of a key, if it is one in the range; otherwise @p usual, and that is complained about.
double number(const QSettings& ini, const QString& key, double least, double most, double usual,
              QStringList& complaints)
{
    if (!ini.contains(key))
        return usual;
    bool isNumber = false;
    const QString text = ini.value(key).toString();
    const double value = text.toDouble(&isNumber);
    if (isNumber && value >= least && value <= most)
        return value;
    complaints += QCoreApplication::translate("TerminalSettings", "%1=%2 is no number from %3 to %4; %5 is used")
                      .arg(key, text, plain(least), plain(most), plain(usual));
    return usual;
}

} // namespace

TerminalSettings TerminalSettings::read(QSettings& ini)
{
    TerminalSettings settings;
    ini.beginGroup(QStringLiteral("Terminals"));
    const auto whole = [&](const char* key, int least, int most, int usual) {
        return static_cast<int>(number(ini, QLatin1String(key), least, most, usual, settings.complaints));
    };
    settings.address = ini.value(QStringLiteral("Address"), settings.address).toString();
    settings.port = static_cast<quint16>(whole("Port", 0, 65535, settings.port));
    settings.maximumConnections = whole("MaximumConnections", 1, 30000, settings.maximumConnections);
    settings.maximumBuffer = whole("MaximumBuffer", 1024, 1 << 24, settings.maximumBuffer);
    const double seconds = number(ini, QStringLiteral("IdleSeconds"), 0.001, 86400,
                                  static_cast<double>(settings.idle.count()) / 1000, settings.complaints);
    settings.idle = std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
    settings.decode.convert = ini.value(QStringLiteral("Convert"), settings.decode.convert).toBool();
    settings.decode.checksumFromZero =
        ini.value(QStringLiteral("ChecksumFromZero"), settings.decode.checksumFromZero).toBool();
    ini.endGroup();
    return settings;
}
