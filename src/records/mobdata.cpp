#include <Pardel/mobdata.h>

#include "streamlists_p.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QtEndian>

#include <cstring>
#include <utility>

namespace {

using Block = char[sizeof(Sensor)];

quint32 valueBits(const Sensor& sensor)
{
    quint32 bits = 0;
    std::memcpy(&bits, &sensor.value, sizeof bits);
    return bits;
}

void writeBlock(const Sensor& sensor, Block& block)
{
    std::memset(block, 0, sizeof block);
    block[offsetof(Sensor, number)] = sensor.number;
    qToLittleEndian(sensor.type, block + offsetof(Sensor, type));
    qToLittleEndian(valueBits(sensor), block + offsetof(Sensor, value));
    block[offsetof(Sensor, status)] = sensor.status;
}

Sensor readBlock(const Block& block)
{
    Sensor sensor;
    sensor.number = block[offsetof(Sensor, number)];
    sensor.type = qFromLittleEndian<qint16>(block + offsetof(Sensor, type));
    const auto bits = qFromLittleEndian<quint32>(block + offsetof(Sensor, value));
    std::memcpy(&sensor.value, &bits, sizeof bits);
    sensor.status = block[offsetof(Sensor, status)];
    return sensor;
}

} // namespace

QDataStream& operator<<(QDataStream& stream, const Sensor& sensor)
{
    return stream << sensor.number << sensor.status << sensor.type << sensor.value;
}

QDataStream& operator>>(QDataStream& stream, Sensor& sensor)
{
    return stream >> sensor.number >> sensor.status >> sensor.type >> sensor.value;
}

QDataStream& operator<<(QDataStream& stream, const MobData& report)
{
    stream << report.idObject << report.latitude << report.longitude << report.speed << report.course
           << report.timeUnix;
    stream << static_cast<qint32>(report.sensors.size());
    Block block;
    for (const Sensor& sensor : report.sensors) {
        writeBlock(sensor, block);
        stream.writeRawData(block, sizeof block);
    }
    return stream;
}

QDataStream& operator>>(QDataStream& stream, MobData& report)
{
    stream >> report.idObject >> report.latitude >> report.longitude >> report.speed >> report.course >>
        report.timeUnix;
    Block block;
    writeBlock(Sensor(), block);
    readAnnounced(stream, [&] {
        // A short read leaves the rest of the block as it was, so that the sensor keeps what the one before it had.
        stream.readRawData(block, sizeof block);
        report.sensors.append(readBlock(block));
    });
    return stream;
}

QByteArray MobData::hash() const
{
    // The bytes that a stream of version QDataStream::Qt_4_5 would have, without the detour through a device.
    constexpr int positionSize = 20;
    constexpr int sensorSize = 8;
    QByteArray content(positionSize + sensorSize * sensors.size(), Qt::Uninitialized);
    char* bytes = content.data();
    for (const qint32 field : {latitude, longitude, idObject, speed, course}) {
        qToBigEndian(field, bytes);
        bytes += sizeof field;
    }
    for (const Sensor& sensor : sensors) {
        bytes[0] = sensor.number;
        bytes[1] = sensor.status;
        qToBigEndian(sensor.type, bytes + 2);
        qToBigEndian(valueBits(sensor), bytes + 4);
        bytes += sensorSize;
    }
    return QCryptographicHash::hash(content, QCryptographicHash::Md5);
}

QByteArray MobData::hash()
{
    return std::as_const(*this).hash();
}
