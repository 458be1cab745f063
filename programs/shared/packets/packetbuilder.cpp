#include "packetbuilder.h"

#include <Pardel/crc_ccitt.h>

#include <QtEndian>

namespace {

constexpr int lengthOffset = 5;
constexpr int checksumSize = 2;
constexpr quint8 additionalReportTag = 226;

} // namespace

RecordBuilder& RecordBuilder::byte(quint8 value)
{
    m_bytes.append(static_cast<char>(value));
    return *this;
}

RecordBuilder& RecordBuilder::big16(quint16 value)
{
    return byte(static_cast<quint8>(value >> 8)).byte(static_cast<quint8>(value & 0xFF));
}

RecordBuilder& RecordBuilder::big32(quint32 value)
{
    return big16(static_cast<quint16>(value >> 16)).big16(static_cast<quint16>(value & 0xFFFF));
}

RecordBuilder& RecordBuilder::little32(quint32 value)
{
    return big32(qbswap(value));
}

PacketBuilder::PacketBuilder(qint16 object) : m_bytes("\xA4\xD5\0", 3)
{
    m_bytes.append(static_cast<char>(object >> 8)).append(static_cast<char>(object & 0xFF));
    m_bytes.append(2, '\0'); // the length, known at the end
}

PacketBuilder& PacketBuilder::group(std::initializer_list<RecordBuilder> records)
{
    const QByteArray& first = records.begin()->bytes();
    const bool shorter = static_cast<quint8>(first.at(0)) == additionalReportTag;
    m_bytes.append(static_cast<char>(records.size()));
    m_bytes.append(static_cast<char>(first.size() + (shorter ? 1 : 0)));
    for (const RecordBuilder& record : records)
        m_bytes.append(record.bytes());
    return *this;
}

QByteArray PacketBuilder::sealed() const
{
    QByteArray packet = m_bytes;
    qToLittleEndian(static_cast<quint16>(packet.size() + checksumSize), packet.data() + lengthOffset);
    Append_CRC_CCITT(packet, false);
    return packet;
}
