#include "simulation.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QTest>

#include <cmath>

class TestSimulation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void simulatesPlausibleTracks()
    {
        SimulationSettings settings;
        settings.terminals = 20;
        settings.minutes = 600;
        Simulation simulation(settings);
        QMap<int, MobData> last;
        int packets = 0;
        for (QByteArray packet = simulation.next(); !packet.isEmpty(); packet = simulation.next()) {
            MobData report;
            bool statusBit = false;
            QCOMPARE(TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, true), 1U);
            QVERIFY(statusBit && CRC_CCITT(packet, false) == 0);
            ++packets;
            const MobData before = last.value(report.idObject, report);
            const double north = (report.latitude - before.latitude) * 111.32e-7; // km
            const double east = (report.longitude - before.longitude) * 111.32e-7 * std::cos(0.96);
            QVERIFY(report.speed <= 110 && std::hypot(north, east) < 110.0 / 60 * 1.1);
            last[report.idObject] = report;
        }
        QCOMPARE(packets, settings.terminals * settings.minutes);
    }
};

QTEST_APPLESS_MAIN(TestSimulation)
#include "tst_simulation.moc"
