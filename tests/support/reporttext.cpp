#include "reporttext.h"

#include <QByteArrayList>

QByteArray sensorsText(const QList<Sensor>& sensors)
{
    QByteArrayList texts;
    for (const Sensor& sensor : sensors) {
        texts += (sensor.number == -1 ? QByteArray() : QByteArray::number(sensor.number) + '#') +
                 QByteArray::number(sensor.type) + '=' + QByteArray::number(static_cast<double>(sensor.value), 'g', 9) +
                 (sensor.status == 0 ? QByteArray() : ':' + QByteArray::number(sensor.status));
    }
    return texts.join(' ');
}

QByteArray reportText(const MobData& report)
{
    const QByteArray text = QByteArray::number(report.idObject) + ' ' + QByteArray::number(report.latitude) + ',' +
                            QByteArray::number(report.longitude) + ' ' + QByteArray::number(report.speed) + '/' +
                            QByteArray::number(report.course) + " @" + QByteArray::number(report.timeUnix);
    return report.sensors.isEmpty() ? text : text + ' ' + sensorsText(report.sensors);
}

QByteArray reportsText(const QList<MobData>& reports)
{
    QByteArrayList texts;
    for (const MobData& report : reports)
        texts += reportText(report);
    return texts.join(" & ");
}

Sensor makeSensor(qint16 type, float value, qint8 status, qint8 number)
{
    return {number, type, value, status};
}
