#include "toolruns.h"

#include "simulation.h"

#include <QFile>

#include <algorithm>

bool simulateTo(const QString& path, int minutes)
{
    SimulationSettings settings;
    settings.terminals = 1000;
    settings.minutes = minutes;
    Simulation simulation(settings);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (QByteArray packet = simulation.next(); !packet.isEmpty(); packet = simulation.next())
        file.write(packet);
    return file.flush();
}

double fastest(const std::vector<double>& seconds)
{
    return *std::min_element(seconds.begin(), seconds.end());
}
