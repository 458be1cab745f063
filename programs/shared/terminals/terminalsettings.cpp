#include "terminalsettings.h"

#include <QAbstractSocket>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QSettings>

namespace {

constexpr int mostConnections = 30000;

QString text(const char* source)
{
    return QCoreApplication::translate("TerminalSettings", source);
}

QString plain(double number)
{
    return QString::number(number, 'g', 10);
}

/// The values of a group's keys, and the complaints about them.
class Group
{
public:
    Group(QSettings& ini, const QString& name, QStringList& complaints) : m_ini(ini), m_complaints(complaints)
    {
        ini.beginGroup(name);
    }
    ~Group() { m_ini.endGroup(); }
    Q_DISABLE_COPY(Group)

    /// The number of a key, if it is one in the range; otherwise @p usual.
    double number(const char* name, double least, double most, double usual)
    {
        const QLatin1String key(name);
        if (!m_ini.contains(key))
            return usual;
        bool isNumber = false;
        const QString value = m_ini.value(key).toString();
        const double found = value.toDouble(&isNumber);
        if (isNumber && found >= least && found <= most)
            return found;
        complain(text("%1=%2 is no number from %3 to %4; %5 is used")
                     .arg(key, value, plain(least), plain(most), plain(usual)));
        return usual;
    }

    int whole(const char* name, int least, int most, int usual)
    {
        return static_cast<int>(number(name, least, most, usual));
    }

    QString string(const char* name, const QString& usual) const
    {
        return m_ini.value(QLatin1String(name), usual).toString();
    }

    /// Not toBool(), for which everything but "false" and "0" is true.
    bool flag(const char* name, bool usual)
    {
        const QLatin1String key(name);
        if (!m_ini.contains(key))
            return usual;
        const QString value = m_ini.value(key).toString().trimmed().toLower();
        for (const char* yes : {"true", "1", "yes", "on"}) {
            if (value == QLatin1String(yes))
                return true;
        }
        for (const char* no : {"false", "0", "no", "off"}) {
            if (value == QLatin1String(no))
                return false;
        }
        complain(text("%1=%2 is neither true nor false; %3 is used")
                     .arg(key, value, usual ? QStringLiteral("true") : QStringLiteral("false")));
        return usual;
    }

    /// The entries between commas; an empty one where the value is no text at all.
    QStringList list(const char* name) const
    {
        const QLatin1String key(name);
        const QStringList values = m_ini.value(key).toStringList(); // QSettings splits at commas that are not quoted
        const QString joined = values.join(QLatin1Char(','));
        const bool isNone = !m_ini.contains(key) || (!values.isEmpty() && joined.trimmed().isEmpty());
        return isNone ? QStringList() : joined.split(QLatin1Char(','));
    }

    void complain(const QString& sentence) { m_complaints += sentence; }

private:
    QSettings& m_ini;
    QStringList& m_complaints;
};

/// Stricter than Qt, which takes "10" for 10.0.0.0/8.
TerminalSettings::Network networkOf(const QString& entry)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"(^(\d+\.\d+\.\d+\.\d+|[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*)(/\d+)?$)"));
    if (!pattern.match(entry).hasMatch())
        return {QHostAddress(), -1};
    const TerminalSettings::Network network = QHostAddress::parseSubnet(entry);
    return network.second < 0 ? TerminalSettings::Network(QHostAddress(), -1) : network;
}

void readShared(Group& group, TerminalSettings& settings)
{
    settings.maximumConnections = group.whole("MaximumConnections", 1, mostConnections, settings.maximumConnections);
    settings.maximumBuffer = group.whole("MaximumBuffer", 1024, 1 << 24, settings.maximumBuffer);
    const double seconds = group.number("IdleSeconds", 0.001, 86400, static_cast<double>(settings.idle.count()) / 1000);
    settings.idle = std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
    settings.perAddress = group.whole("PerAddress", 0, mostConnections, settings.perAddress);
    settings.bytesPerSecond = group.whole("BytesPerSecond", 0, 1 << 30, settings.bytesPerSecond);
    const QStringList parts = group.list("AllowFrom");
    for (const QString& part : parts) {
        const QString entry = part.trimmed();
        settings.allowFrom += networkOf(entry);
        if (settings.allowFrom.last().first.isNull())
            group.complain(text("\"%1\" in AllowFrom is no network as 10.0.0.0/8; it lets nobody in").arg(entry));
    }
}

} // namespace

TerminalSettings TerminalSettings::read(QSettings& ini)
{
    TerminalSettings settings;
    Group group(ini, QStringLiteral("Terminals"), settings.complaints);
    settings.address = group.string("Address", settings.address);
    settings.port = static_cast<quint16>(group.whole("Port", 0, 65535, settings.port));
    readShared(group, settings);
    settings.decode.convert = group.flag("Convert", settings.decode.convert);
    settings.decode.checksumFromZero = group.flag("ChecksumFromZero", settings.decode.checksumFromZero);
    return settings;
}

TerminalSettings TerminalSettings::readReceiver(QSettings& ini)
{
    TerminalSettings settings;
    settings.maximumConnections = 10000;
    settings.bytesPerSecond = 1 << 18;
    Group group(ini, QStringLiteral("Receiver"), settings.complaints);
    const QString usualPlace = QStringLiteral("%1:%2").arg(settings.address).arg(settings.port);
    if (const QString error = settings.setPlace(group.string("Listen", usualPlace)); !error.isEmpty())
        group.complain(text("Listen: %1; %2 is used").arg(error, usualPlace));
    readShared(group, settings);
    settings.decode.convert = !group.flag("NoConvert", !settings.decode.convert);
    const QString start = group.string("CrcInit", QStringLiteral("ffff")).toLower();
    settings.decode.checksumFromZero = start == QLatin1String("0");
    if (!settings.decode.checksumFromZero && start != QLatin1String("ffff"))
        group.complain(text("CrcInit=%1 is neither 0 nor ffff; ffff is used").arg(start));
    return settings;
}

QString TerminalSettings::setPlace(const QString& place)
{
    static const QRegularExpression pattern(QStringLiteral(R"(^(?:\[([^\[\]]+)\]|([^:]+)):(\d{1,5})$)"));
    const QRegularExpressionMatch match = pattern.match(place.trimmed());
    const QString host = match.captured(1) + match.captured(2);
    const bool inBrackets = !match.captured(1).isEmpty();
    const int number = match.captured(3).toInt();
    const QHostAddress parsed(host);
    const bool fits = match.hasMatch() && number <= 65535 &&
                      parsed.protocol() == (inBrackets ? QAbstractSocket::IPv6Protocol : QAbstractSocket::IPv4Protocol);
    if (!fits)
        return text("\"%1\" is no IP address and port as 127.0.0.1:20545 or [::1]:20545").arg(place);
    address = host;
    port = static_cast<quint16>(number);
    return QString();
}
