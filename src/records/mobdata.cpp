#include <Pardel/mobdata.h>

#include "streamlists_p.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

namespace {

constexpr int headIntegers = 7;
constexpr int headSize = headIntegers * sizeof(qint32);
constexpr int blockSize = sizeof(Sensor);
constexpr int blocksAtOnce = 256;

quint32 valueBits(const Sensor& sensor)
{
    quint32 bits = 0;
    std::memcpy(&bits, &sensor.value, sizeof bits);
    return bits;
}

void writeBlock(const Sensor& sensor, char* block)
{
    std::memset(block, 0, blockSize);
    block[offsetof(Sensor, number)] = sensor.number;
    qToLittleEndian(sensor.type, block + offsetof(Sensor, type));
    qToLittleEndian(valueBits(sensor), block + offsetof(Sensor, value));
    block[offsetof(Sensor, status)] = sensor.status;
}

Sensor readBlock(const char* block)
{
    Sensor sensor;
    sensor.number = block[offsetof(Sensor, number)];
    sensor.type = qFromLittleEndian<qint16>(block + offsetof(Sensor, type));
    const auto bits = qFromLittleEndian<quint32>(block + offsetof(Sensor, value));
    std::memcpy(&sensor.value, &bits, sizeof bits);
    sensor.status = block[offsetof(Sensor, status)];
    return sensor;
}

/// Reads so many bytes, or as many as there are, and then fails the stream.
int readBytes(QDataStream& stream, char* bytes, int size)
{
    const int got = std::max(0, static_cast<int>(stream.readRawData(bytes, size)));
    if (got < size)
        stream.setStatus(QDataStream::ReadPastEnd);
    return got;
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
    // In one piece up to so many sensors: each piece that a stream takes costs as much as several sensors.
    char bytes[headSize + blocksAtOnce * blockSize];
    const bool bigEndian = stream.byteOrder() == QDataStream::BigEndian;
    char* end = bytes;
    for (const qint32 field : {report.idObject, report.latitude, report.longitude, report.speed, report.course,
                               report.timeUnix, static_cast<qint32>(report.sensors.size())}) {
        if (bigEndian)
            qToBigEndian(field, end);
        else
            qToLittleEndian(field, end);
        end += sizeof field;
    }
    for (const Sensor& sensor : report.sensors) {
        if (bytes + sizeof bytes - end < blockSize) {
            stream.writeRawData(bytes, static_cast<int>(end - bytes));
            end = bytes;
        }
        writeBlock(sensor, end);
        end += blockSize;
    }
    stream.writeRawData(bytes, static_cast<int>(end - bytes));
    return stream;
}

QDataStream& operator>>(QDataStream& stream, MobData& report)
{
    char head[headSize];
    const int reached = readBytes(stream, head, headSize) / static_cast<int>(sizeof(qint32));
    const bool bigEndian = stream.byteOrder() == QDataStream::BigEndian;
    qint32 fields[headIntegers] = {};
    for (int i = 0; i < reached; ++i) {
        const char* const bytes = head + i * static_cast<int>(sizeof(qint32));
        fields[i] = bigEndian ? qFromBigEndian<qint32>(bytes) : qFromLittleEndian<qint32>(bytes);
    }
    std::tie(report.idObject, report.latitude, report.longitude, report.speed, report.course, report.timeUnix) =
        std::tie(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]);

    // What of a block does not come keeps what the one before it had.
    char blocks[(1 + blocksAtOnce) * blockSize];
    char* const block = blocks + blockSize;
    writeBlock(Sensor(), blocks);
    int left = fields[headIntegers - 1];
    if (left > 0) // what comes later makes room in ever larger steps
        report.sensors.reserve(report.sensors.size() + std::min(left, blocksAtOnce));
    while (left > 0) {
        const int count = std::min(left, blocksAtOnce);
        const int got = readBytes(stream, block, count * blockSize);
        const int whole = got / blockSize;
        for (int i = 0; i < whole; ++i)
            report.sensors.append(readBlock(block + i * blockSize));
        left -= whole;
        if (whole < count) {
            char* const broken = block + whole * blockSize;
            const int part = got % blockSize;
            std::memcpy(broken + part, broken + part - blockSize, static_cast<std::size_t>(blockSize - part));
            const Sensor sensor = readBlock(broken);
            for (int missing = std::min(left, maximumMissingElements); missing > 0; --missing)
                report.sensors.append(sensor);
            return stream;
        }
        std::memcpy(blocks, block + (count - 1) * blockSize, blockSize);
    }
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
