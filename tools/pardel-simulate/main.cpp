#include "commandline.h"
#include "livesender.h"
#include "output.h"
#include "simulation.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>

#include <limits>
#include <optional>

#include <unistd.h>

namespace {

constexpr int flushSize = 1 << 16;

int simulate(const SimulationSettings& settings, bool hex)
{
    Simulation simulation(settings);
    Output output(STDOUT_FILENO);
    QByteArray text;
    for (QByteArray packet = simulation.next(); !packet.isEmpty() && !output.failed(); packet = simulation.next()) {
        text += hex ? packet.toHex() + '\n' : packet;
        if (text.size() >= flushSize) {
            output.write(text);
            text.resize(0);
        }
    }
    output.write(text);
    if (output.failed() && !output.readerGone()) {
        tellError(QStringLiteral("cannot write to standard output: %1").arg(output.errorString()));
        return Failed;
    }
    return Done;
}

int sendLive(const SimulationSettings& settings, const LiveSettings& live)
{
    LiveSender sender(settings, live);
    int status = Done;
    QObject::connect(&sender, &LiveSender::finished, QCoreApplication::instance(), [&](const QString& error) {
        if (!error.isEmpty()) {
            tellError(error);
            status = Failed;
        }
        QCoreApplication::quit();
    });
    QTimer::singleShot(0, &sender, &LiveSender::start); // so that quit() finds the event loop running
    QCoreApplication::exec();
    return status;
}

/// HOST:PORT, the host in brackets where it is an IPv6 address; nothing where it is not that.
std::optional<LiveSettings> parsePlace(const QString& text)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
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

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-simulate"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes the packets of simulated tracking terminals to standard output, one a minute from each, or lets the\n"
        "terminals send them over the network. Without --connect the same options give the same bytes.\n"
        "Coordinates are packed (pardel-decode --convert)."));
    const QCommandLineOption terminals(QStringLiteral("terminals"),
                                       QStringLiteral("Terminals, 1 to 32767 (default 3)."), QStringLiteral("N"),
                                       QStringLiteral("3"));
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("Minutes, from 1 (default 10)."),
                                     QStringLiteral("M"), QStringLiteral("10"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed, 0 to 4294967295 (default 1)."),
                                  QStringLiteral("S"), QStringLiteral("1"));
    const QCommandLineOption hex(QStringLiteral("hex"), QStringLiteral("Write one packet a line in hex digits."));
    const QCommandLineOption connect(
        QStringLiteral("connect"),
        QStringLiteral("Let every terminal send over a TCP connection of its own, now and with the time of now."),
        QStringLiteral("HOST:PORT"));
    const QCommandLineOption rate(
        QStringLiteral("rate"),
        QStringLiteral("With --connect: packets a second from every terminal, 0.02 to 100 (default 1)."),
        QStringLiteral("R"), QStringLiteral("1"));
    const QCommandLineOption packets(
        QStringLiteral("packets"),
        QStringLiteral("With --connect: packets from every terminal, from 1, instead of the minutes."),
        QStringLiteral("P"), QStringLiteral("1"));
    parser.addOptions({terminals, minutes, seed, hex, connect, rate, packets});
    if (const auto status = parseCommandLine(parser, QCoreApplication::arguments()))
        return *status;
    if (!parser.positionalArguments().isEmpty())
        return wrongUsage(QStringLiteral("\"%1\" is not an option.").arg(parser.positionalArguments().constFirst()));

    QString wrong;
    const auto number = [&](const QCommandLineOption& option, quint32 least, quint32 most) {
        bool fits = false;
        const quint32 value = parser.value(option).toUInt(&fits);
        if (!fits || value < least || value > most)
            wrong = QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\".")
                        .arg(option.names().constFirst())
                        .arg(least)
                        .arg(most)
                        .arg(parser.value(option));
        return value;
    };
    SimulationSettings settings;
    settings.terminals = static_cast<int>(number(terminals, 1, SimulationSettings::maximumTerminals));
    settings.minutes = static_cast<int>(number(minutes, 1, std::numeric_limits<int>::max()));
    settings.seed = number(seed, 0, std::numeric_limits<quint32>::max());
    const auto packetsOfEach = static_cast<int>(number(packets, 1, std::numeric_limits<int>::max()));
    if (!wrong.isEmpty())
        return wrongUsage(wrong);
    if (!parser.isSet(connect)) {
        if (parser.isSet(rate) || parser.isSet(packets))
            return wrongUsage(QStringLiteral("--rate and --packets go with --connect."));
        return simulate(settings, parser.isSet(hex));
    }
    if (parser.isSet(hex))
        return wrongUsage(QStringLiteral("--hex does not go with --connect."));
    std::optional<LiveSettings> live = parsePlace(parser.value(connect));
    if (!live)
        return wrongUsage(QStringLiteral("--connect takes HOST:PORT, not \"%1\".").arg(parser.value(connect)));
    bool isNumber = false;
    live->rate = parser.value(rate).toDouble(&isNumber);
    if (!isNumber || !(live->rate >= LiveSettings::leastRate && live->rate <= LiveSettings::mostRate))
        return wrongUsage(
            QStringLiteral("--rate takes a number from 0.02 to 100, not \"%1\".").arg(parser.value(rate)));
    live->packets = parser.isSet(packets) ? packetsOfEach : 0;
    return sendLive(settings, *live);
}
