#include "packetsums_p.h"

#include "crc_ccitt_p.h"

#include <array>

namespace {

constexpr unsigned polynomial = 0x11021;
constexpr unsigned degree = 16;

/// Product of two polynomials of less than that degree, modulo the checksum's.
constexpr unsigned multiply(unsigned a, unsigned b)
{
    unsigned product = 0;
    for (unsigned bit = degree; bit-- > 0;) {
        product <<= 1;
        product ^= (product >> degree) * polynomial;
        product ^= ((b >> bit) & 1U) * a;
    }
    return product;
}

using Powers = std::array<quint16, 256>;

/// The powers 0 to 255 of a polynomial.
constexpr Powers powersOf(unsigned base)
{
    Powers powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = static_cast<quint16>(multiply(powers[i - 1], base));
    return powers;
}

constexpr Powers ofOneByte = powersOf(1U << 8);
constexpr Powers of256Bytes = powersOf(multiply(ofOneByte[255], 1U << 8));

/// The register after so many zero bytes, less than 65536.
unsigned shifted(unsigned checksum, int zeros)
{
    const auto count = static_cast<unsigned>(zeros);
    return multiply(multiply(checksum, ofOneByte[count & 0xFF]), of256Bytes[count >> 8]);
}

} // namespace

void PacketSums::restart(qint64 begin)
{
    m_begin = begin;
    m_registers.assign(1, 0);
}

void PacketSums::forgetBefore(qint64 place)
{
    const auto count = static_cast<std::ptrdiff_t>(place - m_begin);
    if (count <= 0 || 2 * count < static_cast<std::ptrdiff_t>(m_registers.size()))
        return; // a small part costs more to take away than to keep
    m_registers.erase(m_registers.begin(), m_registers.begin() + count);
    m_begin = place;
}

void PacketSums::extend(const char* bytes, qint64 newEnd)
{
    for (qint64 missing = newEnd - end(); missing > 0; --missing, ++bytes)
        m_registers.push_back(static_cast<quint16>(crcCcitt(bytes, 1, m_registers.back())));
}

bool PacketSums::match(qint64 place, int size, unsigned start) const
{
    // Of the bytes with their checksum behind them the register is 0, whatever it started from.
    return registerAt(place + size) == shifted(registerAt(place) ^ start, size);
}
