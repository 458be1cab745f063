#include "simulaterun.h"

#include "commandline.h"
#include "output.h"

#include <QCoreApplication>
#include <QTimer>

#include <unistd.h>

namespace {

constexpr int flushSize = 1 << 16;

int writeAll(const SimulationSettings& settings, bool hex)
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

} // namespace

int simulate(const SimulateOptions& options)
{
    return options.live ? sendLive(options.simulation, *options.live) : writeAll(options.simulation, options.hex);
}
