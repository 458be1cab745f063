#pragma once

#include <Pardel/packetframer.h>

#include <QByteArray>

/**
 * Captures as text: one packet a line in hex digits; white space is ignored, empty lines and those beginning with # are
 * passed over.
 *
 * Used as a PacketFramer is, but that the place of a frame is its line, from 1, and what is skipped is a line: one that
 * is not whole bytes in hex, or more than 1 MiB of them. A packet is damaged if its checksum does not match and it is
 * not of the form that has none. Held are what was fed and not asked for, and a line's packet.
 */
class HexLines
{
public:
    using Frame = PacketFramer::Frame;

    explicit HexLines(bool zeroInit) : m_zeroInit(zeroInit) {}

    void feed(const QByteArray& text);
    void pause() {} ///< A line ends where it ends.
    void finish() { m_ended = true; }
    bool next(Frame& frame);
    /** Bytes of text that next() has not told of. */
    qint64 pendingBytes() const { return m_lineSize + m_text.size() - m_position; }

private:
    enum class Line
    {
        Blank,
        Packet,
        Comment,
        Bad,
    };

    void take(char character);
    bool endLine(Frame& frame);

    const bool m_zeroInit;
    QByteArray m_text;
    int m_position = 0; // in it
    bool m_ended = false;
    QByteArray m_packet;
    qint64 m_line = 1;
    qint64 m_lineSize = 0; // bytes, with their white space
    int m_highDigit = -1;  // waits for the low one
    Line m_state = Line::Blank;
};
