#include <Pardel/crc_ccitt.h>

#include <array>
#include <cstddef>

namespace {

constexpr unsigned polynomial = 0x1021;
constexpr std::size_t sliceSize = 16;

using Table = std::array<quint16, 256>;

/// Entry [n][byte] is the checksum, from a zero register, of the byte with n zero bytes after it.
constexpr std::array<Table, sliceSize> makeTables()
{
    std::array<Table, sliceSize> tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned checksum = byte << 8;
        for (int bit = 0; bit < 8; ++bit)
            checksum = (checksum & 0x8000) ? (checksum << 1) ^ polynomial : checksum << 1;
        tables[0][byte] = static_cast<quint16>(checksum);
    }
    for (std::size_t zeros = 1; zeros < sliceSize; ++zeros) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const unsigned before = tables[zeros - 1][byte];
            tables[zeros][byte] = static_cast<quint16>((before << 8) ^ tables[0][before >> 8]);
        }
    }
    return tables;
}

constexpr std::array<Table, sliceSize> tables = makeTables();

/// The 16-bit register after @p size bytes, two at least and sliceSize at most. Checksums add up: byte i has
/// size - 1 - i bytes after it, so its share is tables[size - 1 - i][byte]. Only the first two bytes meet the register
/// as it was. The two sums are independent chains of XORs, which the processor works at side by side.
inline unsigned shiftIn(const uchar* data, std::size_t size, unsigned checksum)
{
    unsigned even = tables[size - 1][data[0] ^ (checksum >> 8)];
    unsigned odd = tables[size - 2][data[1] ^ (checksum & 0xFF)];
    std::size_t i = 2;
    for (; i + 1 < size; i += 2) {
        even ^= tables[size - 1 - i][data[i]];
        odd ^= tables[size - 2 - i][data[i + 1]];
    }
    if (i < size)
        even ^= tables[0][data[i]];
    return even ^ odd;
}

unsigned checksumOf(const uchar* data, std::size_t size, unsigned checksum)
{
    for (; size >= sliceSize; data += sliceSize, size -= sliceSize)
        checksum = shiftIn(data, sliceSize, checksum);
    if (size > 1)
        return shiftIn(data, size, checksum);
    if (size == 1)
        return ((checksum << 8) & 0xFFFF) ^ tables[0][(checksum >> 8) ^ *data];
    return checksum;
}

} // namespace

quint16 CRC_CCITT(QByteArray data, bool zeroInit)
{
    const auto* bytes = reinterpret_cast<const uchar*>(data.constData());
    return static_cast<quint16>(checksumOf(bytes, static_cast<std::size_t>(data.size()), zeroInit ? 0x0000 : 0xFFFF));
}

void Append_CRC_CCITT(QByteArray& data, bool zeroInit)
{
    const quint16 checksum = CRC_CCITT(data, zeroInit);
    data.append(static_cast<char>(checksum >> 8));
    data.append(static_cast<char>(checksum & 0xFF));
}
