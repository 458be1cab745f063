#include "commandline.h"
#include "receiver.h"
#include "receiversettings.h"
#include "statuspage.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

/// @return a descriptor that can be read once one of the signals has come that end the program
int catchSignals()
{
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is a failed write
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr); // before there are threads, which have the same mask
    return ::signalfd(-1, &signals, SFD_CLOEXEC);
}

int receive(const ReceiverSettings& settings)
{
    QSocketNotifier ending(catchSignals(), QSocketNotifier::Read);
    QObject::connect(&ending, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    Receiver receiver(settings);
    const QString error = receiver.start();
    if (!error.isEmpty()) {
        tellError(error);
        return Incomplete;
    }
    QCoreApplication::exec();
    if (!receiver.stop())
        std::_Exit(Done); // the thread that stores waits for a database that does not answer; the spool has all
    return Done;
}

} // namespace

int main(int argc, char* argv[])
{
    // Closed standard streams would give their numbers, and what is written to them, to the first files.
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::dup(descriptor);
    ::close(descriptor);
    // Of a server that is gone the packets wait in the spool; waiting longer brings them nothing.
    ::setenv("PGCONNECT_TIMEOUT", "10", 0);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pardel-receive"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Takes what tracking terminals send over TCP and stores their reports in the monitoring archive.\n\n"
        "Every option is also a key of the group Receiver of the settings file (Group, Listen, Spool, Metrics,\n"
        "CrcInit, NoConvert), beside MaximumConnections, MaximumBuffer, IdleSeconds, PerAddress, AllowFrom,\n"
        "BytesPerSecond, Objects.\n"
        "SIGTERM and SIGINT end it with everything stored that has come.\n\n"
        "Exit status: 0 ended by a signal, 1 it cannot listen or use its spool, 2 wrong usage or settings.\n"
        "With --status: 0 running and storing, 1 not, 2 not to be found."));
    const QCommandLineOption ini(QStringLiteral("ini"), QStringLiteral("The settings file (INI)."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption group(QStringLiteral("group"), QStringLiteral("Its group that describes the database."),
                                   QStringLiteral("GROUP"));
    const QCommandLineOption listen(
        QStringLiteral("listen"), QStringLiteral("Where terminals connect to (default 127.0.0.1:20545); port 0: any."),
        QStringLiteral("ADDRESS:PORT"));
    const QCommandLineOption spool(
        QStringLiteral("spool"),
        QStringLiteral("Keep packets there until they are stored (default: pardel-spool beside FILE)."),
        QStringLiteral("FOLDER"));
    const QCommandLineOption metrics(
        QStringLiteral("metrics"),
        QStringLiteral("Write metrics there, in Prometheus' text form (default: metrics.prom in the spool)."),
        QStringLiteral("FILE"));
    const QCommandLineOption crcInit(QStringLiteral("crc-init"),
                                     QStringLiteral("Where the checksum starts: 0 or ffff (default)."),
                                     QStringLiteral("0|ffff"));
    const QCommandLineOption noConvert(
        QStringLiteral("no-convert"),
        QStringLiteral("Coordinates are decimal degrees, not packed degrees and minutes."));
    const QCommandLineOption status(QStringLiteral("status"),
                                    QStringLiteral("Print the state of the receiver with these settings, and end."));
    parser.addOptions({ini, group, listen, spool, metrics, crcInit, noConvert, status});
    if (const auto ended = parseCommandLine(parser, QCoreApplication::arguments()))
        return *ended;
    if (!parser.isSet(ini))
        return wrongUsage(QStringLiteral("--ini is needed."));
    const QString start = parser.value(crcInit);
    if (parser.isSet(crcInit) && start != QLatin1String("0") && start != QLatin1String("ffff"))
        return wrongUsage(QStringLiteral("--crc-init takes 0 or ffff, not \"%1\".").arg(start));

    const ReceiverSettings settings =
        ReceiverSettings::read({parser.value(ini), parser.value(group), parser.value(listen), parser.value(spool),
                                parser.value(metrics), start, parser.isSet(noConvert)});
    if (!settings.error.isEmpty()) {
        tellError(settings.error);
        return Failed;
    }
    return parser.isSet(status) ? printStatus(settings) : receive(settings);
}
