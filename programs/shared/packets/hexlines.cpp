#include "hexlines.h"

#include "decodedpacket.h"

namespace {

constexpr int largestPacket = 1 << 20;

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

void HexLines::feed(const QByteArray& text)
{
    m_text = m_position == m_text.size() ? text : m_text.mid(m_position) + text;
    m_position = 0;
}

bool HexLines::next(Frame& frame)
{
    while (m_position < m_text.size()) {
        const char character = m_text.at(m_position++);
        if (character != '\n')
            take(character);
        else if (endLine(frame))
            return true;
    }
    return m_ended && m_lineSize > 0 && endLine(frame);
}

void HexLines::take(char character)
{
    if (m_lineSize++ == 0)
        m_packet.resize(0); // until now the last frame's
    if (m_state == Line::Comment || m_state == Line::Bad || isSpace(character))
        return;
    const int digit = hexDigit(character);
    if (m_state == Line::Blank && character == '#') {
        m_state = Line::Comment;
    } else if (digit < 0 || m_packet.size() == largestPacket) {
        m_state = Line::Bad;
    } else {
        m_state = Line::Packet;
        if (m_highDigit >= 0)
            m_packet.append(static_cast<char>(m_highDigit << 4 | digit));
        m_highDigit = m_highDigit >= 0 ? -1 : digit;
    }
}

/// @return whether the line was a frame
bool HexLines::endLine(Frame& frame)
{
    const bool bad = m_state == Line::Bad || m_highDigit >= 0;
    const bool found = bad || m_state == Line::Packet;
    if (bad)
        frame = {Frame::Skipped, m_line, m_lineSize, nullptr};
    else if (found)
        frame = frameOf(m_line, m_packet, m_zeroInit);
    m_highDigit = -1;
    m_lineSize = 0;
    m_state = Line::Blank;
    ++m_line;
    return found;
}
