#include "reporttext.h"

#include <QByteArrayList>

#include <tuple>

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

MobData reportFrom(const QByteArray& text)
{
    MobData report;
    for (const QByteArray& word : text.simplified().split(' ')) {
        const auto behind = [&](char mark) { return word.mid(word.indexOf(mark) + 1); };
        const auto before = [&](char mark) { return word.left(word.indexOf(mark)).toInt(); };
        if (word.startsWith('@'))
            report.timeUnix = behind('@').toInt();
        else if (word.contains(','))
            std::tie(report.latitude, report.longitude) = std::pair(before(','), behind(',').toInt());
        else if (word.contains('/'))
            std::tie(report.speed, report.course) = std::pair(before('/'), behind('/').toInt());
        else if (word.contains('='))
            report.sensors += makeSensor(static_cast<qint16>(before('=')), behind('=').split(':').first().toFloat(),
                                         static_cast<qint8>(word.contains(':') ? behind(':').toInt() : 0));
        else
            report.idObject = word.toInt();
    }
    return report;
}

QByteArray frameText(const PacketFramer::Frame& frame)
{
    const QByteArray place = QByteArray::number(frame.offset);
    if (frame.kind == PacketFramer::Frame::Skipped)
        return place + '-' + QByteArray::number(frame.size);
    return place + (frame.kind == PacketFramer::Frame::Damaged ? '!' : ':') + frame.toByteArray().toHex();
}

Sensor makeSensor(qint16 type, float value, qint8 status, qint8 number)
{
    return {number, type, value, status};
}
