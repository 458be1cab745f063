#include "commandline.h"
#include "output.h"
#include "simulation.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <limits>

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

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-simulate"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes the packets of simulated tracking terminals to standard output, one a minute from each.\n"
        "The same options give the same bytes; their coordinates are packed (pardel-decode --convert)."));
    const QCommandLineOption terminals(QStringLiteral("terminals"),
                                       QStringLiteral("Terminals, 1 to 32767 (default 3)."), QStringLiteral("N"),
                                       QStringLiteral("3"));
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("Minutes, from 1 (default 10)."),
                                     QStringLiteral("M"), QStringLiteral("10"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed, 0 to 4294967295 (default 1)."),
                                  QStringLiteral("S"), QStringLiteral("1"));
    const QCommandLineOption hex(QStringLiteral("hex"), QStringLiteral("Write one packet a line in hex digits."));
    parser.addOptions({terminals, minutes, seed, hex});
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
    if (!wrong.isEmpty())
        return wrongUsage(wrong);
    return simulate(settings, parser.isSet(hex));
}
