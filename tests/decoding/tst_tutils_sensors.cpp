#include <Pardel/tutils.h>

#include "reporttext.h"

#include <QTest>

class TestTUtilsSensors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addsOrReplaces()
    {
        MobData report;
        for (Sensor sensor : {makeSensor(3, 1), makeSensor(5, 2), makeSensor(3, 4, 7, 6)})
            QCOMPARE(TUtils::lSensorAdd(&report, &sensor), 0);
        QCOMPARE(sensorsText(report.sensors), QByteArray("6#3=4:7 5=2"));

        report.sensors += makeSensor(3, 9);
        Sensor sensor = makeSensor(3, 8);
        TUtils::lSensorAdd(&report, &sensor);
        QCOMPARE(sensorsText(report.sensors), QByteArray("3=8 5=2 3=8"));

        // A sensor of the list itself, and a list that another report shares.
        const MobData copy = report;
        report.sensors[1].value = 3;
        TUtils::lSensorAdd(&report, &report.sensors[1]);
        QCOMPARE(sensorsText(report.sensors), QByteArray("3=8 5=3 3=8"));
        QCOMPARE(sensorsText(copy.sensors), QByteArray("3=8 5=2 3=8"));

        TUtils::lSensorAdd(nullptr, &sensor);
        TUtils::lSensorAdd(&report, nullptr);
        QCOMPARE(report.sensors.size(), 3);
    }

    void findsByType()
    {
        MobData report;
        QVERIFY(!SensorExist(report, -1) && !TUtils::isAlarm(report));
        report.sensors = {makeSensor(3), Sensor()};
        QVERIFY(SensorExist(report, -1) && SensorExist(report, 3) && !SensorExist(report, 4));

        report.sensors = {makeSensor(14, 1, 1), makeSensor(15, 1, 0), makeSensor(15, 0, 1)};
        QVERIFY(!TUtils::isAlarm(report));
        report.sensors.removeAt(1);
        QVERIFY(TUtils::isAlarm(report));
    }
};

QTEST_APPLESS_MAIN(TestTUtilsSensors)
#include "tst_tutils_sensors.moc"
