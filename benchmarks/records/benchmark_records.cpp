#include "ratios.h"

#include <Pardel/mobdata.h>

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

#include <benchmark/benchmark.h>

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
BENCHMARK(hash);
BENCHMARK(hashBare);

} // namespace

int main(int argc, char* argv[])
{
    return runWithRatios(argc, argv,
                         {{"write", "writeBare", Ratio::AtMost, 1.2},
                          {"read", "readBare", Ratio::AtMost, 1.2},
                          {"hash", "hashBare", Ratio::AtMost, 1.2}});
}
