#include "commandline.h"
#include "simulaterun.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <limits>
#include <optional>

namespace {

/// The options, with their checks.
class CommandLine
{
public:
    CommandLine();

    /// @return the exit status if the program has to end at once, else nothing, and @p options are filled
    std::optional<int> parse(const QStringList& arguments, SimulateOptions& options);

private:
    quint32 number(const QCommandLineOption& option, quint32 least, quint32 most);
    std::optional<LiveSettings> liveSettings();

    QCommandLineParser m_parser;
    QString m_wrong; // what is wrong with a value
    const QCommandLineOption m_terminals{QStringLiteral("terminals"),
                                         QStringLiteral("Terminals, 1 to 32767 (default 3)."), QStringLiteral("N"),
                                         QStringLiteral("3")};
    const QCommandLineOption m_minutes{QStringLiteral("minutes"), QStringLiteral("Minutes, from 1 (default 10)."),
                                       QStringLiteral("M"), QStringLiteral("10")};
    const QCommandLineOption m_seed{QStringLiteral("seed"), QStringLiteral("Seed, 0 to 4294967295 (default 1)."),
                                    QStringLiteral("S"), QStringLiteral("1")};
    const QCommandLineOption m_hex{QStringLiteral("hex"), QStringLiteral("Write one packet a line in hex digits.")};
    const QCommandLineOption m_connect{
        QStringLiteral("connect"),
        QStringLiteral("Let every terminal send over a TCP connection of its own, now and with the time of now."),
        QStringLiteral("HOST:PORT")};
    const QCommandLineOption m_rate{
        QStringLiteral("rate"),
        QStringLiteral("With --connect: packets a second from every terminal, 0.02 to 100 (default 1)."),
        QStringLiteral("R"), QStringLiteral("1")};
    const QCommandLineOption m_packets{
        QStringLiteral("packets"),
        QStringLiteral("With --connect: packets from every terminal, from 1, instead of the minutes."),
        QStringLiteral("P"), QStringLiteral("1")};
};

CommandLine::CommandLine()
{
    m_parser.setApplicationDescription(QStringLiteral(
        "Writes the packets of simulated tracking terminals to standard output, one a minute from each, or lets the\n"
        "terminals send them over the network. Without --connect the same options give the same bytes.\n"
        "Coordinates are packed (pardel-decode --convert)."));
    m_parser.addOptions({m_terminals, m_minutes, m_seed, m_hex, m_connect, m_rate, m_packets});
}

std::optional<int> CommandLine::parse(const QStringList& arguments, SimulateOptions& options)
{
    if (const auto status = parseCommandLine(m_parser, arguments))
        return status;
    if (!m_parser.positionalArguments().isEmpty())
        return wrongUsage(QStringLiteral("\"%1\" is not an option.").arg(m_parser.positionalArguments().constFirst()));
    options.simulation.terminals = static_cast<int>(number(m_terminals, 1, SimulationSettings::maximumTerminals));
    options.simulation.minutes = static_cast<int>(number(m_minutes, 1, std::numeric_limits<int>::max()));
    options.simulation.seed = number(m_seed, 0, std::numeric_limits<quint32>::max());
    options.hex = m_parser.isSet(m_hex);
    if (m_parser.isSet(m_connect))
        options.live = liveSettings();
    else if (m_parser.isSet(m_rate) || m_parser.isSet(m_packets))
        m_wrong = QStringLiteral("--rate and --packets go with --connect.");
    return m_wrong.isEmpty() ? std::nullopt : std::optional<int>(wrongUsage(m_wrong));
}

quint32 CommandLine::number(const QCommandLineOption& option, quint32 least, quint32 most)
{
    bool fits = false;
    const quint32 value = m_parser.value(option).toUInt(&fits);
    if (!fits || value < least || value > most)
        m_wrong = QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\".")
                      .arg(option.names().constFirst())
                      .arg(least)
                      .arg(most)
                      .arg(m_parser.value(option));
    return value;
}

/// HOST:PORT, the host in brackets where it is an IPv6 address; nothing where it is not that.
std::optional<LiveSettings> placeOf(const QString& text)
{
    const auto colon = text.lastIndexOf(QLatin1Char(':'));
    LiveSettings live;
    bool fits = false;
    live.port = text.mid(colon + 1).toUShort(&fits);
    live.host = text.left(colon);
    if (live.host.startsWith(QLatin1Char('[')) && live.host.endsWith(QLatin1Char(']')))
        live.host = live.host.mid(1, live.host.size() - 2);
    if (colon < 0 || !fits || live.port == 0 || live.host.isEmpty())
        return std::nullopt;
    return live;
}

std::optional<LiveSettings> CommandLine::liveSettings()
{
    const QString place = m_parser.value(m_connect);
    std::optional<LiveSettings> live = placeOf(place);
    if (!live) {
        m_wrong = QStringLiteral("--connect takes HOST:PORT, not \"%1\".").arg(place);
        return live;
    }
    if (m_parser.isSet(m_hex))
        m_wrong = QStringLiteral("--hex does not go with --connect.");
    bool isNumber = false;
    live->rate = m_parser.value(m_rate).toDouble(&isNumber);
    if (!isNumber || !(live->rate >= LiveSettings::leastRate && live->rate <= LiveSettings::mostRate))
        m_wrong = QStringLiteral("--rate takes a number from 0.02 to 100, not \"%1\".").arg(m_parser.value(m_rate));
    const auto packets = static_cast<int>(number(m_packets, 1, std::numeric_limits<int>::max()));
    live->packets = m_parser.isSet(m_packets) ? packets : 0;
    return live;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-simulate"));
    SimulateOptions options;
    const std::optional<int> status = CommandLine().parse(QCoreApplication::arguments(), options);
    return status ? *status : simulate(options);
}
