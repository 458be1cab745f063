#include "packetbuilder.h"
#include "ratios.h"

#include "decoding/report.pb.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <boost/crc.hpp>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

// Every allocation of the process is counted, Qt's included.
static std::size_t allocations = 0;

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* realloc(void* block, std::size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}
}

namespace {

constexpr int largePacket = 65535;

/// A typical packet: 12 sensors in 56 bytes.
QByteArray typicalPacket()
{
    return PacketBuilder(17)
        .group({RecordBuilder(11).little32(554550000).little32(373700000).byte(39).byte(92).little32(1767225600)})
        .group({RecordBuilder(12).byte(0x31), RecordBuilder(65).byte(178), RecordBuilder(72).byte(31),
                RecordBuilder(49).byte(129), RecordBuilder(76).byte(21), RecordBuilder(106).byte(9)})
        .group({RecordBuilder(112).big16(2226), RecordBuilder(113).big16(14)})
        .group({RecordBuilder(50).byte(41).big32(0x41A12AF7)})
        .sealed();
}

/// Two-byte records in groups of 255, as many as fit into @p size bytes; even ones have this tag, odd ones the other.
QByteArray hostilePacket(int size, quint8 evenTag, quint8 oddTag)
{
    constexpr int headerSize = 7;
    constexpr int recordsInGroup = 255;
    QByteArray packet("\xA4\xD5\0\0\x11\0\0", headerSize);
    while (packet.size() + 2 + 2 * recordsInGroup + 2 <= size) {
        packet.append(static_cast<char>(recordsInGroup)).append('\2');
        for (int i = 0; i < recordsInGroup; ++i)
            packet.append(static_cast<char>(i % 2 ? oddTag : evenTag))
                .append(static_cast<char>(oddTag == 15 ? evenTag : i));
    }
    const auto length = packet.size() + 2;
    packet[5] = static_cast<char>(length & 0xFF);
    packet[6] = static_cast<char>(length >> 8);
    Append_CRC_CCITT(packet, false);
    return packet;
}

MobData decode(QByteArray& packet)
{
    MobData report;
    bool statusBit = false;
    TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, true);
    return report;
}

MobData appendSensors(const QList<Sensor>& sensors)
{
    MobData report;
    for (const Sensor& sensor : sensors)
        report.sensors.append(sensor);
    return report;
}

void parse(benchmark::State& state)
{
    QByteArray packet = typicalPacket();
    for (auto _ : state)
        benchmark::DoNotOptimize(decode(packet).sensors.size());
}

void appendSame(benchmark::State& state)
{
    QByteArray packet = typicalPacket();
    const QList<Sensor> sensors = decode(packet).sensors;
    for (auto _ : state)
        benchmark::DoNotOptimize(appendSensors(sensors).sensors.size());
}

void protobufParse(benchmark::State& state)
{
    QByteArray packet = typicalPacket();
    const MobData report = decode(packet);
    peer::Report message;
    message.set_object(report.idObject);
    message.set_latitude(report.latitude);
    message.set_longitude(report.longitude);
    message.set_speed(report.speed);
    message.set_course(report.course);
    message.set_time(static_cast<quint32>(report.timeUnix));
    for (const Sensor& sensor : report.sensors) {
        peer::Sensor* added = message.add_sensors();
        added->set_number(sensor.number);
        added->set_type(sensor.type);
        added->set_value(sensor.value);
        added->set_status(sensor.status);
    }
    const std::string bytes = message.SerializeAsString();
    for (auto _ : state) {
        peer::Report fresh;
        benchmark::DoNotOptimize(fresh.ParseFromString(bytes));
    }
}

void hostile(benchmark::State& state, quint8 evenTag, quint8 oddTag)
{
    QByteArray packet = hostilePacket(static_cast<int>(state.range(0)), evenTag, oddTag);
    for (auto _ : state)
        benchmark::DoNotOptimize(decode(packet).sensors.size());
}

QByteArray sampleBytes(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 167 + 13);
    return bytes;
}

void crc(benchmark::State& state)
{
    const QByteArray bytes = sampleBytes(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(CRC_CCITT(bytes, false));
}

void crcOfBytes(benchmark::State& state)
{
    const QByteArray bytes = sampleBytes(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(CRC_CCITT(bytes.constData(), static_cast<std::size_t>(bytes.size()), 0xFFFF));
}

/// boost behind the interface of CRC_CCITT: taking the array by value counts its reference up and down.
Q_DECL_EXPORT Q_NEVER_INLINE quint16 boostByValue(QByteArray data, bool zeroInit)
{
    boost::crc_optimal<16, 0x1021, 0, 0, false, false> checksum(zeroInit ? 0x0000 : 0xFFFF);
    checksum.process_bytes(data.constData(), static_cast<std::size_t>(data.size()));
    return checksum.checksum();
}

void boostCrcByValue(benchmark::State& state)
{
    const QByteArray bytes = sampleBytes(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(boostByValue(bytes, false));
}

/// What the interface alone costs.
Q_DECL_EXPORT Q_NEVER_INLINE quint16 nothingByValue(QByteArray data, bool zeroInit)
{
    return static_cast<quint16>(data.size() + zeroInit);
}

void callByValue(benchmark::State& state)
{
    const QByteArray bytes = sampleBytes(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(nothingByValue(bytes, false));
}

void boostCrc(benchmark::State& state)
{
    const QByteArray bytes = sampleBytes(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        boost::crc_optimal<16, 0x1021, 0xFFFF, 0, false, false> checksum;
        checksum.process_bytes(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        benchmark::DoNotOptimize(checksum.checksum());
    }
}

BENCHMARK(parse);
BENCHMARK(appendSame);
BENCHMARK(protobufParse);
BENCHMARK_CAPTURE(hostile, twoByteRecords, 200, 201)->Arg(largePacket / 10)->Arg(largePacket);
BENCHMARK_CAPTURE(hostile, tag15, 15, 15)->Arg(largePacket / 10)->Arg(largePacket);
BENCHMARK_CAPTURE(hostile, sensorsAndTag15, 200, 15)->Arg(largePacket / 10)->Arg(largePacket);
BENCHMARK(crc)->Arg(16)->Arg(60)->Arg(545);
BENCHMARK(crcOfBytes)->Arg(16);
BENCHMARK(boostCrc)->Arg(16)->Arg(60)->Arg(545);
BENCHMARK(boostCrcByValue)->Arg(16);
BENCHMARK(callByValue)->Arg(16);

std::size_t allocationsOf(const std::function<MobData()>& make)
{
    const std::size_t before = allocations;
    const MobData report = make();
    return allocations - before;
}

} // namespace

int main(int argc, char* argv[])
{
    const int status =
        runWithRatios(argc, argv,
                      {{"parse", "appendSame", Ratio::AtMost, 1.4},
                       {"parse", "protobufParse", Ratio::AtMost, 1.0},
                       {"hostile/twoByteRecords/65535", "hostile/twoByteRecords/6553", Ratio::AtMost, 13},
                       {"hostile/tag15/65535", "hostile/tag15/6553", Ratio::AtMost, 13},
                       {"hostile/sensorsAndTag15/65535", "hostile/sensorsAndTag15/6553", Ratio::AtMost, 13},
                       {"crc/545", "boostCrc/545", Ratio::AtLeast, 3},
                       {"crc/16", "boostCrc/16", Ratio::AtLeast, 1},
                       {"crcOfBytes/16", "boostCrc/16", Ratio::AtLeast, 1.5},
                       {"crc/16", "boostCrcByValue/16", Ratio::AtLeast, 1}});

    QByteArray packet = typicalPacket();
    const QList<Sensor> sensors = decode(packet).sensors;
    std::printf("allocations: %zu in parse, %zu in appendSame (packet of %zd bytes, %zd sensors)\n",
                allocationsOf([&] { return decode(packet); }), allocationsOf([&] { return appendSensors(sensors); }),
                static_cast<ssize_t>(packet.size()), static_cast<ssize_t>(sensors.size()));
    return status;
}
