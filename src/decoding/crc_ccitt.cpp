#include <Pardel/crc_ccitt.h>

#include "crc_ccitt_p.h"

#include <QtEndian>

#include <array>
#include <cstddef>
#include <cstring>

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

/// The register after a block of sliceSize bytes. Checksums add up: byte i has sliceSize - 1 - i bytes after it, so its
/// share is tables[sliceSize - 1 - i][byte]. Only the first two bytes meet the register as it was. The two sums are
/// independent chains of XORs, which the processor works at side by side.
inline unsigned shiftIn(const uchar* block, unsigned checksum)
{
    unsigned even = tables[sliceSize - 1][block[0] ^ (checksum >> 8)];
    unsigned odd = tables[sliceSize - 2][block[1] ^ (checksum & 0xFF)];
    for (std::size_t i = 2; i < sliceSize; i += 2) {
        even ^= tables[sliceSize - 1 - i][block[i]];
        odd ^= tables[sliceSize - 2 - i][block[i + 1]];
    }
    return even ^ odd;
}

__extension__ using Wide = unsigned __int128;
static_assert(sizeof(Wide) == sliceSize);

/// The first @p count bytes, fewer than sliceSize, of @p size as a number, the first byte highest.
inline Wide numberOf(const uchar* bytes, std::size_t count, std::size_t size)
{
    uchar block[sliceSize] = {};
    if (size >= sliceSize) // without a copy of ever changing length, which costs more than the checksum
        std::memcpy(block, bytes, sliceSize);
    else
        std::memcpy(block, bytes, count);
    const Wide number = Wide(qFromBigEndian<quint64>(block)) << 64 | qFromBigEndian<quint64>(block + sizeof(quint64));
    return number >> 8 * (sliceSize - count);
}

/// The register after the first bytes, fewer than sliceSize. As many zeros as a block lacks are put before them, which
/// leave a register of zero as it is; so the register goes into the bytes, of which a single one meets half of it.
inline unsigned shiftInPart(const uchar* bytes, std::size_t count, std::size_t size, unsigned checksum)
{
    const unsigned unmet = count == 1 ? (checksum << 8) & 0xFFFF : 0;
    const Wide number = numberOf(bytes, count, size) ^ Wide(checksum) << 8 * (count - 1) >> 8;
    uchar block[sliceSize];
    qToBigEndian(static_cast<quint64>(number >> 64), block);
    qToBigEndian(static_cast<quint64>(number), block + sizeof(quint64));
    return shiftIn(block, 0) ^ unmet;
}

} // namespace

unsigned crcCcitt(const char* bytes, std::size_t size, unsigned checksum)
{
    const auto* data = reinterpret_cast<const uchar*>(bytes);
    if (const std::size_t part = size % sliceSize; part > 0) { // first, as it needs zeros before it
        checksum = shiftInPart(data, part, size, checksum);
        data += part;
        size -= part;
    }
    for (; size > 0; data += sliceSize, size -= sliceSize)
        checksum = shiftIn(data, checksum);
    return checksum;
}

quint16 CRC_CCITT(const char* bytes, std::size_t size, quint16 checksum)
{
    return static_cast<quint16>(crcCcitt(bytes, size, checksum));
}

quint16 CRC_CCITT(QByteArray data, bool zeroInit)
{
    const auto size = static_cast<std::size_t>(data.size());
    return static_cast<quint16>(crcCcitt(data.constData(), size, zeroInit ? 0x0000 : 0xFFFF));
}

void Append_CRC_CCITT(QByteArray& data, bool zeroInit)
{
    const quint16 checksum = CRC_CCITT(data, zeroInit);
    data.append(static_cast<char>(checksum >> 8));
    data.append(static_cast<char>(checksum & 0xFF));
}
