#include "fuzz.h"

#include <Pardel/tutils.h>

namespace {

/// What the parser makes of a packet.
struct Parsed
{
    quint32 result = 0;
    MobData report;
    bool statusBit = false;
    QList<MobData> reports;
    QList<QByteArray> rawRecords;
    QList<QByteArray> rawExtra;

    Parsed(QByteArray packet, bool convert)
    {
        const QByteArray before = packet;
        result = TUtils::ParceOB1(packet, report, statusBit, &reports, &rawRecords, &rawExtra, convert);
        expect(packet == before, "the packet stays as it is");
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const bool convert = takeByte(data, size) & 1;
    QByteArray packet = bytesOf(data, size);
    const Parsed parsed(packet, convert);

    MobData report;
    bool statusBit = false;
    const quint32 result = TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, convert);
    // Of the result, bits tell what the lists were given.
    expect((result ^ parsed.result) % 4 == 0 && report.hash() == parsed.report.hash() &&
               report.timeUnix == parsed.report.timeUnix,
           "the lists make no difference to the report");

    qsizetype elements = parsed.reports.size() + parsed.rawRecords.size() + parsed.rawExtra.size();
    for (const MobData& additional : parsed.reports)
        elements += additional.sensors.size();
    expect(static_cast<std::size_t>(elements + report.sensors.size()) <= 64 + 64 * size,
           "what comes out is bounded by what went in");

    unsigned version = 0;
    TUtils::GetVersion(packet, version);
    TUtils::isAlarm(report);
    return 0;
}
