#pragma once

#include <QtGlobal>

#include <vector>

/**
 * The checksum's register after every prefix of a stretch of the input, from which the checksum of any range in it
 * follows in constant time: a register is linear over the field of two elements, so that of the range from s to e is
 * register(e) xor register(s) shifted by e - s zero bytes, which is multiplied by x^(8(e - s)) modulo the polynomial.
 *
 * Places are offsets of the input. Two bytes are held for every byte summed up.
 */
class PacketSums
{
public:
    /** Whether the stretch reaches beyond this place, so that its sums serve for what begins there. */
    bool reaches(qint64 place) const { return place >= m_begin && place < end(); }
    /** Begins a new stretch, of no bytes, at a place. */
    void restart(qint64 begin);
    /** Forgets what lies before a place of the stretch. */
    void forgetBefore(qint64 place);
    /** Adds the bytes from end() up to @p newEnd, unless the stretch reaches so far. */
    void extend(const char* bytes, qint64 newEnd);
    qint64 end() const { return m_begin + static_cast<qint64>(m_registers.size()) - 1; }

    /** Whether the @p size bytes from a place of the stretch on, checksum included, agree with it. */
    bool match(qint64 place, int size, unsigned start) const;

private:
    unsigned registerAt(qint64 place) const { return m_registers[static_cast<std::size_t>(place - m_begin)]; }

    qint64 m_begin = 0;
    std::vector<quint16> m_registers{0}; // m_registers[n] after n bytes, from any register at m_begin
};
