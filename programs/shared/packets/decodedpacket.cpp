#include "decodedpacket.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QtEndian>

namespace {

using Frame = PacketFramer::Frame;

constexpr char longForm[] = "\xA4\xD6";
constexpr int longFormSize = 545;
constexpr int checksumSize = 2;
constexpr int leastReport = 13; // bytes: tag, position, time

bool checksumMatches(const QByteArray& packet, bool fromZero)
{
    const int sealed = static_cast<int>(packet.size()) - checksumSize;
    return sealed >= 0 && CRC_CCITT(QByteArray::fromRawData(packet.constData(), sealed), fromZero) ==
                              qFromBigEndian<quint16>(packet.constData() + sealed);
}

} // namespace

bool DecodedPacket::hasStatus() const
{
    return (result & TUtils::StatusSeen) != 0;
}

bool DecodedPacket::isLongForm() const
{
    return result == TUtils::LongForm;
}

Verdict DecodedPacket::verdict(const DecodeSettings& settings) const
{
    if (isLongForm())
        return Verdict::RawOnly;
    if (!checksumMatches && !settings.acceptDamaged)
        return Verdict::Damaged;
    // Of empty records it could hold a report in every byte.
    const bool plausible = reports.size() <= size / leastReport;
    return accepted() && plausible ? Verdict::Good : Verdict::Rejected;
}

Frame frameOf(qint64 place, const QByteArray& packet, bool checksumFromZero)
{
    const bool believed =
        (packet.size() == longFormSize && packet.startsWith(longForm)) || checksumMatches(packet, checksumFromZero);
    return {believed ? Frame::Packet : Frame::Damaged, place, packet.size(), packet.constData()};
}

DecodedPacket decodePacket(const Frame& frame, const DecodeSettings& settings)
{
    DecodedPacket decoded;
    decoded.place = frame.offset;
    decoded.size = static_cast<int>(frame.size);
    QByteArray packet = QByteArray::fromRawData(frame.bytes, decoded.size);
    decoded.result = TUtils::ParceOB1(packet, decoded.report, decoded.statusBit, &decoded.reports, &decoded.rawRecords,
                                      &decoded.rawExtra, settings.convert);
    // A frame of the form that has no checksum is a packet whatever its last bytes are.
    decoded.checksumMatches =
        decoded.isLongForm() ? checksumMatches(packet, settings.checksumFromZero) : frame.kind == Frame::Packet;
    return decoded;
}
