#include "decodedpacket.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/tutils.h>

#include <QtEndian>

namespace {

bool checksumMatches(const char* bytes, int size, bool fromZero)
{
    constexpr int checksumSize = 2;
    const int sealed = size - checksumSize;
    return sealed >= 0 &&
           CRC_CCITT(QByteArray::fromRawData(bytes, sealed), fromZero) == qFromBigEndian<quint16>(bytes + sealed);
}

} // namespace

DecodedPacket decodePacket(qint64 place, const char* bytes, int size, const DecodeSettings& settings)
{
    DecodedPacket decoded;
    decoded.place = place;
    decoded.size = size;
    decoded.checksumMatches = checksumMatches(bytes, size, settings.checksumFromZero);
    QByteArray packet = QByteArray::fromRawData(bytes, size);
    decoded.result = TUtils::ParceOB1(packet, decoded.report, decoded.statusBit, &decoded.reports, &decoded.rawRecords,
                                      &decoded.rawExtra, settings.convert);
    return decoded;
}
