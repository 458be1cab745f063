#pragma once

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <optional>

/// Sizes and positions of a packet's outer form, in bytes.
namespace Packet {

constexpr quint8 start = 0xA4;
constexpr quint8 shortForm = 0xD5;
constexpr quint8 longForm = 0xD6;
constexpr int leastSize = 13;
constexpr int longFormSize = 545;
constexpr int longFormHeaderSize = 4;
constexpr int lengthOffset = 5;
constexpr int headerSize = 7;
constexpr int groupHeaderSize = 2;
constexpr int checksumSize = 2;
constexpr quint8 additionalReportTag = 226; // its records are one byte shorter than their group says

} // namespace Packet

/// One record of a packet: its tag is byte 0. Reads behind its end give zero bytes.
class Record
{
public:
    Record(const uchar* bytes, int size) : m_bytes(bytes), m_size(size) {}

    int size() const { return m_size; }
    quint8 byte(int index) const { return index < m_size ? m_bytes[index] : quint8(0); }
    quint32 big16(int index) const { return byte(index) * 0x100U + byte(index + 1); }
    quint32 big32(int index) const { return big16(index) * 0x10000U + big16(index + 2); }
    quint32 little32(int index) const { return qbswap(big32(index)); }
    /// A copy of the first bytes, of fewer where the record is shorter.
    QByteArray head(int size) const
    {
        return QByteArray(reinterpret_cast<const char*>(m_bytes), std::min(size, m_size));
    }

private:
    const uchar* m_bytes;
    int m_size;
};

/**
 * Hands every record of a short-form packet to @p visit, in packet order, without those that are empty or lie behind
 * the packet's end. That end is where its @p size bytes end, whatever @p length, its length field, says: a record that
 * runs over the length takes the bytes that follow.
 *
 * @return whether the groups add up, which is known only after the last record: see countRecords
 */
template <typename Visit>
bool forEachRecord(const uchar* packet, int size, int length, Visit visit)
{
    const int groupsEnd = length - Packet::checksumSize;
    if (size < groupsEnd)
        return false;
    int position = Packet::headerSize;
    while (position < groupsEnd) {
        if (size - position < Packet::groupHeaderSize)
            return false;
        const int count = packet[position];
        const int groupSize = packet[position + 1];
        position += Packet::groupHeaderSize;
        for (int i = 0; i < count; ++i) {
            const int present = size - position;
            const bool shorter = present > 0 && packet[position] == Packet::additionalReportTag;
            const int recordSize = shorter ? groupSize - 1 : groupSize;
            if (recordSize <= 0)
                break; // so are all others of this group: the position does not move
            if (present > 0)
                visit(Record(packet + position, std::min(recordSize, present)));
            position += recordSize;
            if (position - recordSize >= length)
                break; // this record began behind the packet
        }
    }
    return position == groupsEnd || position == length || position == length + 1;
}

/// How many records forEachRecord will visit; nothing when the groups do not add up and the packet is to be rejected.
inline std::optional<int> countRecords(const uchar* packet, int size, int length)
{
    int records = 0;
    const bool addsUp = forEachRecord(packet, size, length, [&records](const Record&) { ++records; });
    return addsUp ? std::optional(records) : std::nullopt;
}
