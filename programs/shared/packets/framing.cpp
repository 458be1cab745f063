#include "framing.h"

#include <QtEndian>

#include <cstring>

namespace {

constexpr char packetStart = '\xA4';
constexpr char shortForm = '\xD5';
constexpr char longForm = '\xD6';
constexpr int startSize = 2;
constexpr int longFormSize = 545;
constexpr int lengthOffset = 5;
constexpr int leastLength = 13;
constexpr std::size_t largestHexPacket = 1 << 20;

/// Where the next A4 D5 or A4 D6 begins, or a last A4 of which the second byte is still to come; @p size if nowhere.
int findStart(const char* bytes, int from, int size)
{
    while (from < size) {
        const void* found = std::memchr(bytes + from, packetStart, static_cast<std::size_t>(size - from));
        if (!found)
            return size;
        from = static_cast<int>(static_cast<const char*>(found) - bytes);
        if (from + 1 == size || bytes[from + 1] == shortForm || bytes[from + 1] == longForm)
            return from;
        ++from;
    }
    return size;
}

/// Size of the packet of which @p present bytes are there. While that is less than any packet has, the least.
int packetSize(const char* packet, int present)
{
    if (present >= startSize && packet[1] == longForm)
        return longFormSize;
    if (present < leastLength)
        return leastLength;
    return qFromLittleEndian<quint16>(packet + lengthOffset);
}

int hexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

bool isSpace(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

} // namespace

void RawFramer::feed(const char* bytes, std::size_t size)
{
    m_buffer.append(bytes, static_cast<int>(size));
    cut(false);
}

void RawFramer::finish()
{
    cut(true);
    tellSkipped();
}

void RawFramer::cut(bool ended)
{
    const char* const bytes = m_buffer.constData();
    const int size = m_buffer.size();
    m_position = 0;
    while (m_position < size) {
        skip(findStart(bytes, m_position, size) - m_position);
        const int present = size - m_position;
        if (present == 0)
            break;
        const char* const packet = bytes + m_position;
        const int length = packetSize(packet, present);
        if (length > present && !ended)
            break; // the rest is still to come
        if (length < leastLength || length > present) {
            skip(qMin(startSize, present));
            continue;
        }
        tellSkipped();
        m_sink.packet(m_offset, packet, length);
        m_position += length;
        m_offset += length;
    }
    m_buffer.remove(0, m_position);
}

void RawFramer::skip(int size)
{
    m_position += size;
    m_offset += size;
    m_skippedRun += size;
}

void RawFramer::tellSkipped()
{
    if (m_skippedRun > 0)
        m_sink.skipped(m_offset - m_skippedRun, m_skippedRun);
    m_skippedRun = 0;
}

void HexFramer::feed(const char* bytes, std::size_t size)
{
    for (const char* const end = bytes + size; bytes < end; ++bytes) {
        if (*bytes == '\n')
            endLine();
        else
            take(*bytes);
    }
}

void HexFramer::finish()
{
    if (m_lineSize > 0)
        endLine();
}

void HexFramer::take(char character)
{
    ++m_lineSize;
    if (m_state == Line::Comment || m_state == Line::Bad || isSpace(character))
        return;
    const int digit = hexDigit(character);
    if (m_state == Line::Blank && character == '#') {
        m_state = Line::Comment;
    } else if (digit < 0 || m_packet.size() == largestHexPacket) {
        m_state = Line::Bad;
    } else {
        m_state = Line::Packet;
        if (m_highDigit < 0) {
            m_highDigit = digit;
        } else {
            m_packet.push_back(static_cast<char>(m_highDigit << 4 | digit));
            m_highDigit = -1;
        }
    }
}

void HexFramer::endLine()
{
    if (m_state == Line::Bad || m_highDigit >= 0)
        m_sink.skipped(m_line, m_lineSize);
    else if (m_state == Line::Packet)
        m_sink.packet(m_line, m_packet.data(), static_cast<int>(m_packet.size()));
    m_packet.clear();
    m_highDigit = -1;
    m_lineSize = 0;
    m_state = Line::Blank;
    ++m_line;
}
