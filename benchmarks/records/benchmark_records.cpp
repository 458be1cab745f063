#include "ratios.h"

#include "decoding/report.pb.h"

#include <Pardel/mobdata.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr int sensorCount = 12;

MobData sampleReport()
{
    MobData report;
    report.idObject = 17;
    report.latitude = 557583333;
    report.longitude = 376166667;
    report.speed = 72;
    report.course = 184;
    report.timeUnix = 1767225600;
    for (qint16 i = 0; i < sensorCount; ++i) {
        Sensor sensor;
        sensor.type = static_cast<qint16>(100 + i);
        sensor.value = 1.5F * static_cast<float>(i);
        report.sensors.append(sensor);
    }
    return report;
}

QByteArray sampleBytes()
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << sampleReport();
    return bytes;
}

// The bare sequences: the same calls on the stream with nothing around them.

void bareWrite(QDataStream& stream, const MobData& report)
{
    stream << report.idObject << report.latitude << report.longitude << report.speed << report.course << report.timeUnix
           << qint32(report.sensors.size());
    for (const Sensor& sensor : report.sensors)
        stream.writeRawData(reinterpret_cast<const char*>(&sensor), sizeof sensor);
}

void bareRead(QDataStream& stream, MobData& report)
{
    qint32 count = 0;
    stream >> report.idObject >> report.latitude >> report.longitude >> report.speed >> report.course >>
        report.timeUnix >> count;
    Sensor sensor;
    for (qint32 i = 0; i < count; ++i) {
        stream.readRawData(reinterpret_cast<char*>(&sensor), sizeof sensor);
        report.sensors.append(sensor);
    }
}

QByteArray bareHash(const MobData& report)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_5);
    stream << report.latitude << report.longitude << report.idObject << report.speed << report.course;
    for (const Sensor& sensor : report.sensors)
        stream << sensor.number << sensor.status << sensor.type << sensor.value;
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
}

template <typename Write>
void measureWrite(benchmark::State& state, Write write)
{
    const MobData report = sampleReport();
    for (auto _ : state) {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        write(stream, report);
        benchmark::DoNotOptimize(bytes.constData());
    }
}

template <typename Read>
void measureRead(benchmark::State& state, Read read)
{
    const QByteArray bytes = sampleBytes();
    for (auto _ : state) {
        QDataStream stream(bytes);
        MobData report;
        read(stream, report);
        benchmark::DoNotOptimize(report.sensors.size());
    }
}

void write(benchmark::State& state)
{
    measureWrite(state, [](QDataStream& stream, const MobData& report) { stream << report; });
}

void writeBare(benchmark::State& state)
{
    measureWrite(state, bareWrite);
}

void read(benchmark::State& state)
{
    measureRead(state, [](QDataStream& stream, MobData& report) { stream >> report; });
}

void readBare(benchmark::State& state)
{
    measureRead(state, bareRead);
}

peer::Report samplePeer()
{
    const MobData report = sampleReport();
    peer::Report message;
    message.set_object(report.idObject);
    message.set_latitude(report.latitude);
    message.set_longitude(report.longitude);
    message.set_speed(report.speed);
    message.set_course(report.course);
    message.set_time(static_cast<quint32>(report.timeUnix));
    for (const Sensor& sensor : report.sensors) {
        peer::Sensor* const added = message.add_sensors();
        added->set_number(sensor.number);
        added->set_type(sensor.type);
        added->set_value(sensor.value);
        added->set_status(sensor.status);
    }
    return message;
}

/// Into a stream that is there, as a link has one; each report over the one before it.
void writeAgain(benchmark::State& state)
{
    const MobData report = sampleReport();
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    QDataStream stream(&buffer);
    for (auto _ : state) {
        buffer.seek(0);
        stream << report;
        benchmark::DoNotOptimize(buffer.data().constData());
    }
}

void protobufWrite(benchmark::State& state)
{
    const peer::Report message = samplePeer();
    std::string bytes;
    for (auto _ : state) {
        message.SerializeToString(&bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
}

/// From a stream that is there, into a report of its own each.
void readAgain(benchmark::State& state)
{
    QByteArray bytes = sampleBytes();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QDataStream stream(&buffer);
    for (auto _ : state) {
        buffer.seek(0);
        MobData report;
        stream >> report;
        benchmark::DoNotOptimize(report.sensors.size());
    }
}

void protobufRead(benchmark::State& state)
{
    const std::string bytes = samplePeer().SerializeAsString();
    for (auto _ : state) {
        peer::Report message;
        message.ParseFromString(bytes);
        benchmark::DoNotOptimize(message.sensors_size());
    }
}

void hash(benchmark::State& state)
{
    const MobData report = sampleReport();
    for (auto _ : state)
        benchmark::DoNotOptimize(report.hash());
}

void hashBare(benchmark::State& state)
{
    const MobData report = sampleReport();
    for (auto _ : state)
        benchmark::DoNotOptimize(bareHash(report));
}

BENCHMARK(write);
BENCHMARK(writeBare);
BENCHMARK(read);
BENCHMARK(readBare);
BENCHMARK(writeAgain);
BENCHMARK(protobufWrite);
BENCHMARK(readAgain);
BENCHMARK(protobufRead);
BENCHMARK(hash);
BENCHMARK(hashBare);

} // namespace

int main(int argc, char* argv[])
{
    return runWithRatios(argc, argv,
                         {{"write", "writeBare", Ratio::AtMost, 1.2},
                          {"read", "readBare", Ratio::AtMost, 1.2},
                          {"writeAgain", "protobufWrite", Ratio::AtMost, 1.0},
                          {"readAgain", "protobufRead", Ratio::AtMost, 1.0},
                          {"hash", "hashBare", Ratio::AtMost, 1.2}});
}
