// What PacketFramer costs beside the checksums that it has to compute, and on bytes made to cost it most.

#include "ratios.h"
#include "simulation.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/packetframer.h>

#include <QList>

#include <benchmark/benchmark.h>

namespace {

constexpr int megabyte = 1'000'000;

/// Some 3 MB of simulated packets, 65 bytes each on average.
const QByteArray& capture()
{
    static const QByteArray bytes = [] {
        SimulationSettings settings;
        settings.terminals = 100;
        settings.minutes = 460;
        Simulation simulation(settings);
        QByteArray all;
        for (QByteArray packet = simulation.next(); !packet.isEmpty(); packet = simulation.next())
            all += packet;
        return all;
    }();
    return bytes;
}

qint64 packetsIn(PacketFramer& framer)
{
    qint64 packets = 0;
    for (PacketFramer::Frame frame; framer.next(frame);)
        packets += frame.kind == PacketFramer::Frame::Packet;
    return packets;
}

/// As if the capture were a single packet.
void crcPass(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(CRC_CCITT(capture(), false));
}

/// As an application that knows where the packets are would check each of them.
void crcOfPackets(benchmark::State& state)
{
    QList<QByteArray> packets;
    PacketFramer framer;
    framer.feed(capture());
    for (PacketFramer::Frame frame; framer.next(frame);)
        packets += frame.toByteArray();
    for (auto _ : state) {
        for (const QByteArray& packet : std::as_const(packets))
            benchmark::DoNotOptimize(CRC_CCITT(packet, false));
    }
}

void frame(benchmark::State& state)
{
    for (auto _ : state) {
        PacketFramer framer;
        framer.feed(capture());
        benchmark::DoNotOptimize(packetsIn(framer));
    }
}

void frameInPieces(benchmark::State& state)
{
    const auto pieceSize = static_cast<int>(state.range(0));
    for (auto _ : state) {
        PacketFramer framer;
        for (int place = 0; place < capture().size(); place += pieceSize) {
            framer.feed(capture().mid(place, pieceSize));
            benchmark::DoNotOptimize(packetsIn(framer));
        }
    }
}

/// The pattern again and again, in pieces of 16 KiB, with or without a pause behind each.
void hostile(benchmark::State& state, const char* hex, bool pauses)
{
    const QByteArray pattern = QByteArray::fromHex(hex);
    const auto size = static_cast<int>(state.range(0));
    const QByteArray bytes = pattern.repeated(size / pattern.size() + 1);
    constexpr int pieceSize = 1 << 14;
    for (auto _ : state) {
        PacketFramer framer;
        for (int place = 0; place < size; place += pieceSize) {
            framer.feed(bytes.mid(place, qMin(pieceSize, size - place)));
            if (pauses)
                framer.pause();
            benchmark::DoNotOptimize(packetsIn(framer));
        }
        framer.finish();
        benchmark::DoNotOptimize(packetsIn(framer));
    }
    state.counters["bytes a second"] = benchmark::Counter(size, benchmark::Counter::kIsIterationInvariantRate);
}

constexpr char starts[] = "a4d5000011ffff";
constexpr char startsAndPackets[] = "a4d5000011ffff a4d50000110d00010241239521";
constexpr char shortStarts[] = "a4d50000110e00 a4d5000011ffff";

BENCHMARK(crcPass);
BENCHMARK(crcOfPackets);
BENCHMARK(frame);
BENCHMARK(frameInPieces)->Arg(1 << 16)->Arg(1 << 12);
BENCHMARK_CAPTURE(hostile, starts, starts, false)->Arg(3 * megabyte / 10)->Arg(3 * megabyte);
BENCHMARK_CAPTURE(hostile, startsAndPauses, starts, true)->Arg(3 * megabyte / 10)->Arg(3 * megabyte);
BENCHMARK_CAPTURE(hostile, startsAndPackets, startsAndPackets, false)->Arg(3 * megabyte / 10)->Arg(3 * megabyte);
BENCHMARK_CAPTURE(hostile, packetsAndPauses, startsAndPackets, true)->Arg(3 * megabyte / 10)->Arg(3 * megabyte);
BENCHMARK_CAPTURE(hostile, shortStarts, shortStarts, true)->Arg(3 * megabyte / 10)->Arg(3 * megabyte);

} // namespace

int main(int argc, char* argv[])
{
    std::vector<Ratio> ratios = {{"frame", "crcOfPackets", Ratio::AtMost, 1.3},
                                 {"frameInPieces/65536", "crcOfPackets", Ratio::AtMost, 1.3},
                                 {"frameInPieces/4096", "crcOfPackets", Ratio::AtMost, 1.3},
                                 {"frame", "crcPass", Ratio::AtMost, 1.3}};
    for (const char* input : {"starts", "startsAndPauses", "startsAndPackets", "packetsAndPauses", "shortStarts"}) {
        const std::string name = std::string("hostile/") + input + '/';
        ratios.push_back({name + "3000000", name + "300000", Ratio::AtMost, 12});
    }
    return runWithRatios(argc, argv, ratios);
}
